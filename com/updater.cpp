#include "tavolin/model/updater.h"

#include "com/object.h"

namespace tavolin::com {
namespace {

// An observer that does nothing, for hosts to build on.
class UpdaterObject : public Object<IUpdater> {
  public:
    using Object::Object;

    STDMETHODIMP Update() override { return S_OK; }
    STDMETHODIMP AddAffectedRecords(BSTR, BSTR, BSTR) override { return S_OK; }
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<IUpdater> core) { return new UpdaterObject(std::move(core)); }

}  // namespace tavolin::com
