// The owner registry: who owns which databases, in a file of the library's folder.
#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"

namespace tavolin {

// Whatever is wrong with the file, log-on goes on. Changes that are not on the disk yet are kept.
void CVLDBEngine::ReadRegistry() {
    if (registry_changed_) return;
    auto owners = std::make_shared<tavolin::CVLDBOwnerSet>();
    owners->LoadRegistry();
    owners_ = std::move(owners);
    registry_read_ = true;
}

// For a user who was put in place without a log-on.
void CVLDBEngine::NeedRegistry() {
    if (!registry_read_) ReadRegistry();
}

void CVLDBEngine::WriteRegistry() {
    NeedRegistry();
    owners_->StoreRegistry();
    registry_changed_ = false;
}

// Lists a database under the logged-on user's name if that is its owner's: loading somebody else's
// database makes nobody its owner.
void CVLDBEngine::Register(const Database& database) {
    const std::string owner = database.session->owner;
    if (EqualFold(authority_->user->UserName(), owner)) {
        AddEntry(owner, std::string(database.path), std::string(database.name));
    }
}

// One file has one entry, whichever way its path is written.
void CVLDBEngine::AddEntry(const std::string& owner, const std::string& dir,
                           const std::string& name) {
    NeedRegistry();
    const auto entry = owners_->CanAdd(owner) ? owners_->Add(owner) : owners_->Item(owner);
    const auto databases = entry->CVLOwnerDBSet();
    const std::string path = JoinPath(dir, name);
    if (!databases->CanAdd(path)) return;
    for (const auto& database : databases->NewEnum()) {
        if (FileSystem::Current().IsSameFile(database->Key(), path)) return;
    }
    databases->Add(name, dir);
    registry_changed_ = true;
}

// False when the database is not listed under that owner. An owner who has no other goes along.
bool CVLDBEngine::RemoveEntry(const std::string& owner, const std::string& path) {
    NeedRegistry();
    if (owners_->CanAdd(owner)) return false;
    const auto entry = owners_->Item(owner);
    const auto databases = entry->CVLOwnerDBSet();
    bool removed = false;
    for (const auto& database : databases->NewEnum()) {
        if (EqualFold(database->Key(), path) ||
            FileSystem::Current().IsSameFile(database->Key(), path)) {
            databases->Remove(*database);
            removed = true;
        }
    }
    if (databases->Count() == 0) owners_->Remove(*entry);
    registry_changed_ = true;
    return removed;
}

}  // namespace tavolin
