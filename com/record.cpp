#include "tavolin/model/record.h"

#include "com/properties.h"
#include "tavolin/model/attachment_set.h"

namespace tavolin::com {
namespace {

class RecordObject : public Object<CVLRecord> {
  public:
    using Object::Object;

    TAVOLIN_TEXT(Key)
    TAVOLIN_LONG(nKey)
    TAVOLIN_OBJECT(CVLAttachmentSet)
    STDMETHODIMP put_prop(BYTE propNum, BSTR value) override {
        return Call([&] { core().prop(propNum, Utf8(value)); });
    }
    STDMETHODIMP get_prop(BYTE propNum, BSTR* result) override {
        return Return(result, [&] { return core().prop(propNum); });
    }
    STDMETHODIMP Attach(LONG nKey, BSTR attachFilePathName, ::attachmentEnum aType) override {
        return Call([&] {
            core().Attach(nKey, Utf8(attachFilePathName), static_cast<attachmentEnum>(aType));
        });
    }

    TAVOLIN_EVENTS(core().OnPropertyChange)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLRecord> core) { return new RecordObject(std::move(core)); }

}  // namespace tavolin::com
