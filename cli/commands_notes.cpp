// The owner's notes about users.
#include "cli/commands.h"
#include "cli/fields.h"
#include "tavolin/base/clock.h"

namespace tavolin::cli {
namespace {

std::shared_ptr<CVLUserNoteSet> NotesOf(Host& host, const std::string& user) {
    return host.engine().CVLDBUserSet()->Item(user)->CVLUserNoteSet();
}

// Of the user that --user names, or of oneself.
std::shared_ptr<CVLUserNoteSet> NotesMeant(Host& host, const Arguments& words) {
    return NotesOf(host, words.Get("--user", host.user()));
}

std::string TextOf(const Arguments& words) {
    std::string text;
    for (const std::string& word : words.All("TEXT")) {
        RequireUtf8(word);
        if (!text.empty()) text += ' ';
        text += word;
    }
    return text;
}

// The first second from now on that has no note: a script adds several in one.
Date FreeDate(const CVLUserNoteSet& notes) {
    Date date = Now();
    while (!notes.CanAdd(GeneralDate(date))) ++date.seconds;
    return date;
}

}  // namespace

void NotesCommand(Host& host, const Arguments& words) {
    Results results = host.Answer({"Date", "Number", "Note"}, TextTable::Fit::kWrap);
    results.Numbers({1});
    for (const auto& note : NotesOf(host, words.Get("USER", host.user()))->NewEnum()) {
        results.Add({note->dateKey, std::to_string(note->nKey), note->Note()});
    }
    results.Finish("note");
}

void NoteAddCommand(Host& host, const Arguments& words) {
    const auto notes = NotesMeant(host, words);
    const std::int32_t number = words.Number("--number", notes->Count() + 1);
    const auto note = notes->Add(FreeDate(*notes), number, TextOf(words));
    host.Changed();
    host.Note("note of " + note->dateKey + " added");
}

void NoteSetCommand(Host& host, const Arguments& words) {
    const auto note = NotesMeant(host, words)->Update(RecordKey(words["NOTE"]), TextOf(words));
    host.Changed();
    host.Note("note of " + note->dateKey + " changed");
}

void NoteRemoveCommand(Host& host, const Arguments& words) {
    const auto notes = NotesMeant(host, words);
    const IndexKey which = RecordKey(words["NOTE"]);
    const std::string date = notes->Item(which)->dateKey;
    host.Confirm(words, "Remove the note of " + date + "?");
    notes->Remove(which);
    host.Changed();
    host.Note("note of " + date + " removed");
}

}  // namespace tavolin::cli
