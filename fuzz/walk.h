// Goes everywhere in an open database and sees that everything agrees with everything else.
#pragma once

#include <set>

#include "fuzz/fuzz.h"
#include "tavolin/base/text.h"
#include "tavolin/engine/engine.h"

namespace tavolin::fuzz {

// What a call raises; 0 for nothing. Anything that is not an Error ends the process.
template <class Body>
std::int32_t Refusal(Body&& body) {
    try {
        body();
        return 0;
    } catch (const Error& error) {
        Require(!error.description().empty() && !error.source().empty(),
                "an error says what is wrong and where");
        Require(error.number() != kInternalError, "nothing but Error comes out of the library");
        return error.number();
    }
}

using Keys = std::set<std::string>;  // folded

// Every element at its position and under its key. The first of several with one key has it, and
// when that has been deleted the others have none: `shared` are the keys that several were loaded
// with, for a set from which elements were deleted since.
template <class Set>
void WalkSet(const Set& set, auto key_of, auto visit, const Keys& shared = {}) {
    std::int32_t position = 0;
    for (const auto& element : set.NewEnum()) {
        ++position;
        Require(set.Item(position) == element, "an element stands at its position");
        const std::string key = key_of(*element);
        if (shared.contains(Fold(key)) && set.CanAdd(key)) {
            visit(*element);
            continue;
        }
        Require(!set.CanAdd(key) || key.empty(), "a key that is there is taken");
        std::shared_ptr<typename std::decay_t<decltype(element)>::element_type> found;
        Require(Refusal([&] { found = set.Item(key); }) == 0, "an element is found by its key");
        Require(EqualFold(key_of(*found), key), "an element found by a key has it");
        visit(*element);
    }
    Require(position == set.Count(), "the count is true");
    Require(Refusal([&] { set.Item(0); }) != 0, "there is no position 0");
    Require(Refusal([&] { set.Item(position + 1); }) != 0, "there is none behind the last one");
}

inline void WalkAttachments(CVLRecord& record) {
    WalkSet(
        *record.CVLAttachmentSet(), [](const CVLAttachment& each) { return each.Key(); },
        [](const CVLAttachment& each) {
            Require(each.attachmentPathName().size() < (1u << 30), "a path can be read");
        });
}

inline Keys SharedKeys(const CVLTable& table) {
    Keys all, shared;
    for (const auto& record : table.CVLRecordSet()->NewEnum()) {
        const std::string key = Fold(record->Key());
        if (!all.insert(key).second) shared.insert(key);
    }
    return shared;
}

inline void WalkTable(CVLTable& table, const Keys& shared = {}) {
    for (int field = 0; field < kFieldCount; ++field) {
        Require(table.FieldLabel(field).size() + table.FieldName(field).size() +
                        table.LinkedTable(field).size() + table.ReferencedTable(field).size() <
                    (1u << 30),
                "names can be read");
    }
    const auto records = table.CVLRecordSet();
    WalkSet(
        *records, [](const CVLRecord& record) { return record.Key(); },
        [&](CVLRecord& record) {
            std::size_t size = 0;
            for (int field = 0; field < kFieldCount; ++field) size += record.prop(field).size();
            Require(size < (1u << 30), "fields can be read");
            WalkAttachments(record);
        },
        shared);
    Require(table.Find("")->Count() == table.Count(), "an empty text is in every record");
}

// The owner of the open database acts from here on, if it has one.
inline bool ActAsOwner(CVLDBEngine& engine) {
    const auto owner = engine.CVLDBUserSet()->Find(engine.DBOwner());
    if (!owner) return false;
    engine.LogOnAsUser(owner);
    return Refusal([&] { engine.DBLegalUser(engine.LogedOnUser(), Ownership); }) == 0;
}

// For an engine whose user may read everything; the user set's notes are asked for as well.
inline void WalkDatabase(CVLDBEngine& engine) {
    const auto tables = engine.CVLTableSet();
    WalkSet(
        *tables, [](const CVLTable& table) { return table.Key(); },
        [](CVLTable& table) { WalkTable(table); });
    WalkSet(
        *engine.CVLDBUserSet(), [](const CVLDBUser& user) { return user.UserName(); },
        [](CVLDBUser& user) {
            WalkSet(
                *user.CVLUserNoteSet(), [](const CVLUserNote& note) { return note.dateKey; },
                [](const CVLUserNote& note) {
                    Require(note.Note().size() < (1u << 30), "a note can be read");
                });
        });
}

}  // namespace tavolin::fuzz
