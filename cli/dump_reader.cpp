#include "cli/dump_reader.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "cli/attachment_kind.h"
#include "cli/dump_writer.h"
#include "cli/log_activities.h"
#include "tavolin/base/clock.h"

namespace tavolin::cli {
namespace {

int FieldOf(DumpLine& line) {
    const std::int32_t field = line.Number();
    if (field < 0 || field >= kFieldCount) line.Fail("the fields are 0 to 9");
    return field;
}

Date DateOf(DumpLine& line) {
    const std::string day(line.Word());
    const std::string time(line.Word());
    CivilTime t;
    int end = 0;
    const std::string text = day + " " + time;
    const int read = std::sscanf(text.c_str(), "%6d-%2d-%2d %2d:%2d:%2d%n", &t.year, &t.month,
                                 &t.day, &t.hour, &t.minute, &t.second, &end);
    const bool whole = read == 6 && static_cast<std::size_t>(end) == text.size();
    if (!whole || t.year < -30000 || t.year > 30000) {
        line.Fail("a date and time as 2026-11-15 01:05:00 is missing");
    }
    const Date date = MakeDate(t.year, t.month, t.day, t.hour, t.minute, t.second);
    const CivilTime same = ToCivil(date);
    if (same.month != t.month || same.day != t.day || same.hour != t.hour ||
        same.minute != t.minute || same.second != t.second) {
        line.Fail("there is no such date and time");
    }
    return date;
}

attachmentEnum AttachmentKind(DumpLine& line) {
    DumpLine behind = line;
    const auto kind = AttachmentKindNamed(behind.Word());
    if (!kind) return static_cast<attachmentEnum>(line.Number());
    line = behind;
    return *kind;
}

[[noreturn]] void FailMeaning(const DumpLine& line, std::string_view word) {
    line.Fail(word.empty() ? "the line begins with no word"
                           : "\"" + std::string(word.substr(0, 40)) + "\" has no place here");
}

}  // namespace

bool DumpReader::NextLine() {
    constexpr std::uint64_t kLinesBetweenLooks = 4096;
    if (!lines_.Next()) return false;
    if (lines_.number() % kLinesBetweenLooks == 0) look_(lines_);
    return true;
}

void DumpReader::Read() {
    CheckVersion();
    while (NextLine()) {
        try {
            ReadLine();
        } catch (const DumpError& error) {
            if (!lines_.cut_off()) throw;
            throw DumpError(error.line(), "the text is cut off in this line");
        }
    }
    if (part_ != Part::kEnd) {
        throw DumpError(lines_.number(),
                        "the text ends without its last line, \"end\": a part of "
                        "it is missing");
    }
}

void DumpReader::CheckVersion() {
    const std::string_view name = kDumpHeader.substr(0, kDumpHeader.find(' ') + 1);
    if (!NextLine()) throw DumpError(1, "the text is empty");
    const std::string_view line = lines_.line();
    if (line == kDumpHeader) return;
    if (!line.starts_with(name)) throw DumpError(1, "this is no dump of a database");
    throw DumpError(1, "the dump is of version " + std::string(line.substr(name.size(), 20)) +
                           "; this program reads version " +
                           std::string(kDumpHeader.substr(name.size())));
}

void DumpReader::ReadLine() {
    DumpLine line(lines_.line(), lines_.number());
    if (line.Done() || lines_.line()[lines_.line().find_first_not_of(" \t")] == '#') return;
    if (part_ == Part::kEnd) line.Fail("there is something behind the end");
    const std::string_view word = line.Word();
    if (word == "record") {
        BeginRecord(line);
    } else if (word == "user") {
        BeginUser(line);
    } else if (word == "table") {
        BeginTable(line);
    } else if (word == "end") {
        FinishHead(line);
        FinishRecord();
        part_ = Part::kEnd;
    } else if (part_ == Part::kRecord) {
        ReadRecordLine(word, line);
    } else if (part_ == Part::kTable) {
        ReadTableLine(word, line);
    } else if (part_ == Part::kUser) {
        ReadUserLine(word, line);
    } else {
        ReadHeadLine(word, line);
    }
    line.Finish();
}

void DumpReader::ReadHeadLine(std::string_view word, DumpLine& line) {
    const auto once = [&](const auto& value) {
        if (value) line.Fail("there is a line " + std::string(word) + " already");
    };
    if (word == "created") {
        once(head_.created);
        head_.created = DateOf(line);
    } else if (word == "owner") {
        once(head_.owner);
        head_.owner = line.Text();
    } else if (word == "database-password") {
        once(head_.password_empty);
        head_.password_empty = line.TakeWord("empty");
        if (!*head_.password_empty && !line.TakeWord("set"))
            line.Fail("it is \"empty\" or \"set\"");
    } else if (word == "log") {
        once(head_.log);
        ReadLog(line);
    } else {
        FailMeaning(line, word);
    }
}

void DumpReader::ReadLog(DumpLine& line) {
    head_.log.emplace();
    while (!line.Done()) {
        const std::string_view name = line.Word();
        const auto known = LogActivities();
        const auto found = std::find_if(known.begin(), known.end(),
                                        [&](const LogActivity& each) { return each.name == name; });
        if (found == known.end())
            line.Fail("there is no activity " + std::string(name) + " to log");
        (*head_.log).*(found->flag) = true;
    }
}

// What the head tells is needed before anything can be put into the database.
void DumpReader::FinishHead(DumpLine& line) {
    if (part_ != Part::kHead) return;
    if (!head_.owner) line.Fail("a line \"owner\" is missing in front of this one");
    into_.Create(head_);
}

void DumpReader::BeginUser(DumpLine& line) {
    if (part_ != Part::kHead && part_ != Part::kUser) line.Fail("users stand in front of tables");
    FinishHead(line);
    part_ = Part::kUser;
    CVLDBUser& user = into_.AddUser(line.number(), line.Text());
    if (line.TakeWord("read")) user.CanRead(true);
    if (line.TakeWord("write")) user.CanReadWrite(true);
    if (line.TakeWord("delete")) user.CanDelete(true);
    if (line.TakeWord("disabled")) user.UserDisabled(true);
}

void DumpReader::ReadUserLine(std::string_view word, DumpLine& line) {
    if (word == "key") {
        into_.user().Key(line.Text());
    } else if (word == "full-name") {
        into_.user().UserFullName(line.Text());
    } else if (word == "description") {
        into_.user().UserDescription(line.Text());
    } else if (word == "note") {
        const std::int32_t number = line.Number();
        const std::string date = line.Text();
        const std::string text = line.Text();
        into_.AddNote(line.number(), number, date, text, line.TakeWord("again"));
    } else {
        FailMeaning(line, word);
    }
}

void DumpReader::BeginTable(DumpLine& line) {
    FinishHead(line);
    FinishRecord();
    part_ = Part::kTable;
    const std::string name = line.Text();
    into_.AddTable(line.number(), name, line.TakeWord("linked"));
}

void DumpReader::ReadTableLine(std::string_view word, DumpLine& line) {
    if (word == "key") {
        ReadKeyFields(line);
    } else if (word == "field") {
        ReadField(line);
    } else if (word == "link") {
        ReadLink(line);
    } else if (word == "linked-by") {
        ReadLinkedBy(line);
    } else {
        FailMeaning(line, word);
    }
}

void DumpReader::ReadKeyFields(DumpLine& line) {
    std::array<std::uint8_t, 4> parts{kNoField, kNoField, kNoField, kNoField};
    for (std::uint8_t& part : parts) {
        if (line.Done()) break;
        if (!line.TakeWord("-")) part = static_cast<std::uint8_t>(FieldOf(line));
    }
    into_.table().PrimaryKey({parts[0], parts[1], parts[2], parts[3]});
}

void DumpReader::ReadField(DumpLine& line) {
    const int field = FieldOf(line);
    const std::string name = line.Text();
    into_.table().FieldName(field, name);
    into_.table().FieldLabel(field, line.TakeWord("label") ? line.Text() : name);
}

void DumpReader::ReadLink(DumpLine& line) {
    const int field = FieldOf(line);
    const std::string target = line.Text();
    const bool missing = line.TakeWord("missing");
    into_.SetLink(line.number(), field, target, !line.TakeWord("inactive"), missing);
}

void DumpReader::ReadLinkedBy(DumpLine& line) {
    const int slot = FieldOf(line);
    const std::string table = line.Text();
    into_.SetLinkedBy(line.number(), slot, table, line.TakeWord("missing"));
}

// A record is put in when the lines that tell about it have been read.
void DumpReader::BeginRecord(DumpLine& line) {
    if (part_ != Part::kTable && part_ != Part::kRecord) line.Fail("a record of no table");
    FinishRecord();
    part_ = Part::kRecord;
    record_.line = line.number();
    record_.number = line.Number();
    record_.has_key = record_.again = false;
    record_.attachments.clear();
    for (std::string& field : record_.fields) {
        if (line.Done()) {
            field.clear();
        } else {
            line.TextInto(field);
        }
    }
    if (line.AtText()) line.Fail("a record has ten fields at most");
}

void DumpReader::FinishRecord() {
    if (part_ == Part::kRecord) into_.AddRecord(record_);
}

void DumpReader::ReadRecordLine(std::string_view word, DumpLine& line) {
    if (word == "key" && !record_.has_key) {
        record_.has_key = true;
        record_.key = line.Text();
        record_.again = line.TakeWord("again");
    } else if (word == "attachment") {
        ReadAttachment(line);
    } else {
        FailMeaning(line, word);
    }
}

void DumpReader::ReadAttachment(DumpLine& line) {
    RestoredAttachment attachment;
    attachment.line = line.number();
    attachment.kind = AttachmentKind(line);
    attachment.number = line.Number();
    attachment.path = line.Text();
    attachment.key = line.AtText() ? line.Text() : attachment.path;
    attachment.again = line.TakeWord("again");
    record_.attachments.push_back(std::move(attachment));
}

}  // namespace tavolin::cli
