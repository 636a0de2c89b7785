#include "tavolin/model/owner_set.h"

#include <new>

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/owner_db_set.h"
#include "tavolin/model/stored_collection.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

// Somebody may still be able to make something of it.
void KeepAside(const std::string& path) {
    FileSystem& files = FileSystem::Current();
    std::string aside = path + ".unreadable";
    for (int i = 2; files.Exists(aside); ++i) aside = path + ".unreadable" + std::to_string(i);
    files.Rename(path, aside);
}

[[noreturn]] void RaiseOwnerNotFound(const char* source) {
    Raise(CVLErrorNum::GetDBOwnerNotFoundError(), source, Message("Owner Not Found!"));
}

}  // namespace

bool CVLDBOwnerSet::CanAdd(IndexKey Key) const {
    return Trap("CVLDBOwnerSet:CanAdd Method", [&] { return owners_->Find(Key) == nullptr; });
}

std::shared_ptr<CVLDBOwner> CVLDBOwnerSet::Add(std::string_view Key) {
    static constexpr const char* kSource = "CVLDBOwnerSet:Add Method";
    return Trap(kSource, [&] {
        if (owners_->Contains(Key)) {
            Raise(CVLErrorNum::GetOwnerAddError(), kSource,
                  Message("The Owner That Is Being Added Already Exists In DataBase!"));
        }
        auto owner = std::make_shared<CVLDBOwner>();
        owner->Key(Key);
        owners_->Add(Key, owner);
        OnDBOwnerAdd.Fire(owner);
        return owner;
    });
}

std::shared_ptr<CVLDBOwner> CVLDBOwnerSet::Item(IndexKey vntIndexKey) const {
    static constexpr const char* kSource = "CVLDBOwnerSet:Item Get Property";
    return Trap(kSource, [&] {
        auto owner = owners_->Find(vntIndexKey);
        if (!owner) RaiseOwnerNotFound(kSource);
        return owner;
    });
}

void CVLDBOwnerSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLDBOwnerSet:Remove Method";
    Trap(kSource, [&] {
        if (!owners_->Find(vntIndexKey)) RaiseOwnerNotFound(kSource);
        OnDBOwnerRemove.Fire(owners_->Remove(vntIndexKey));
    });
}

void CVLDBOwnerSet::Remove(const CVLDBOwner& owner) {
    const std::int32_t position = owners_->PositionOf(&owner);
    if (position != 0) Remove(position);
}

void CVLDBOwnerSet::LoadRegistry() {
    const std::string path = RegistryPath();
    if (!FileSystem::Current().Exists(path)) return;
    try {
        RegistryState(ReadDatabaseFile(path));
        stored_ = RegistryEntries(*this);
    } catch (const std::bad_alloc&) {
        throw;  // which says nothing about the file
    } catch (const std::filesystem::filesystem_error& error) {
        // Nor does somebody's holding it for the moment.
        unreadable_ = error.code() != std::errc::device_or_resource_busy;
    } catch (...) {
        unreadable_ = true;
    }
}

// False when there is nothing that can be read and the whole set is to be written.
bool CVLDBOwnerSet::LoadFile(const std::string& path) {
    if (!FileSystem::Current().Exists(path)) return false;
    try {
        RegistryState(ReadDatabaseFile(path));
        return true;
    } catch (const DamagedState& damage) {
        if (damage.newer()) throw;  // nothing is wrong with it
    } catch (const std::filesystem::filesystem_error&) {
        if (!unreadable_) throw;  // it could be read before, and may be again
    }
    KeepAside(path);
    return false;
}

void CVLDBOwnerSet::StoreRegistry(bool refresh) {
    const std::string path = RegistryPath();
    // Nobody else reads, changes and writes the file meanwhile. Where nobody can lock, the later
    // one wins, and no file is ever half of each.
    const auto lock = FileSystem::Current().LockFolder(LibraryFolder());
    RegistryEntries entries(*this);
    CVLDBOwnerSet file;
    file.unreadable_ = unreadable_;
    if (file.LoadFile(path)) {
        entries.ApplyChanges(stored_, *this, file);
        if (refresh) file.Prune();
        WriteDatabaseFile(path, file.RegistryState(), refresh);
    } else {
        WriteDatabaseFile(path, RegistryState(), refresh);
    }
    unreadable_ = false;
    stored_ = std::move(entries);
}

void CVLDBOwnerSet::Restate(std::string_view owner, std::string_view path, bool listed) {
    if (listed) {
        stored_.Forget(owner, path);
    } else {
        stored_.Remember(owner, path);
    }
}

void CVLDBOwnerSet::Refresh() {
    Trap("CVLDBOwnerSet:Refresh Method", [&] {
        if (!Prune()) return;
        if (!FileSystem::Current().Exists(RegistryPath())) RaiseRunTime(kFileNotFound);
        // The whole file is replaced in one step, so nothing of the old one is kept behind.
        StoreRegistry(true);
    });
}

bool CVLDBOwnerSet::Prune() {
    bool changed = false;
    for (const auto& owner : NewEnum()) {
        const auto databases = owner->CVLOwnerDBSet();
        for (const auto& database : databases->NewEnum()) {
            if (FileExists(database->Key())) continue;
            databases->Remove(*database);
            changed = true;
        }
        if (databases->Count() == 0) {
            Remove(*owner);
            changed = true;
        }
    }
    return changed;
}

std::vector<std::uint8_t> CVLDBOwnerSet::RegistryState() const {
    return MakeState(
        [&](PropertyBagWriter& bag) { bag.WriteObject("objner", [&] { WriteProperties(bag); }); });
}

void CVLDBOwnerSet::RegistryState(std::span<const std::uint8_t> state) {
    PropertyBagReader bag(state);
    if (!bag.ReadObject("objner", [&] { ReadProperties(bag); })) {
        throw DamagedState("objner: missing");
    }
}

void CVLDBOwnerSet::WriteProperties(PropertyBagWriter& bag) const {
    WriteCollection(bag, *owners_, "OwCnt", "Owner");
}

void CVLDBOwnerSet::ReadProperties(PropertyBagReader& bag) {
    owners_ = ReadCollection<CVLDBOwner>(
        bag, "OwCnt", "Owner", [] { return std::make_shared<CVLDBOwner>(); },
        [](const CVLDBOwner& owner) { return std::string_view(owner.Key()); });
}

}  // namespace tavolin
