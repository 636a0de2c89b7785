#include "cli/sql_writer.h"

#include <algorithm>
#include <filesystem>

#include "cli/attachment_kind.h"
#include "cli/dump_text.h"
#include "cli/dump_writer.h"
#include "cli/line_reader.h"
#include "cli/log_activities.h"
#include "cli/paths.h"
#include "cli/sql_text.h"
#include "tavolin/base/clock.h"
#include "tavolin/base/code_page.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

constexpr const char* kPosition = "tavolin_position";
constexpr const char* kNumber = "tavolin_number";
constexpr const char* kKey = "tavolin_key";

// What is not a table of the database. Texts that SQL cannot hold go to the first of them.
constexpr const char* kOwnTables = R"(
CREATE TABLE "tavolin_exact_texts" ("table_name" text NOT NULL, "row_number" integer NOT NULL,
    "column_name" text NOT NULL, "hex" text NOT NULL,
    CONSTRAINT "tavolin_exact_texts_key" PRIMARY KEY ("table_name", "row_number", "column_name"));
CREATE TABLE "tavolin_database" ("number" integer NOT NULL PRIMARY KEY, "name" text NOT NULL,
    "owner" text NOT NULL, "created" text NOT NULL, "logged_activities" text NOT NULL);
CREATE TABLE "tavolin_tables" ("number" integer NOT NULL PRIMARY KEY, "name" text NOT NULL,
    "table_name" text NOT NULL, "is_linked" integer NOT NULL);
CREATE TABLE "tavolin_fields" ("number" integer NOT NULL PRIMARY KEY, "table_name" text NOT NULL,
    "field" integer NOT NULL, "column_name" text NOT NULL, "name" text NOT NULL,
    "label" text NOT NULL, "key_part" integer, "links_to" text NOT NULL);
CREATE TABLE "tavolin_users" ("number" integer NOT NULL PRIMARY KEY, "name" text NOT NULL,
    "full_name" text NOT NULL, "description" text NOT NULL, "can_read" integer NOT NULL,
    "can_write" integer NOT NULL, "can_delete" integer NOT NULL, "disabled" integer NOT NULL);
CREATE TABLE "tavolin_notes" ("number" integer NOT NULL PRIMARY KEY,
    "user_number" integer NOT NULL REFERENCES "tavolin_users" ("number"),
    "note_number" integer NOT NULL, "date" text NOT NULL, "text" text NOT NULL);
CREATE TABLE "tavolin_attachments" ("number" integer NOT NULL PRIMARY KEY,
    "table_name" text NOT NULL, "record_position" integer NOT NULL, "kind" text NOT NULL,
    "attachment_number" integer NOT NULL, "path" text NOT NULL, "key" text NOT NULL);
CREATE TABLE "tavolin_log" ("number" integer NOT NULL PRIMARY KEY, "line" text NOT NULL);
)";

void Append(std::string& text, std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts) text += part;
}

std::string IsoDate(Date date) {
    const CivilTime t = ToCivil(date);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day,
                  t.hour, t.minute, t.second);
    return text;
}

std::string LogText(const CVLDBEngine& engine) {
    const LogType log = engine.LoggedActivities();
    std::string text;
    for (const LogActivity& activity : LogActivities()) {
        if (!(log.*activity.flag)) continue;
        text.append(text.empty() ? "" : " ").append(activity.name);
    }
    return text;
}

}  // namespace

void SqlWriter::Write() {
    schema_ = MakeSqlSchema(engine_, sink_.flow);
    WriteHead();
    for (const std::size_t i : schema_.order) CreateTable(schema_.tables[i], i);
    for (const std::size_t i : schema_.order) AddColumns(schema_.tables[i], i);
    for (const std::size_t i : schema_.order) WriteRecords(schema_.tables[i]);
    SqlInserter attachments(
        sink_, "tavolin_attachments", "number",
        {"table_name", "record_position", "kind", "attachment_number", "path", "key"});
    for (const SqlTable& table : schema_.tables) WriteAttachments(table, attachments);
    attachments.Finish();
    WriteDatabase();
    WriteTables();
    WriteUsers();
    if (owner_) WriteNotes();
    if (owner_) WriteLog();
    sink_.text += "COMMIT;\n";
}

void SqlWriter::WriteHead() {
    sink_.text += "-- ";
    AppendQuoted(engine_.DBName(), sink_.text);
    sink_.text +=
        ", for SQLite and PostgreSQL\n-- Its tables follow the eight whose names begin with "
        "tavolin_.\n-- Passwords are not in here.\n";
    if (!owner_)
        sink_.text += "-- Notes and the log are the owner's, and are not in here either.\n";
    sink_.text.append("BEGIN;").append(kOwnTables);
}

void SqlWriter::CreateTable(const SqlTable& table, std::size_t number) {
    std::string& text = sink_.text;
    text += '\n';
    for (const std::string& remark : table.remarks) Append(text, {"-- ", remark, "\n"});
    Append(text, {"CREATE TABLE ", QuotedName(table.name), " (\n    \"", kPosition,
                  "\" integer NOT NULL,\n    \"", kNumber, "\" integer NOT NULL"});
    if (table.has_own_keys) Append(text, {",\n    \"", kKey, "\" text NOT NULL"});
    for (const SqlColumn& column : table.columns) {
        if (!column.added_later) Append(text, {",\n    ", Definition(table, column, number)});
    }
    Append(text,
           {",\n    CONSTRAINT \"tavolin_key_", std::to_string(number + 1), "\" PRIMARY KEY ("});
    if (table.key.empty()) text += QuotedName(kPosition);
    for (const std::size_t i : table.key) {
        Append(text, {i == table.key.front() ? "" : ", ", QuotedName(table.columns[i].name)});
    }
    text += ")\n);\n";
}

std::string SqlWriter::Definition(const SqlTable& table, const SqlColumn& column,
                                  std::size_t number) const {
    std::string text = QuotedName(column.name) + " text";
    const auto in_key = [&](std::size_t i) { return &table.columns[i] == &column; };
    const bool keyed = std::any_of(table.key.begin(), table.key.end(), in_key);
    if (!column.target || keyed) text += " NOT NULL";
    if (!column.target) return text;
    const SqlTable& target = schema_.tables[*column.target];
    Append(text, {" CONSTRAINT \"tavolin_link_", std::to_string(number + 1), "_",
                  std::to_string(column.field), "\" REFERENCES ", QuotedName(target.name), " (",
                  QuotedName(target.columns[target.key[0]].name), ")"});
    // Rows may come in front of those that they refer to.
    if (column.added_later || &target == &table) text += " DEFERRABLE INITIALLY DEFERRED";
    return text;
}

// The one way to make links in a circle that both databases know.
void SqlWriter::AddColumns(const SqlTable& table, std::size_t number) {
    for (const SqlColumn& column : table.columns) {
        if (!column.added_later) continue;
        Append(sink_.text, {"ALTER TABLE ", QuotedName(table.name), " ADD COLUMN ",
                            Definition(table, column, number), ";\n"});
    }
}

void SqlWriter::WriteRecords(const SqlTable& table) {
    std::vector<std::string> columns = {kNumber};
    if (table.has_own_keys) columns.emplace_back(kKey);
    for (const SqlColumn& column : table.columns) columns.push_back(column.name);
    SqlInserter rows(sink_, table.name, kPosition, columns);
    std::int64_t position = 0;
    for (const auto& record : table.source->CVLRecordSet()->NewEnum()) {
        rows.Begin(++position);
        rows.Number(record->nKey());
        if (table.has_own_keys) rows.Text(record->Key());
        for (const SqlColumn& column : table.columns) {
            const std::string value = record->prop(column.field);
            if (column.target && value.empty()) {
                rows.Null();
            } else {
                rows.Text(value);
            }
        }
        rows.End();
    }
    rows.Finish();
}

void SqlWriter::WriteAttachments(const SqlTable& table, SqlInserter& rows) {
    std::int64_t position = 0;
    for (const auto& record : table.source->CVLRecordSet()->NewEnum()) {
        ++position;
        ForEachAttachment(*record, [&](const CVLAttachment& attachment) {
            rows.Begin(++attachments_);
            rows.Text(table.name);
            rows.Number(position);
            rows.Text(AttachmentKindText(attachment.SpecificType()));
            rows.Number(attachment.nKey());
            rows.Text(attachment.attachmentPathName());
            rows.Text(attachment.Key());
            rows.End();
        });
    }
}

void SqlWriter::WriteDatabase() {
    SqlInserter rows(sink_, "tavolin_database", "number",
                     {"name", "owner", "created", "logged_activities"});
    rows.Begin(1);
    rows.Text(engine_.DBName());
    rows.Text(engine_.DBOwner());
    rows.Text(IsoDate(engine_.DBCreationDate()));
    rows.Text(LogText(engine_));
    rows.End();
    rows.Finish();
}

void SqlWriter::WriteTables() {
    SqlInserter tables(sink_, "tavolin_tables", "number", {"name", "table_name", "is_linked"});
    std::int64_t number = 0;
    for (const SqlTable& table : schema_.tables) {
        tables.Begin(++number);
        tables.Text(table.source->Key());
        tables.Text(table.name);
        tables.Number(table.source->SpecificType() == isLinkedTable ? 1 : 0);
        tables.End();
    }
    tables.Finish();
    SqlInserter fields(
        sink_, "tavolin_fields", "number",
        {"table_name", "field", "column_name", "name", "label", "key_part", "links_to"});
    number = 0;
    for (const SqlTable& table : schema_.tables) {
        const auto parts = table.source->PrimaryKey().Parts();
        for (const SqlColumn& column : table.columns) {
            fields.Begin(++number);
            fields.Text(table.name);
            fields.Number(column.field);
            fields.Text(column.name);
            fields.Text(table.source->FieldName(column.field));
            fields.Text(table.source->FieldLabel(column.field));
            const auto part = std::find(parts.begin(), parts.end(), column.field);
            if (part == parts.end()) {
                fields.Null();
            } else {
                fields.Number(part - parts.begin() + 1);
            }
            fields.Text(table.source->LinkedTable(column.field));
            fields.End();
        }
    }
    fields.Finish();
}

void SqlWriter::WriteUsers() {
    SqlInserter rows(
        sink_, "tavolin_users", "number",
        {"name", "full_name", "description", "can_read", "can_write", "can_delete", "disabled"});
    std::int64_t number = 0;
    for (const auto& user : engine_.CVLDBUserSet()->NewEnum()) {
        rows.Begin(++number);
        rows.Text(user->UserName());
        rows.Text(user->UserFullName());
        rows.Text(user->UserDescription());
        rows.Number(user->CanRead() ? 1 : 0);
        rows.Number(user->CanReadWrite() ? 1 : 0);
        rows.Number(user->CanDelete() ? 1 : 0);
        rows.Number(user->UserDisabled() ? 1 : 0);
        rows.End();
    }
    rows.Finish();
}

void SqlWriter::WriteNotes() {
    SqlInserter rows(sink_, "tavolin_notes", "number",
                     {"user_number", "note_number", "date", "text"});
    std::int64_t number = 0;
    std::int64_t user_number = 0;
    for (const auto& user : engine_.CVLDBUserSet()->NewEnum()) {
        ++user_number;
        for (const auto& note : user->CVLUserNoteSet()->NewEnum()) {
            rows.Begin(++number);
            rows.Number(user_number);
            rows.Number(note->nKey);
            rows.Text(note->dateKey);
            rows.Text(note->Note());
            rows.End();
        }
    }
    rows.Finish();
}

// The log file is in code page 1252 unless it begins with a byte-order mark.
void SqlWriter::WriteLog() {
    if (!std::filesystem::is_regular_file(PathOf(log_file_))) return;
    char mark[3] = {};
    const bool utf8 =
        FileSource(log_file_)(mark, 3) == 3 && std::string_view(mark, 3) == "\xEF\xBB\xBF";
    SqlInserter rows(sink_, "tavolin_log", "number", {"line"});
    for (LineReader lines(FileSource(log_file_)); lines.Next();) {
        rows.Begin(static_cast<std::int64_t>(lines.number()));
        rows.Text(utf8 ? std::string(lines.line()) : DecodeAnsi(lines.line()));
        rows.End();
    }
    rows.Finish();
}

}  // namespace tavolin::cli
