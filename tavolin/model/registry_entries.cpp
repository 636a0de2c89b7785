#include "tavolin/model/registry_entries.h"

#include <memory>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/model/owner_db_set.h"
#include "tavolin/model/owner_set.h"
#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

// Takes the database out, and the owner when he has no other one.
void Remove(CVLDBOwnerSet& file, const std::string& owner_name, const std::string& path) {
    if (file.CanAdd(owner_name)) return;
    const auto owner = file.Item(owner_name);
    const auto databases = owner->CVLOwnerDBSet();
    if (!path.empty() && !databases->CanAdd(path)) databases->Remove(path);
    if (databases->Count() == 0) file.Remove(*owner);
}

// One file has one entry, whichever way its path is written.
bool Lists(const CVLOwnerDBSet& databases, const std::string& path) {
    if (!databases.CanAdd(path)) return true;
    if (!FileExists(path)) return false;
    for (const auto& database : databases.NewEnum()) {
        if (IsOneFile(database->Key(), path)) return true;
    }
    return false;
}

void Add(CVLDBOwnerSet& file, const CVLDBOwner& owner, const CVLOwnerDB* database) {
    const auto target = file.CanAdd(owner.Key()) ? file.Add(owner.Key()) : file.Item(owner.Key());
    if (database == nullptr || Lists(*target->CVLOwnerDBSet(), database->Key())) return;
    target->CVLOwnerDBSet()->AddCopy(*database);
}

}  // namespace

RegistryEntries::RegistryEntries(const CVLDBOwnerSet& owners) {
    for (const auto& owner : owners.NewEnum()) {
        const std::string name = Fold(owner->Key());
        entries_.insert({name, {}, {}, {}});
        for (const auto& database : owner->CVLOwnerDBSet()->NewEnum()) {
            entries_.insert({name, Fold(database->Key()), database->DBName(), database->DBDir()});
        }
    }
}

void RegistryEntries::Forget(std::string_view owner, std::string_view path) {
    std::erase_if(entries_, [&, o = Fold(owner), p = Fold(path)](const Entry& entry) {
        return entry.owner == o && entry.path == p;
    });
}

void RegistryEntries::Remember(std::string_view owner, std::string_view path) {
    entries_.insert({Fold(owner), Fold(path), {}, {}});
}

void RegistryEntries::ApplyChanges(const RegistryEntries& before, const CVLDBOwnerSet& now,
                                   CVLDBOwnerSet& file) const {
    std::set<std::pair<std::string, std::string>> removed;
    for (const Entry& entry : before.entries_) {
        if (entries_.count(entry) != 0) continue;
        Remove(file, entry.owner, entry.path);
        removed.emplace(entry.owner, entry.path);
    }
    for (const auto& owner : now.NewEnum()) {
        const std::string name = Fold(owner->Key());
        if (before.entries_.count({name, {}, {}, {}}) == 0) Add(file, *owner, nullptr);
        for (const auto& database : owner->CVLOwnerDBSet()->NewEnum()) {
            const Entry entry{name, Fold(database->Key()), database->DBName(), database->DBDir()};
            const bool kept =
                before.entries_.count(entry) != 0 && removed.count({name, entry.path}) == 0;
            if (!kept) Add(file, *owner, database.get());
        }
    }
}

}  // namespace tavolin
