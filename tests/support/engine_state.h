// What the tests of the engine look at besides its members.
#pragma once

#include <string>

#include "tavolin/base/clock.h"
#include "tavolin/engine/engine.h"
#include "tests/support/expect_error.h"

namespace tavolin {

// The permission state, by what the sets of the open database let pass. At least one table must be
// there. Nothing is changed.
inline PermitStateEnum StateOf(const CVLDBEngine& engine) {
    const auto refuses = [](std::int32_t number, auto&& body) {
        return ErrorNumber(body) == number;
    };
    const auto tables = engine.CVLTableSet();
    const auto records = (*tables->NewEnum().begin())->CVLRecordSet();
    if (!refuses(CVLErrorNum::GetUserIsNotDBOwnerError(), [&] { tables->Remove("no such"); }))
        return Ownership;
    if (!refuses(CVLErrorNum::GetUserPermissionToDelError(), [&] { records->Remove(999); }))
        return ToDelete;
    if (!refuses(CVLErrorNum::GetUserPermissionToRWError(), [&] { tables->Update("no such"); }))
        return ToReadWrite;
    if (!refuses(CVLErrorNum::GetUserPermissionToRdError(), [&] { tables->Item("no such"); }))
        return ToRead;
    return Undefined;
}

inline std::string Contents(const std::string& path) {
    const auto bytes = FileSystem::Current().ReadFile(path);
    return std::string(bytes.begin(), bytes.end());
}

inline void WriteContents(const std::string& path, const std::string& text) {
    FileSystem::Current().Write(path,
                                {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

// The databases listed under an owner in the engine's registry, as "path;path;".
inline std::string Listed(const CVLDBEngine& engine, const char* owner) {
    std::string paths;
    if (engine.CVLDBOwnerSet()->CanAdd(owner)) return paths;
    for (const auto& database : engine.CVLDBOwnerSet()->Item(owner)->CVLOwnerDBSet()->NewEnum())
        paths += database->Key() + ";";
    return paths;
}

// It is 1:05 in the morning of 15 November 2026 until the end of the scope.
class StoppedClock {
  public:
    StoppedClock() {
        SetClock([] { return MakeDate(2026, 11, 15, 1, 5); });
    }
    ~StoppedClock() { SetClock({}); }
};

}  // namespace tavolin
