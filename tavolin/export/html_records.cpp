#include "tavolin/export/html_records.h"

#include "tavolin/errors/trap.h"
#include "tavolin/export/labels.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/session.h"

namespace tavolin {
namespace {

constexpr const char* kHtmlOfRecordSet = "CVLRecordSet:MakeItHTML Method";
constexpr const char* kHtmlOfTable = "CVLTable:MakeItHTML Method";

// A row of the tables of all records, but for the value.
struct FieldRow {
    int field;
    bool is_link;
    std::string label;  // up to the value
    std::string link;   // the same for a value that is a link
};

std::vector<FieldRow> Rows(std::string_view dir_path, std::string_view file_name,
                           const CVLTable& table, const FieldTexts& labels) {
    std::vector<FieldRow> rows;
    for (const auto& [field, label] : Labelled(labels)) {
        TextSink text;
        text.Put("\r\n", "<tr><td>", label, ":</td><td>");
        FieldRow row{field, table.FieldIsForeignKey(field), text.text, {}};
        text.Put("<a target = 'inlineRecords' href = '", dir_path, file_name, "\\",
                 table.LinkedTable(field), "\\", "records.htm#");
        row.link = std::move(text.text);
        rows.push_back(std::move(row));
    }
    return rows;
}

void PutValue(const FieldRow& row, std::string_view value, TextSink& sink) {
    if (value.empty()) {
        sink.Put(row.label, "NULL", "</td></tr>");
    } else if (row.is_link) {
        sink.Put(row.link, value, "'>", value, "</a></td></tr>");
    } else {
        sink.Put(row.label, value, "</td></tr>");
    }
}

void AskToRead(const CVLRecordSet& records) {
    Trap(kHtmlOfRecordSet,
         [&] { AskRead(*records.Collection()->arena().session(), kHtmlOfRecordSet); });
}

void WriteHtmlRecords(const CVLRecordSet& records, const std::vector<FieldRow>& rows,
                      TextSink& sink) {
    const RecordArena& arena = records.Collection()->arena();
    std::int32_t number = 0;
    sink.Put(" ");
    records.Collection()->ForEach([&](RecordHandle record) {
        sink.Put("<p><a name ='", arena.Key(record), "'>", ++number, "</a>", "<br>", "\r\n",
                 "<TABLE>");
        for (const FieldRow& row : rows) PutValue(row, arena.Field(record, row.field), sink);
        // The empty lines bring every record to the top of the inline frame when it is jumped to.
        sink.Put("</TABLE></p><br><br><br><br><br><br><br><br><br><br><br><br>", "\r\n", "\r\n");
        sink.Pause();
    });
}

}  // namespace

void AskToWriteHtml(const CVLTable& table) {
    Trap(kHtmlOfTable, [&] { AskToRead(*table.CVLRecordSet()); });
}

void WriteHtml(const CVLTable& table, std::string_view dir_path, std::string_view file_name,
               TextSink& sink) {
    Trap(kHtmlOfTable, [&] {
        AskToRead(*table.CVLRecordSet());
        WriteHtmlRecords(*table.CVLRecordSet(), Rows(dir_path, file_name, table, LabelsOf(table)),
                         sink);
    });
}

std::string CVLRecordSet::MakeItHTML(std::string_view DirPath, std::string_view FileName,
                                     const std::shared_ptr<CVLTable>& table,
                                     const FieldTexts& FieldLbls) const {
    return Trap(kHtmlOfRecordSet, [&] {
        AskToRead(*this);
        if (!table) RaiseRunTime(kObjectNotSet);
        TextSink sink;
        WriteHtmlRecords(*this, Rows(DirPath, FileName, *table, FieldLbls), sink);
        return std::move(sink.text);
    });
}

std::string CVLTable::MakeItHTML(std::string_view DirPath, std::string_view FileName) const {
    TextSink sink;
    WriteHtml(*this, DirPath, FileName, sink);
    return std::move(sink.text);
}

}  // namespace tavolin
