#include "tavolin/model/attachment_set.h"

#include "com/properties.h"
#include "com/set_object.h"

namespace tavolin::com {
namespace {

class AttachmentSetObject : public SetObject<CVLAttachmentSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(BSTR Key, LONG nKey, BSTR attachmentPathName, ::attachmentEnum aType,
                     ::_CVLAttachment** result) override {
        return Return(result, [&] {
            return core().Add(Utf8(Key), nKey, Utf8(attachmentPathName),
                              static_cast<attachmentEnum>(aType));
        });
    }
    STDMETHODIMP Update(VARIANT varKey, BSTR attachmentPathName, ::attachmentEnum aType,
                        ::_CVLAttachment** result) override {
        return Return(result, [&] {
            return core().Update(Argument(varKey).Key(), Utf8(attachmentPathName),
                                 static_cast<attachmentEnum>(aType));
        });
    }
    TAVOLIN_ITEM(CVLAttachment)
    TAVOLIN_OBJECT_STATE
    TAVOLIN_NAVIGATION(Attachment, ::_CVLAttachment, ::_CVLAttachment)

    TAVOLIN_EVENTS(core().OnAttachmentAdd, core().OnAttachmentRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLAttachmentSet> core) {
    return new AttachmentSetObject(std::move(core));
}

}  // namespace tavolin::com
