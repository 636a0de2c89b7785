#include "tavolin/model/attachment.h"

#include "tavolin/errors/trap.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {

void CVLAttachment::Key(std::string_view key) {
    Trap("CVLAttachment:Key Property Let", [&] { key_ = key; });
}

void CVLAttachment::attachmentPathName(std::string_view path) {
    Trap("CVLAttachment:AttachmentPathName Property Let", [&] {
        path_ = path;
        OnPathChange.Fire(path_);
    });
}

void CVLAttachment::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("k", key_);
    bag.Write("nk", n_key_);
    bag.Write("a", path_);
    bag.Write("t", static_cast<std::int32_t>(type_));
}

void CVLAttachment::ReadProperties(PropertyBagReader& bag) {
    key_ = bag.ReadText("k");
    n_key_ = bag.ReadInt("nk");
    path_ = bag.ReadText("a");
    type_ = static_cast<attachmentEnum>(bag.ReadInt("t"));
}

}  // namespace tavolin
