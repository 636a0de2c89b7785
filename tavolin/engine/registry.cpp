// The owner registry: who owns which databases, in a file of the library's folder.
#include <new>

#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"

namespace tavolin {

// Whatever is wrong with the file, log-on goes on.
void CVLDBEngine::ReadRegistry() {
    auto owners = std::make_shared<tavolin::CVLDBOwnerSet>();
    bool unreadable = false;
    try {
        if (FileSystem::Current().Exists(RegistryPath())) {
            owners->RegistryState(ReadDatabaseFile(RegistryPath()));
        }
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        owners = std::make_shared<tavolin::CVLDBOwnerSet>();
        unreadable = true;
    }
    owners_ = std::move(owners);
    registry_unreadable_ = unreadable;
}

void CVLDBEngine::WriteRegistry() {
    const std::string path = RegistryPath();
    FileSystem& files = FileSystem::Current();
    if (registry_unreadable_ && files.Exists(path)) {
        // Somebody may still be able to make something of it.
        std::string aside = path + ".unreadable";
        for (int i = 2; files.Exists(aside); ++i) {
            aside = path + ".unreadable" + std::to_string(i);
        }
        files.Rename(path, aside);
    }
    registry_unreadable_ = false;
    PrintToBinaryFile(owners_->RegistryState(), path);
}

// Lists a database under the logged-on user's name if that is its owner's: loading somebody else's
// database makes nobody its owner.
void CVLDBEngine::Register(const Database& database) {
    const std::string& owner = database.session->owner;
    if (EqualFold(authority_->user->UserName(), owner)) {
        AddEntry(owner, database.path, database.name);
    }
}

void CVLDBEngine::AddEntry(std::string_view owner, std::string_view dir, std::string_view name) {
    const auto entry = owners_->CanAdd(owner) ? owners_->Add(owner) : owners_->Item(owner);
    if (entry->CVLOwnerDBSet()->CanAdd(JoinPath(dir, name))) {
        entry->CVLOwnerDBSet()->Add(name, dir);
    }
}

// False when the database is not listed under that owner. An owner who has no other goes along.
bool CVLDBEngine::RemoveEntry(std::string_view owner, const std::string& path) {
    if (owners_->CanAdd(owner)) return false;
    const auto databases = owners_->Item(owner)->CVLOwnerDBSet();
    bool removed = false;
    std::int32_t position = 0;
    for (const auto& database : databases->NewEnum()) {
        ++position;
        if (!EqualFold(database->Key(), path) &&
            !FileSystem::Current().IsSameFile(database->Key(), path)) {
            continue;
        }
        databases->Remove(position--);
        removed = true;
    }
    if (databases->Count() == 0) owners_->Remove(owner);
    return removed;
}

}  // namespace tavolin
