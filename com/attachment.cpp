#include "tavolin/model/attachment.h"

#include "com/properties.h"

namespace tavolin::com {
namespace {

class AttachmentObject : public Object<CVLAttachment> {
  public:
    using Object::Object;

    TAVOLIN_TEXT(Key)
    TAVOLIN_LONG(nKey)
    TAVOLIN_READ(::attachmentEnum, SpecificType)
    TAVOLIN_WRITE(::attachmentEnum, SpecificType, static_cast<attachmentEnum>)
    TAVOLIN_TEXT(attachmentPathName)

    TAVOLIN_EVENTS(core().OnPathChange)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLAttachment> core) {
    return new AttachmentObject(std::move(core));
}

}  // namespace tavolin::com
