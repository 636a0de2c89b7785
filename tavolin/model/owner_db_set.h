// The databases of one owner, under their full paths without regard to case.
//
// No member asks for a right. A call that raises leaves the set as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/object_collection.h"
#include "tavolin/model/owner_db.h"

namespace tavolin {

class TAVOLIN_API CVLOwnerDBSet {
  public:
    Event<std::shared_ptr<CVLOwnerDB>> OnDBAdd;     // after the adding
    Event<std::shared_ptr<CVLOwnerDB>> OnDBRemove;  // after the removal

    // True when no database has that path or position.
    bool CanAdd(IndexKey Key) const;

    // Adds a database and returns it; one that is listed already raises GetDBAddError. A directory
    // with and without a backslash at its end is the same; an empty one is the current directory.
    std::shared_ptr<CVLOwnerDB> Add(std::string_view DBName, std::string_view DBDir);

    // None such raises GetDBNotFoundError.
    std::shared_ptr<CVLOwnerDB> Item(IndexKey vntIndexKey) const;
    std::int32_t Count() const { return databases_->Count(); }
    void Remove(IndexKey vntIndexKey);

    Enumerator<CVLOwnerDB> NewEnum() const { return Enumerator<CVLOwnerDB>(databases_); }

    // Library-internal: the element, if it is in the set, whatever its Key is by now; and the
    // stored form.
    void Remove(const CVLOwnerDB& database);
    void AddCopy(const CVLOwnerDB& database);
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    using Databases = ObjectCollection<CVLOwnerDB>;
    std::shared_ptr<Databases> databases_ = std::make_shared<Databases>();
};

}  // namespace tavolin
