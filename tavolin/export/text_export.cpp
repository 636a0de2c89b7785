#include "tavolin/export/text_export.h"

#include "tavolin/base/code_page.h"
#include "tavolin/errors/trap.h"
#include "tavolin/export/labels.h"
#include "tavolin/export/protection.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/session.h"

namespace tavolin {
namespace {

constexpr const char* kTextOfRecordSet = "CVLRecordSet:MakeItText Method";
constexpr const char* kTextOfTable = "CVLTable:MakeItText Method";
constexpr const char* kTextOfTableSet = "CVLTableSet:MakeItText Method";

const Session& SessionOf(const CVLRecordSet& records) {
    return *records.Collection()->arena().session();
}

void WriteTextRecords(const CVLRecordSet& records, const FieldTexts& labels, TextSink& sink) {
    AskRead(SessionOf(records), kTextOfRecordSet);
    const RecordArena& arena = records.Collection()->arena();
    const auto fields = Labelled(labels);
    std::int32_t number = 0;
    sink.Put(" ");
    records.Collection()->ForEach([&](RecordHandle record) {
        sink.Put(kLineBreak, ++number);
        for (const auto& [field, label] : fields) {
            const std::string_view value = arena.Field(record, field);
            sink.Put(kLineBreak, label, ": ", value.empty() ? "NULL" : value);
        }
        sink.Put(kLineBreak, kLineBreak);
        sink.Pause();
    });
}

// Every value that the text shows is in the code page.
bool RecordsFitAnsi(const CVLRecordSet& records, const FieldTexts& labels) {
    if (records.Count() == 0) return true;
    const RecordArena& arena = records.Collection()->arena();
    const auto fields = Labelled(labels);
    for (const auto& field : fields) {
        if (!FitsAnsi(field.label)) return false;
    }
    RecordCollection::Cursor cursor(*records.Collection());
    for (RecordHandle record; (record = cursor.Next()) != kNoHandle;) {
        if (arena.IsAscii(record)) continue;
        for (const auto& field : fields) {
            if (!FitsAnsi(arena.Field(record, field.number))) return false;
        }
    }
    return true;
}

}  // namespace

TextEncoding EncodingForText(const CVLTableSet& tables) {
    return Trap(kTextOfTableSet, [&] {
        bool fits = true;
        for (const auto& table : tables.NewEnum()) {
            Trap(kTextOfTable,
                 [&] { AskRead(SessionOf(*table->CVLRecordSet()), kTextOfRecordSet); });
            fits = fits && FitsAnsi(table->Key()) &&
                   RecordsFitAnsi(*table->CVLRecordSet(), LabelsOf(*table));
        }
        return fits ? TextEncoding::kAnsi : TextEncoding::kUtf8;
    });
}

void WriteText(const CVLTableSet& tables, TextSink& sink) {
    sink.Put(" ");
    for (const auto& table : tables.NewEnum()) {
        sink.Put(table->Key(), kLineBreak);
        Trap(kTextOfTable,
             [&] { WriteTextRecords(*table->CVLRecordSet(), LabelsOf(*table), sink); });
        sink.Put(kLineBreak, kLineBreak);
    }
}

std::string CVLRecordSet::MakeItText(const FieldTexts& FieldLbls) const {
    return Trap(kTextOfRecordSet, [&] {
        TextSink sink;
        WriteTextRecords(*this, FieldLbls, sink);
        return std::move(sink.text);
    });
}

std::string CVLTable::MakeItText() const {
    return Trap(kTextOfTable, [&] { return records_->MakeItText(labels_); });
}

std::string CVLTableSet::MakeItText() const {
    return Trap(kTextOfTableSet, [&] {
        TextSink sink;
        WriteText(*this, sink);
        return std::move(sink.text);
    });
}

}  // namespace tavolin
