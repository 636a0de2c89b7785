// A user's notes, in the order of adding, under the texts of their dates without regard to case.
//
//     auto notes = engine.GetUser("bob", "secret")->CVLUserNoteSet();
//     notes->Add(tavolin::Now(), 1, "Asked for the right to write");
//     for (const auto& note : notes->NewEnum()) std::cout << note->dateKey << '\n';
//
// Notes are the database owner's alone: Add and Update, Item and Remove ask for the permission
// state `Ownership` and otherwise raise GetUserPermissionToRWError, -ToRdError or -ToDelError,
// whatever else the user may do. That is asked before anything else. A call that raises leaves the
// set as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "tavolin/base/date.h"
#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/object_collection.h"
#include "tavolin/model/user_note.h"

namespace tavolin {

class Session;

class TAVOLIN_API CVLUserNoteSet {
  public:
    // A set of its own, until it is given to a user; the rights are those in the current engine.
    CVLUserNoteSet();
    explicit CVLUserNoteSet(std::shared_ptr<Session> session);
    CVLUserNoteSet(const CVLUserNoteSet&) = delete;
    CVLUserNoteSet& operator=(const CVLUserNoteSet&) = delete;

    Event<std::shared_ptr<CVLUserNote>> OnNoteAdd;     // after the adding
    Event<std::shared_ptr<CVLUserNote>> OnNoteRemove;  // after the removal

    // True when no note has that date or position. Asks for no right.
    bool CanAdd(IndexKey Key) const;

    // Adds a note at the end and returns it, under the date's general form (see GeneralDate), as
    // "11/15/2026 1:05:00 AM". A second that has a note already raises GetNoteAddError; a date
    // outside the years 100 to 9999, which have no general form, 5.
    std::shared_ptr<CVLUserNote> Add(Date dateKey, std::int32_t nKey, std::string_view Note);

    // Sets the text, without an event, and returns the note; none such raises GetNoteUpDateError.
    std::shared_ptr<CVLUserNote> Update(IndexKey varKey, std::string_view Note);

    // The note at a position or of a date in its general form; none raises GetNoteNotFoundError.
    std::shared_ptr<CVLUserNote> Item(IndexKey vntIndexKey) const;
    std::int32_t Count() const { return notes_->Count(); }

    // None such raises GetNoteNotFoundError.
    void Remove(IndexKey vntIndexKey);

    // Asks for no right.
    Enumerator<CVLUserNote> NewEnum() const { return Enumerator<CVLUserNote>(notes_); }

    // All notes as one byte array. Assigning replaces them, without events and rights, or raises
    // and changes nothing.
    std::vector<std::uint8_t> ObjectState() const;
    void ObjectState(const std::vector<std::uint8_t>& state);

    // The note at the end, at the beginning, before or after a 1-based position, which is not the
    // note's nKey; where there is none, GetLastNoteError, GetFirstNoteError, GetPreviousNoteError
    // or GetNextNoteError. They read through Item and need its right.
    std::shared_ptr<CVLUserNote> LastNote() const;
    std::shared_ptr<CVLUserNote> FirstNote() const;
    std::shared_ptr<CVLUserNote> PreviousNote(std::int32_t nKey) const;
    std::shared_ptr<CVLUserNote> NextNote(std::int32_t nKey) const;
    bool PreviousNoteIsAvailable(std::int32_t nKey) const;
    bool NextNoteIsAvailable(std::int32_t nKey) const;
    bool FirstNoteIsAvailable() const;

    // Library-internal: how the set is stored inside its user, under other keys than in
    // ObjectState, on both of which files depend; and whose rights it asks for.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
    void JoinSession(std::shared_ptr<Session> session) { session_ = std::move(session); }

  private:
    using Notes = ObjectCollection<CVLUserNote>;

    static std::shared_ptr<Notes> Read(PropertyBagReader& bag, const char* count_key,
                                       const char* prefix);
    void AskOwnership(std::int32_t number, const char* source, const char* right) const;

    std::shared_ptr<Session> session_;
    std::shared_ptr<Notes> notes_ = std::make_shared<Notes>();
};

}  // namespace tavolin
