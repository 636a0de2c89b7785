#include "tavolin/model/user_note_set.h"

#include "tavolin/base/clock.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/navigation.h"
#include "tavolin/model/session.h"
#include "tavolin/model/stored_collection.h"

namespace tavolin {
namespace {

constexpr NavigationTexts kNoteNavigation = {"CVLUserNoteSet",
                                             "Note Not Found Error!",
                                             CVLErrorNum::GetFirstNoteError(),
                                             CVLErrorNum::GetLastNoteError(),
                                             CVLErrorNum::GetPreviousNoteError(),
                                             CVLErrorNum::GetNextNoteError()};

std::string KeyOf(Date date) {
    const bool has_a_form =
        date.seconds >= MakeDate(100, 1, 1).seconds && date.seconds < MakeDate(10000, 1, 1).seconds;
    if (!has_a_form) RaiseRunTime(kInvalidCall);
    return GeneralDate(date);
}

}  // namespace

CVLUserNoteSet::CVLUserNoteSet() : CVLUserNoteSet(Session::Current()) {}

CVLUserNoteSet::CVLUserNoteSet(std::shared_ptr<Session> session) : session_(std::move(session)) {}

void CVLUserNoteSet::AskOwnership(std::int32_t number, const char* source,
                                  const char* right) const {
    if (session_->IsOwner()) return;
    Raise(number, source,
          Message(session_->UserName(), " Does Not Have Permission ", std::string_view(right),
                  " Notes!"));
}

bool CVLUserNoteSet::CanAdd(IndexKey Key) const {
    return Trap("CVLUserNoteSet:CanAdd Method", [&] { return notes_->Find(Key) == nullptr; });
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::Add(Date dateKey, std::int32_t nKey,
                                                 std::string_view Note) {
    static constexpr const char* kSource = "CVLUserNoteSet:Add Method";
    return Trap(kSource, [&] {
        AskOwnership(CVLErrorNum::GetUserPermissionToRWError(), kSource, "Write");
        auto note = std::make_shared<CVLUserNote>();
        note->dateKey = KeyOf(dateKey);
        note->nKey = nKey;
        note->Note(Note);
        if (notes_->Contains(note->dateKey)) {
            Raise(CVLErrorNum::GetNoteAddError(), kSource,
                  Message("The Note That Is Being Added Already Exists In DataBase!"));
        }
        notes_->Add(note->dateKey, note);
        OnNoteAdd.Fire(note);
        return note;
    });
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::Update(IndexKey varKey, std::string_view Note) {
    static constexpr const char* kSource = "CVLUserNoteSet:Update Method";
    return Trap(kSource, [&] {
        AskOwnership(CVLErrorNum::GetUserPermissionToRWError(), kSource, "Write");
        auto note = notes_->Find(varKey);
        if (!note) {
            Raise(CVLErrorNum::GetNoteUpDateError(), kSource, Message("Note Does Not Exist!"));
        }
        note->Note(Note);
        return note;
    });
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::Item(IndexKey vntIndexKey) const {
    static constexpr const char* kSource = "CVLUserNoteSet:Item Property Get";
    return Trap(kSource, [&] {
        AskOwnership(CVLErrorNum::GetUserPermissionToRdError(), kSource, "Read");
        auto note = notes_->Find(vntIndexKey);
        if (!note) {
            Raise(CVLErrorNum::GetNoteNotFoundError(), kSource, Message("User Note Not Found!"));
        }
        return note;
    });
}

void CVLUserNoteSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLUserNoteSet:Remove Method";
    Trap(kSource, [&] {
        AskOwnership(CVLErrorNum::GetUserPermissionToDelError(), kSource, "Delete");
        if (!notes_->Find(vntIndexKey)) {
            Raise(CVLErrorNum::GetNoteNotFoundError(), kSource, Message("User's Note Not Found!"));
        }
        OnNoteRemove.Fire(notes_->Remove(vntIndexKey));
    });
}

std::vector<std::uint8_t> CVLUserNoteSet::ObjectState() const {
    return Trap("CVLUserNoteSet:ObjectState Property Get", [&] {
        return MakeState([&](PropertyBagWriter& bag) {
            WriteCollection(bag, *notes_, "RecordsCount", "Record");
        });
    });
}

void CVLUserNoteSet::ObjectState(const std::vector<std::uint8_t>& state) {
    Trap("CVLUserNoteSet:ObjectState Property Let", [&] {
        PropertyBagReader bag(state);
        notes_ = Read(bag, "RecordsCount", "Record");
    });
}

void CVLUserNoteSet::WriteProperties(PropertyBagWriter& bag) const {
    WriteCollection(bag, *notes_, "NoteCount", "Note");
}

void CVLUserNoteSet::ReadProperties(PropertyBagReader& bag) {
    notes_ = Read(bag, "NoteCount", "Note");
}

std::shared_ptr<CVLUserNoteSet::Notes> CVLUserNoteSet::Read(PropertyBagReader& bag,
                                                            const char* count_key,
                                                            const char* prefix) {
    return ReadCollection<CVLUserNote>(
        bag, count_key, prefix, [] { return std::make_shared<CVLUserNote>(); },
        [](const CVLUserNote& note) { return std::string_view(note.dateKey); });
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::LastNote() const {
    return Navigation(*this, kNoteNavigation).Last();
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::FirstNote() const {
    return Navigation(*this, kNoteNavigation).First();
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::PreviousNote(std::int32_t nKey) const {
    return Navigation(*this, kNoteNavigation).Previous(nKey);
}

std::shared_ptr<CVLUserNote> CVLUserNoteSet::NextNote(std::int32_t nKey) const {
    return Navigation(*this, kNoteNavigation).Next(nKey);
}

bool CVLUserNoteSet::PreviousNoteIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kNoteNavigation).PreviousIsAvailable(nKey);
}

bool CVLUserNoteSet::NextNoteIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kNoteNavigation).NextIsAvailable(nKey);
}

bool CVLUserNoteSet::FirstNoteIsAvailable() const {
    return Navigation(*this, kNoteNavigation).FirstIsAvailable();
}

}  // namespace tavolin
