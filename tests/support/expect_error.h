// What tests of the library's surface share: the comparison of an error in all its parts, and an
// engine with a database in a folder of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/engine/engine.h"
#include "tests/support/failing_file_system.h"

namespace tavolin {

using Num = CVLErrorNum;
using N = CVLErrorNum;

// The first field alone is the key.
inline constexpr PrimaryKeyType kFirst{0, 99, 99, 99};

template <class Body>
void ExpectError(std::int32_t number, std::string_view source, std::string_view description,
                 Body&& body) {
    const std::string wanted = std::string(source) + ": " + std::string(description);
    try {
        body();
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), number) << "where expected: " << wanted;
        EXPECT_EQ(error.source(), source) << "where expected: " << wanted;
        EXPECT_EQ(error.description(), description) << "where expected: " << wanted;
        return;
    }
    ADD_FAILURE() << "no error where expected: " << wanted;
}

// The number of the error that the body raises, 0 for none.
template <class Body>
std::int32_t ErrorNumber(Body&& body) {
    try {
        body();
    } catch (const Error& error) {
        return error.number();
    }
    return 0;
}

// The keys of the elements of a set in their order, a blank behind each.
template <class Set>
std::string Keys(const Set& set) {
    std::string keys;
    for (const auto& element : set.NewEnum()) keys += element->Key() + " ";
    return keys;
}

// load(state) must refuse the state with any one byte changed, cut off, or with a byte more.
template <class Load>
void ExpectDamageRefused(const std::vector<std::uint8_t>& state, Load&& load) {
    const auto refuses = [&](const std::vector<std::uint8_t>& damaged) {
        const std::int32_t number = ErrorNumber([&] { load(damaged); });
        return number == kCorruptedFile || number == kIncompatibleFormat;
    };
    for (std::size_t at = 0; at < state.size(); ++at) {
        auto damaged = state;
        for (const std::uint8_t bits : {0x01, 0x80, 0xFF}) {
            damaged[at] = static_cast<std::uint8_t>(state[at] ^ bits);
            EXPECT_TRUE(refuses(damaged)) << "byte " << at << " changed by " << int{bits};
        }
        damaged.resize(at);
        EXPECT_TRUE(refuses(damaged)) << "cut to " << at;
    }
    auto longer = state;
    longer.push_back(0);
    EXPECT_TRUE(refuses(longer));
}

// Whatever is asked of the ends of an empty set is refused, under sources that begin with `set`,
// with the text and four numbers in a row. `ask` are its members First, Last, Previous and Next.
inline void ExpectNoEnds(const std::string& set, std::string_view text, std::int32_t first,
                         const std::vector<std::function<void()>>& ask) {
    const char* steps[] = {"moveFirst", "moveEnd", "movePrevious", "moveNext"};
    for (std::size_t i = 0; i < ask.size(); ++i) {
        ExpectError(first + static_cast<std::int32_t>(i), set + ":" + steps[i] + " Method", text,
                    ask[i]);
    }
}

// A temporary folder that is the library's own, so that no test writes the machine's registry.
class ScopedLibraryFolder {
  public:
    ScopedLibraryFolder() {
        if (const char* old = std::getenv(kVariable)) previous_ = old;
        Set(PortablePath(folder_.path()));
    }
    ~ScopedLibraryFolder() { Set(previous_); }
    ScopedLibraryFolder(const ScopedLibraryFolder&) = delete;
    ScopedLibraryFolder& operator=(const ScopedLibraryFolder&) = delete;

    const TemporaryFolder& folder() const { return folder_; }

  private:
    static constexpr const char* kVariable = "TAVOLIN_FOLDER";
    static void Set(const std::string& value) {
#ifdef _WIN32
        _putenv_s(kVariable, value.c_str());
#else
        setenv(kVariable, value.c_str(), 1);
#endif
    }

    TemporaryFolder folder_;
    std::string previous_;
};

// The engine of somebody who has created a database, which is open and not saved yet.
struct NewDatabase : CVLDBEngine {
    NewDatabase(std::string_view name, std::string_view folder, const char* owner = "ann",
                const char* password = "secret") {
        LogOn(owner, password);
        CreateNewDB(name, folder);
    }
};

// "ann" has created the database "shop.cdb"; she is its owner.
struct EngineTest : testing::Test {
    EngineTest() {
        engine_.LogOn("ann", "secret");
        engine_.CreateNewDB("shop", FolderPath());
        owner_ = engine_.LogedOnUser();
    }

    // The folder in which the database and the registry are, as the library writes it.
    std::string FolderPath() const { return PortablePath(folder_.path()); }

    std::string File(std::string_view name) const { return folder_ / name; }
    bool There(std::string_view name) const { return FileSystem::Current().Exists(File(name)); }

    // From now on a user who has this right and no higher one acts: `Ownership` is ann, the others
    // are "undefined", "reader", "writer" and "deleter", all of them with the password "word".
    void ActWith(PermitStateEnum right) {
        engine_.LogedOnUser(owner_);
        engine_.DBLegalUser(owner_, Ownership);
        if (right == Ownership) return;
        const char* name = right == ToDelete      ? "deleter"
                           : right == ToReadWrite ? "writer"
                           : right == ToRead      ? "reader"
                                                  : "undefined";
        if (!engine_.UserExists(name)) {
            engine_.CreateNewUser(name, "word", right == ToRead, right == ToReadWrite,
                                  right == ToDelete);
        }
        const auto user = engine_.GetUser(name, "word");
        engine_.LogedOnUser(user);
        if (right != Undefined) engine_.DBLegalUser(user, right);
    }

    ScopedLibraryFolder library_;
    const TemporaryFolder& folder_ = library_.folder();
    CVLDBEngine engine_;
    std::shared_ptr<CVLDBUser> owner_;
};

}  // namespace tavolin
