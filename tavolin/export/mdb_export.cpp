// Record sets and tables as tables of an Access database.
#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/errors/trap.h"
#include "tavolin/export/labels.h"
#include "tavolin/export/mdb/writer.h"
#include "tavolin/export/protection.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/session.h"
#include "tavolin/model/table_set.h"
#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

constexpr const char* kMdbOfRecordSet = "CVLRecordSet:MakeItMDB Method";
constexpr const char* kMdbOfTable = "CVLTable:MakeItMDB Method";
constexpr const char* kMdbOfTableSet = "CVLTableSet:MakeItMDB Method";

// One table on its way into a file.
class TableExport {
  public:
    // The right to read is asked for here.
    TableExport(const CVLRecordSet& records, std::string_view name, const FieldTexts& labels)
        : records_(*records.Collection()), name_(name), fields_(Labelled(labels)) {
        AskRead(*records_.arena().session(), kMdbOfRecordSet);
    }

    void CreateIn(mdb::Writer& file) {
        std::vector<std::string_view> columns;
        for (const LabelledField& field : fields_) columns.push_back(field.label);
        writer_ = &file.CreateTable(name_, columns);
    }

    void Fill() const {
        const RecordArena& arena = records_.arena();
        std::vector<std::string_view> values(fields_.size());
        records_.ForEach([&](RecordHandle record) {
            for (std::size_t i = 0; i < fields_.size(); ++i) {
                const std::string_view value = arena.Field(record, fields_[i].number);
                values[i] = value.empty() ? "NULL" : value;
            }
            writer_->Append(values);
        });
    }

  private:
    const RecordCollection& records_;
    std::string_view name_;
    std::vector<LabelledField> fields_;
    mdb::TableWriter* writer_ = nullptr;
};

void Export(std::vector<TableExport> tables, std::string_view dir, std::string_view name,
            const Session& session) {
    const std::string path = ExportPath(dir, ReplaceFold(name, DefaultExtension(), "") + "mdb");
    AskToExportTo(path, session);
    mdb::Writer file(path);
    for (TableExport& table : tables) table.CreateIn(file);
    for (const TableExport& table : tables) table.Fill();
    file.Close();
}

}  // namespace

void CVLRecordSet::MakeItMDB(std::string_view DirPath, std::string_view DBShortName,
                             std::string_view TableName, const FieldTexts& FieldLbls) const {
    Trap(kMdbOfRecordSet, [&] {
        Export({{*this, TableName, FieldLbls}}, DirPath, DBShortName, session());
    });
}

void CVLTable::MakeItMDB(std::string_view DirPath, std::string_view DBShortName) const {
    Trap(kMdbOfTable, [&] { records_->MakeItMDB(DirPath, DBShortName, key_, labels_); });
}

void CVLTableSet::MakeItMDB(std::string_view DirPath, std::string_view DBShortName) const {
    Trap(kMdbOfTableSet, [&] {
        std::vector<TableExport> exports;
        for (const auto& table : NewEnum()) {
            Trap(kMdbOfTable, [&] {
                exports.emplace_back(*table->CVLRecordSet(), table->Key(), LabelsOf(*table));
            });
        }
        if (!exports.empty()) Export(std::move(exports), DirPath, DBShortName, *session_);
    });
}

}  // namespace tavolin
