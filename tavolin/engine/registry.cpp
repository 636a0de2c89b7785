// The owner registry: who owns which databases, in a file of the library's folder.
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/persist/paths.h"

namespace tavolin {

// Whatever is wrong with the file, log-on goes on. What this engine has changed and not yet written
// is changed again in what was read.
void CVLDBEngine::ReadRegistry() {
    auto owners = std::make_shared<tavolin::CVLDBOwnerSet>();
    owners->LoadRegistry();
    owners_ = std::move(owners);
    registry_read_ = true;
    const auto unwritten = unwritten_;
    for (const RegistryChange& change : unwritten) Apply(change);
}

// For a user who was put in place without a log-on.
void CVLDBEngine::NeedRegistry() {
    if (!registry_read_) ReadRegistry();
}

void CVLDBEngine::WriteRegistry() {
    NeedRegistry();
    for (RegistryChange& change : unwritten_) change.saved = true;
    owners_->StoreRegistry();
    unwritten_.clear();
}

// Lists a database under the logged-on user's name if that is its owner's: loading somebody else's
// database makes nobody its owner.
void CVLDBEngine::Register(const Database& database) {
    const std::string owner = database.session->owner;
    if (EqualFold(authority_->user->UserName(), owner)) {
        ChangeRegistry({true, false, owner, database.path, database.name});
    }
}

// False when the registry says so already.
bool CVLDBEngine::ChangeRegistry(RegistryChange change) {
    NeedRegistry();
    owners_->Restate(change.owner, JoinPath(change.dir, change.name), change.added);
    const bool changed = Apply(change);
    if (changed) unwritten_.push_back(std::move(change));
    return changed;
}

// A handler of the one change may open another database before the other.
void CVLDBEngine::MoveEntry(std::string from, std::string to, const Database& database) {
    RegistryChange removal{false, false, std::move(from), database.path, database.name};
    RegistryChange addition{true, false, std::move(to), database.path, database.name};
    const bool moves = !EqualFold(removal.owner, addition.owner);
    ChangeRegistry(std::move(addition));
    if (moves) ChangeRegistry(std::move(removal));
}

// Runs what changes the registry, and its file, for a database other than the open one. What was
// done for that one waits for its save and is out of the registry meanwhile; when a handler opens
// another one, it stays out.
void CVLDBEngine::ForOtherDatabase(const std::function<void()>& body) {
    NeedRegistry();
    const auto tables = database_->tables;
    auto unsaved = unwritten_;
    std::erase_if(unsaved, [](const RegistryChange& change) { return change.saved; });
    const auto put_back = [&] {
        for (const RegistryChange& change : unsaved) {
            if (database_->tables == tables) ChangeRegistry(change);
        }
    };
    ForgetUnsavedEntries();
    try {
        body();
    } catch (...) {
        AtTheSide(put_back);
        throw;
    }
    AtTheSide(put_back);
}

// What was changed for the open database and not saved with it goes when another takes its place.
void CVLDBEngine::ForgetUnsavedEntries() {
    const auto unwritten = std::exchange(unwritten_, {});
    for (auto change = unwritten.rbegin(); change != unwritten.rend(); ++change) {
        if (change->saved) {
            unwritten_.insert(unwritten_.begin(), *change);
        } else {
            Apply({!change->added, false, change->owner, change->dir, change->name});
        }
    }
}

// One file has one entry, whichever way its path is written, and an owner without databases has
// none.
bool CVLDBEngine::Apply(const RegistryChange& change) {
    const auto owners = owners_;  // a handler may log somebody on
    if (!change.added && owners->CanAdd(change.owner)) return false;
    const auto owner =
        owners->CanAdd(change.owner) ? owners->Add(change.owner) : owners->Item(change.owner);
    const auto databases = owner->CVLOwnerDBSet();
    const std::string path = JoinPath(change.dir, change.name);
    const bool there = FileExists(path);
    bool listed = change.added && !databases->CanAdd(path);
    if (!listed && (there || !change.added)) {
        for (const auto& database : databases->NewEnum()) {
            const bool same =
                EqualFold(database->Key(), path) || (there && IsOneFile(database->Key(), path));
            if (!same) continue;
            listed = true;
            if (!change.added) databases->Remove(*database);
        }
    }
    if (change.added && !listed) {
        databases->Add(change.name, change.dir);
    }
    if (databases->Count() == 0) owners->Remove(*owner);
    return change.added != listed;
}

}  // namespace tavolin
