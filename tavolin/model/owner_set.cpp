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

[[noreturn]] void RaiseNotFound(const char* source) {
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
        if (!owner) RaiseNotFound(kSource);
        return owner;
    });
}

void CVLDBOwnerSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLDBOwnerSet:Remove Method";
    Trap(kSource, [&] {
        if (!owners_->Find(vntIndexKey)) RaiseNotFound(kSource);
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
    } catch (const std::bad_alloc&) {
        throw;  // which says nothing about the file
    } catch (...) {
        unreadable_ = true;
    }
}

void CVLDBOwnerSet::StoreRegistry(bool cut_tail) {
    const std::string path = RegistryPath();
    FileSystem& files = FileSystem::Current();
    if (unreadable_ && files.Exists(path)) {
        // Somebody may still be able to make something of it.
        std::string aside = path + ".unreadable";
        for (int i = 2; files.Exists(aside); ++i) {
            aside = path + ".unreadable" + std::to_string(i);
        }
        files.Rename(path, aside);
    }
    unreadable_ = false;
    WriteDatabaseFile(path, RegistryState(), cut_tail);
    pruned_ = false;
}

void CVLDBOwnerSet::Refresh() {
    Trap("CVLDBOwnerSet:Refresh Method", [&] {
        // What was pruned stays so when the file cannot be written, and reaches it the next time.
        pruned_ = Prune() || pruned_;
        if (!pruned_) return;
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
