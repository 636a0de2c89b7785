#include "cli/dump_writer.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "cli/attachment_kind.h"
#include "cli/dump_text.h"
#include "cli/log_activities.h"
#include "tavolin/base/clock.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

// Whether a key is the first of its kind in a set that is walked along.
bool IsFirst(std::set<std::string>& seen, std::string_view key) {
    return seen.insert(Fold(key)).second;
}

std::string DateText(Date date) {
    const CivilTime t = ToCivil(date);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day,
                  t.hour, t.minute, t.second);
    return text;
}

}  // namespace

std::string ComposedKey(const PrimaryKeyType& key, const std::vector<std::string>& fields) {
    std::string composed;
    for (const std::uint8_t part : key.Parts()) {
        if (part < kFieldCount) composed += fields[part];
    }
    return composed;
}

void DumpWriter::AddText(std::string_view text) {
    text_ += ' ';
    AppendQuoted(text, text_);
}

void DumpWriter::AddNumber(std::int64_t number) { (text_ += ' ') += std::to_string(number); }

void DumpWriter::Write() {
    WriteHead();
    for (const auto& user : engine_.CVLDBUserSet()->NewEnum()) WriteUser(*user);
    fields_.resize(kFieldCount);
    for (const auto& table : engine_.CVLTableSet()->NewEnum()) WriteTable(*table);
    text_ += "\nend\n";
}

void DumpWriter::WriteHead() {
    text_.append(kDumpHeader).append("\n# database");
    AddText(engine_.DBName());
    text_.append("\n# no passwords are in here\n\ncreated ");
    text_.append(DateText(engine_.DBCreationDate())).append("\nowner");
    AddText(engine_.DBOwner());
    text_.append("\ndatabase-password ").append(engine_.PasswordCorrect("") ? "empty" : "set");
    text_ += "\nlog";
    const LogType log = engine_.LoggedActivities();
    for (const LogActivity& activity : LogActivities()) {
        if (log.*activity.flag) text_.append(" ").append(activity.name);
    }
    text_ += '\n';
}

void DumpWriter::WriteUser(const CVLDBUser& user) {
    text_ += "\nuser";
    AddText(user.UserName());
    if (user.CanRead()) text_ += " read";
    if (user.CanReadWrite()) text_ += " write";
    if (user.CanDelete()) text_ += " delete";
    if (user.UserDisabled()) text_ += " disabled";
    text_ += '\n';
    const auto line = [this](const char* kind, const std::string& text) {
        text_.append("  ").append(kind);
        AddText(text);
        text_ += '\n';
    };
    if (user.Key() != user.UserName()) line("key", user.Key());
    if (!user.UserFullName().empty()) line("full-name", user.UserFullName());
    if (!user.UserDescription().empty()) line("description", user.UserDescription());
    std::set<std::string> dates;
    for (const auto& note : user.CVLUserNoteSet()->NewEnum()) {
        text_ += "  note";
        AddNumber(note->nKey);
        AddText(note->dateKey);
        AddText(note->Note());
        text_ += IsFirst(dates, note->dateKey) ? "\n" : " again\n";
        flow_();
    }
}

// A link to a table that is not there is said to be one, so that a misspelt name is not.
void DumpWriter::WriteMention(std::string_view kind, int number, const std::string& target) {
    text_.append("  ").append(kind);
    AddNumber(number);
    AddText(target);
    const bool missing = !target.empty() && engine_.CVLTableSet()->CanAdd(target);
    if (missing) text_ += " missing";
}

void DumpWriter::WriteTable(const CVLTable& table) {
    text_ += "\ntable";
    AddText(table.Key());
    if (table.SpecificType() == isLinkedTable) text_ += " linked";
    text_ += '\n';
    const auto parts = table.PrimaryKey().Parts();
    if (table.PrimaryKey() != PrimaryKeyType{}) {
        text_ += "  key";
        std::size_t used = parts.size();
        while (parts[used - 1] == kNoField) --used;
        for (std::size_t i = 0; i < used; ++i) {
            (text_ += ' ') += parts[i] == kNoField ? "-" : std::to_string(parts[i]);
        }
        text_ += '\n';
    }
    for (int field = 0; field < kFieldCount; ++field) {
        const std::string& name = table.FieldName(field);
        const std::string& label = table.FieldLabel(field);
        if (name.empty() && label.empty()) continue;
        text_ += "  field";
        AddNumber(field);
        AddText(name);
        if (label != name) {
            text_ += " label";
            AddText(label);
        }
        text_ += '\n';
    }
    for (int field = 0; field < kFieldCount; ++field) {
        const std::string& target = table.LinkedTable(field);
        const bool active = table.FieldIsForeignKey(field);
        if (target.empty() && !active) continue;
        WriteMention("link", field, target);
        text_ += active ? "\n" : " inactive\n";
    }
    for (int slot = 0; slot < kFieldCount; ++slot) {
        if (table.ReferencedTable(slot).empty()) continue;
        WriteMention("linked-by", slot, table.ReferencedTable(slot));
        text_ += '\n';
    }
    for (const auto& record : table.CVLRecordSet()->NewEnum()) {
        WriteRecord(table, record);
        flow_();
    }
}

void DumpWriter::WriteRecord(const CVLTable& table, const std::shared_ptr<CVLRecord>& record) {
    std::size_t used = 0;
    for (std::size_t field = 0; field < fields_.size(); ++field) {
        fields_[field] = record->prop(static_cast<int>(field));
        if (!fields_[field].empty()) used = field + 1;
    }
    text_ += "record";
    AddNumber(record->nKey());
    for (std::size_t field = 0; field < used; ++field) AddText(fields_[field]);
    text_ += '\n';
    const std::string key = record->Key();
    const auto records = table.CVLRecordSet();
    // Another record is found under the key, then, and this one by its position alone.
    const bool again = (key.empty() || !records->CanAdd(key)) && records->Item(key) != record;
    if (again || key != ComposedKey(table.PrimaryKey(), fields_)) {
        text_ += "  key";
        AddText(key);
        text_ += again ? " again\n" : "\n";
    }
    WriteAttachments(*record);
}

void DumpWriter::WriteAttachments(CVLRecord& record) {
    std::set<std::string> keys;
    ForEachAttachment(record, [&](const CVLAttachment& attachment) {
        text_.append("  attachment ").append(AttachmentKindText(attachment.SpecificType()));
        AddNumber(attachment.nKey());
        AddText(attachment.attachmentPathName());
        if (attachment.Key() != attachment.attachmentPathName()) AddText(attachment.Key());
        text_ += IsFirst(keys, attachment.Key()) ? "\n" : " again\n";
    });
}

}  // namespace tavolin::cli
