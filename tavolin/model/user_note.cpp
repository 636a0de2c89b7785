#include "tavolin/model/user_note.h"

#include "tavolin/errors/trap.h"
#include "tavolin/model/stored_collection.h"

namespace tavolin {

void CVLUserNote::WriteProperties(PropertyBagWriter& bag) const {
    bag.Write("k", dateKey);
    bag.Write("nk", nKey);
    bag.Write("n", Note);
}

void CVLUserNote::ReadProperties(PropertyBagReader& bag) {
    dateKey = bag.ReadText("k");
    nKey = bag.ReadInt("nk");
    Note = bag.ReadText("n");
}

std::vector<std::uint8_t> CVLUserNoteSet::ObjectState() const {
    return Trap("CVLUserNoteSet:ObjectState Property Get", [&] {
        return MakeState([&](PropertyBagWriter& bag) { Write(bag, "RecordsCount", "Record"); });
    });
}

void CVLUserNoteSet::ObjectState(const std::vector<std::uint8_t>& state) {
    Trap("CVLUserNoteSet:ObjectState Property Let", [&] {
        PropertyBagReader bag(state);
        notes_ = Read(bag, "RecordsCount", "Record");
    });
}

void CVLUserNoteSet::WriteProperties(PropertyBagWriter& bag) const {
    Write(bag, "NoteCount", "Note");
}

void CVLUserNoteSet::ReadProperties(PropertyBagReader& bag) {
    notes_ = Read(bag, "NoteCount", "Note");
}

void CVLUserNoteSet::Write(PropertyBagWriter& bag, const char* count_key,
                           const char* prefix) const {
    WriteCollection(bag, *notes_, count_key, prefix);
}

std::shared_ptr<CVLUserNoteSet::Notes> CVLUserNoteSet::Read(PropertyBagReader& bag,
                                                            const char* count_key,
                                                            const char* prefix) {
    return ReadCollection<CVLUserNote>(
        bag, count_key, prefix, [] { return std::make_shared<CVLUserNote>(); },
        [](const CVLUserNote& note) { return std::string_view(note.dateKey); });
}

}  // namespace tavolin
