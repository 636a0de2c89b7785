#include "tavolin/model/user_note.h"

#include "tavolin/errors/trap.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {

std::string CVLUserNote::Note() const {
    return Trap("UserNotes:Note Property Get", [&] { return text_; });
}

void CVLUserNote::Note(std::string_view text) {
    Trap("UserNotes:Note Property Let", [&] { text_ = text; });
}

void CVLUserNote::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("k", dateKey);
    bag.Write("nk", nKey);
    bag.Write("n", text_);
}

void CVLUserNote::ReadProperties(PropertyBagReader& bag) {
    dateKey = bag.ReadText("k");
    nKey = bag.ReadInt("nk");
    text_ = bag.ReadText("n");
}

}  // namespace tavolin
