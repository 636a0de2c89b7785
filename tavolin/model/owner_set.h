// The owner registry: who owns which databases, kept in the file RDX.dat of the library's folder.
//
//     for (const auto& owner : engine.CVLDBOwnerSet()->NewEnum()) std::cout << owner->Key() <<
//     '\n';
//
// No member asks for a right: anyone who holds the engine can read and change the registry. A call
// that raises leaves the set as it was, unless it says otherwise.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/object_collection.h"
#include "tavolin/model/owner.h"
#include "tavolin/model/registry_entries.h"

namespace tavolin {

class TAVOLIN_API CVLDBOwnerSet {
  public:
    Event<std::shared_ptr<CVLDBOwner>> OnDBOwnerAdd;     // after the adding
    Event<std::shared_ptr<CVLDBOwner>> OnDBOwnerRemove;  // after the removal

    // True when no owner has that name or position.
    bool CanAdd(IndexKey Key) const;

    // Adds an owner without databases and returns him; a name that is listed raises
    // GetOwnerAddError.
    std::shared_ptr<CVLDBOwner> Add(std::string_view Key);

    // None such raises GetDBOwnerNotFoundError.
    std::shared_ptr<CVLDBOwner> Item(IndexKey vntIndexKey) const;
    std::int32_t Count() const { return owners_->Count(); }
    void Remove(IndexKey vntIndexKey);

    Enumerator<CVLDBOwner> NewEnum() const { return Enumerator<CVLDBOwner>(owners_); }

    // Drops the databases whose file is gone and the owners who have none left and, if anything was
    // dropped, writes RDX.dat anew, as StoreRegistry does. Raises 53 when there is no RDX.dat to
    // replace, and the machine's file errors; what was dropped in memory stays dropped then.
    void Refresh();

    // Library-internal: the stored form.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
    // The element, if it is in the set, whatever its Key is by now.
    void Remove(const CVLDBOwner& owner);
    // The registry file's byte array.
    std::vector<std::uint8_t> RegistryState() const;
    void RegistryState(std::span<const std::uint8_t> state);
    // A registry file that is there and cannot be read leaves the set empty, and is renamed before
    // the set is first stored if it cannot be read then either. One that somebody held is not: what
    // he wrote stays. One of a newer format is left alone, and storing raises its error.
    void LoadRegistry();
    // Does what was done to this set since it was loaded or stored to the file as it is now: what
    // other engines and other processes wrote meanwhile stays. The set itself does not learn of it.
    // `refresh` drops from the file what Refresh drops, and what is behind its array.
    void StoreRegistry(bool refresh = false);
    // Has the next StoreRegistry list a database that stands in this set, or take one out that does
    // not, even if the set has not changed.
    void Restate(std::string_view owner, std::string_view path, bool listed);

  private:
    using Owners = ObjectCollection<CVLDBOwner>;

    bool Prune();
    bool LoadFile(const std::string& path);

    std::shared_ptr<Owners> owners_ = std::make_shared<Owners>();
    RegistryEntries stored_;  // as this set was when it was loaded or stored last
    bool unreadable_ = false;
};

}  // namespace tavolin
