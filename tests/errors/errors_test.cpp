#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "tavolin/errors/error.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

// Hosts were built with these values.
TEST(ErrorNumbers, ArePublished) {
    EXPECT_EQ(N::GetTransAlreadyStartedError(), -2147171498);
    EXPECT_EQ(N::GetFirstUserError(), -2147161483);
    EXPECT_EQ(N::GetValueNotFoundError(), -2147161492);
    EXPECT_EQ(N::GetUserPasswordChangeError(), -2147160705);
    EXPECT_EQ(N::GetDBPasswordChangeError(), -2147159605);
}

TEST(ErrorMessages, AreFoundByTheirExactNumber) {
    EXPECT_EQ(GetErrorMessage(6),
              "An overflow occured as a result of an assignment\r\n"
              "that exceeds the limitations of the application");
    EXPECT_EQ(GetErrorMessage(32755), "Operation Cancelled");
    int known = 0;
    for (std::int32_t number = -1; number <= 40000; ++number) {
        if (GetErrorMessage(number) != "ERROR") ++known;
    }
    EXPECT_EQ(known, 42);
    for (std::int32_t number : {0, 5, 9, 13, 457, 483, CVLErrorNum::GetTableAddError()}) {
        EXPECT_EQ(GetErrorMessage(number), "ERROR") << number;
    }
}

TEST(Trap, KeepsTheSourceOfTheMemberThatRaised) {
    const auto inner = [] {
        return Trap("Inner:Add Method", [] {
            Raise(CVLErrorNum::GetTableAddError(), "Inner:ADD Method", Message("Taken!"));
            return 1;
        });
    };
    ExpectError(CVLErrorNum::GetTableAddError(), "Inner:ADD Method", "Taken!", inner);
    ExpectError(CVLErrorNum::GetTableAddError(), "Outer:Make Method", "Taken!",
                [&] { Trap("Outer:Make Method", inner); });
    ExpectError(5, "Outer:Make Method", "Invalid procedure call or argument",
                [&] { Trap("Outer:Make Method", [] { RaiseRunTime(kInvalidCall); }); });
    // A handler's own: the text goes with the number.
    ExpectError(53, "Outer:Make Method", "Cannot find the specified file", [] {
        Trap("Outer:Make Method", [] { throw Error(53, "Handler", Message("x")); });
    });
    int value = 7;
    EXPECT_EQ(&Trap("Any:Get Property", [&]() -> int& { return value; }), &value);
}

TEST(Trap, TurnsEveryFailureIntoARunTimeError) {
    TemporaryFolder folder;
    const auto here = folder.path() / "file";
    const auto nowhere = folder.path() / "none" / "file";
    const auto file_error = [](const std::filesystem::path& path, int code) {
        return [=] {
            throw std::filesystem::filesystem_error("open", path,
                                                    std::error_code(code, std::generic_category()));
        };
    };
    const std::pair<std::int32_t, std::function<void()>> failures[] = {
        {7, [] { throw std::bad_alloc(); }},
        {7, [] { throw std::length_error("long"); }},
        {51, [] { throw std::logic_error("odd"); }},
        {53, file_error(here, ENOENT)},
        {76, file_error(nowhere, ENOENT)},
        {58, file_error(here, EEXIST)},
        {61, file_error(here, ENOSPC)},
        {70, file_error(here, EROFS)},
        {75, file_error(here, EACCES)},
        {57, file_error(here, EIO)},
        {31037, [] { throw DamagedState("k: cut off"); }},
        {321, [] { throw DamagedState("version 2", true); }}};
    for (const auto& failure : failures) {
        ExpectError(failure.first, "Some:Member", GetErrorMessage(failure.first),
                    [&] { Trap("Some:Member", failure.second); });
    }
    try {
        Trap("Some:Member", [] { throw DamagedState("k: cut off"); });
    } catch (const Error& error) {
        EXPECT_EQ(error.detail(), "k: cut off");
    }
}

}  // namespace
}  // namespace tavolin
