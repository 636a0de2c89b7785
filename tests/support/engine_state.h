// What the tests of the engine look at besides its members.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "tavolin/base/clock.h"
#include "tavolin/engine/engine.h"
#include "tavolin/persist/paths.h"
#include "tests/support/expect_error.h"

namespace tavolin {

// The permission state, by what a database with at least one table lets pass. Changes nothing.
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

// Somebody opens a database of his.
inline void Open(CVLDBEngine& engine, const std::string& file, const char* owner = "ann",
                 const char* password = "secret") {
    engine.LogOn(owner, password);
    engine.LoadDB(file);
    EXPECT_TRUE(engine.DBLegalUser(engine.LogedOnUser(), Ownership));
}

// The source of a method of the engine's; that of another class's member stands for itself.
inline std::string SourceNamed(const std::string& member) {
    return member.find(':') == member.npos ? "CVLDBEngine:" + member + " Method" : member;
}

inline void LogEverything(CVLDBEngine& engine) {
    engine.LogDBActivities(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1);
}

inline std::string Contents(const std::string& path) {
    const auto bytes = FileSystem::Current().ReadFile(path);
    return std::string(bytes.begin(), bytes.end());
}

inline void WriteContents(const std::string& path, const std::string& text) {
    FileSystem::Current().Write(path,
                                {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

template <class Set>
std::string StateText(const Set& set) {
    const auto state = set.ObjectState();
    return std::string(state.begin(), state.end());
}

// All that tables hold and say, for which nobody needs a right.
inline std::string Everything(const CVLTableSet& tables) {
    std::string all;
    for (const auto& each : tables.NewEnum()) {
        all += each->Key() + std::to_string(each->SpecificType());
        for (const std::uint8_t part : each->PrimaryKey().Parts()) all += char(part);
        for (int i = 0; i < kFieldCount; ++i) {
            all += each->FieldName(i) + "/" + each->FieldLabel(i) + "/" + each->LinkedTable(i) +
                   "/" + each->ReferencedTable(i) + "\n";
        }
        all += StateText(*each->CVLRecordSet());
    }
    return all;
}

// The files of a folder and of those in it, by their names.
using Folder = std::map<std::string, std::string>;
inline Folder FilesOf(const TemporaryFolder& folder) {
    Folder files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        const auto name = std::filesystem::relative(entry.path(), folder.path()).string();
        if (entry.is_regular_file()) files[name] = Contents(PortablePath(entry.path()));
    }
    return files;
}
// The names of those that are not the same in both, a blank behind each.
inline std::string Difference(const Folder& a, const Folder& b) {
    std::string names;
    for (const auto& [name, contents] : a) {
        if (!b.contains(name) || b.at(name) != contents) names += name + " ";
    }
    for (const auto& [name, contents] : b) {
        if (!a.contains(name)) names += name + " ";
    }
    return names;
}

// The databases listed under an owner in the engine's registry, as "path;path;".
inline std::string Listed(const CVLDBEngine& engine, const char* owner) {
    std::string paths;
    if (engine.CVLDBOwnerSet()->CanAdd(owner)) return paths;
    for (const auto& database : engine.CVLDBOwnerSet()->Item(owner)->CVLOwnerDBSet()->NewEnum())
        paths += database->Key() + ";";
    return paths;
}

// What somebody who logs on now finds.
inline std::string OnDisk(const char* owner) {
    CVLDBEngine engine;
    engine.LogOn("eve", "");
    return Listed(engine, owner);
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
