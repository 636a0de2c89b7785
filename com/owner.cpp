#include "tavolin/model/owner.h"

#include "com/properties.h"
#include "tavolin/model/owner_db_set.h"

namespace tavolin::com {
namespace {

class OwnerObject : public Object<CVLDBOwner> {
  public:
    using Object::Object;

    TAVOLIN_TEXT(Key)
    TAVOLIN_OBJECT(CVLOwnerDBSet)

    TAVOLIN_EVENTS(core().OnOwnerDBSetChange)
};

class OwnerDBObject : public Object<CVLOwnerDB> {
  public:
    using Object::Object;

    TAVOLIN_TEXT(Key)
    TAVOLIN_TEXT(DBName)
    TAVOLIN_TEXT(DBDir)

    TAVOLIN_EVENTS(core().OnDBDirChange, core().OnDBNameChange)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLDBOwner> core) { return new OwnerObject(std::move(core)); }

ObjectBase* NewObject(std::shared_ptr<CVLOwnerDB> core) {
    return new OwnerDBObject(std::move(core));
}

}  // namespace tavolin::com
