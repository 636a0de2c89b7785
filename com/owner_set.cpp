#include "tavolin/model/owner_set.h"

#include "com/properties.h"
#include "com/set_object.h"
#include "tavolin/model/owner_db_set.h"

namespace tavolin::com {
namespace {

class OwnerSetObject : public SetObject<CVLDBOwnerSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(BSTR Key, ::_CVLDBOwner** result) override {
        return Return(result, [&] { return core().Add(Utf8(Key)); });
    }
    TAVOLIN_ITEM(CVLDBOwner)
    STDMETHODIMP Refresh() override {
        return Call([&] { core().Refresh(); });
    }

    TAVOLIN_EVENTS(core().OnDBOwnerAdd, core().OnDBOwnerRemove)
};

class OwnerDBSetObject : public SetObject<CVLOwnerDBSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(BSTR DBName, BSTR DBDir, ::_CVLOwnerDB** result) override {
        return Return(result, [&] { return core().Add(Utf8(DBName), Utf8(DBDir)); });
    }
    TAVOLIN_ITEM(CVLOwnerDB)

    TAVOLIN_EVENTS(core().OnDBAdd, core().OnDBRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLDBOwnerSet> core) {
    return new OwnerSetObject(std::move(core));
}

ObjectBase* NewObject(std::shared_ptr<CVLOwnerDBSet> core) {
    return new OwnerDBSetObject(std::move(core));
}

}  // namespace tavolin::com
