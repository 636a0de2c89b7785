#include "tavolin/export/mdb/writer.h"

#include "tavolin/base/clock.h"
#include "tavolin/base/utf16.h"
#include "tavolin/errors/trap.h"
#include "tavolin/export/mdb/definition.h"
#include "tavolin/export/mdb/failure.h"
#include "tavolin/export/mdb/file_header.h"
#include "tavolin/export/mdb/names.h"
#include "tavolin/export/mdb/text_value.h"

namespace tavolin::mdb {
namespace {

constexpr std::size_t kMaxColumns = 25;

// Believes a sealed file no more than it must: a seal can be forged.
Catalog CatalogOf(PageFile& file) {
    if (file.is_new()) return Catalog(Now());
    try {
        return Catalog::Load(file);
    } catch (const DamagedState& damage) {
        throw Error(kFileExists, file.path() + ": " + damage.what());
    }
}

Column TextColumn(std::string_view name, std::uint16_t number) {
    Column column;
    column.name = ToUtf16(name);
    column.number = column.variable_index = column.ordinal = number;
    column.extra = kCompressible;
    column.length = 2 * kMaxTextUnits;
    return column;
}

}  // namespace

TableWriter::TableWriter(PageFile& file, std::string_view name, Texts columns,
                         PageNumber definition)
    : file_(file),
      name_(name),
      columns_(columns.begin(), columns.end()),
      definition_(definition),
      rows_(file, definition),
      row_(columns.size()) {}

Message TableWriter::Where(const char* what, std::size_t column, const std::string& cause) const {
    const std::string record = std::to_string(rows_.rows() + 1);
    const std::string place = column < columns_.size() ? ", Column: " + columns_[column] : "";
    return Message(std::string_view(what), "\r\nTable: ", name_, ", Record: ", record, place,
                   "\r\nCause: ", cause);
}

void TableWriter::AppendValue(std::size_t column, std::string_view value) {
    const TextSize size = AppendText(value, row_.NextValue());
    if (size.units > kMaxTextUnits) {
        Fail(kFieldTooSmall,
             Where("The Field Is Too Small To Accept The Value!", column,
                   "The Value Has " + std::to_string(size.units) + " Characters, 255 Are Allowed"));
    }
    if (!size.storable) {
        Fail(kInvalidCall, Where("The Value Cannot Be Stored!", column,
                                 "It Begins With U+FEFF And Has A Character U+xx00"));
    }
}

void TableWriter::Append(Texts values) {
    if (values.size() != columns_.size()) RaiseRunTime(kInvalidCall);
    row_.Clear();
    for (std::size_t i = 0; i < values.size(); ++i) AppendValue(i, values[i]);
    row_.Finish((std::uint32_t{1} << columns_.size()) - 1);
    const std::size_t size = row_.bytes().size();
    if (size > kMaxRowSize) {
        Fail(kRecordTooLarge, Where("The Record Is Too Large!", columns_.size(),
                                    "It Takes " + std::to_string(size) + " Bytes, " +
                                        std::to_string(kMaxRowSize) + " Are Allowed"));
    }
    rows_.Append(row_.bytes());
}

void TableWriter::Finish() {
    rows_.Finish();
    const MapRecord owned = StoreMap(rows_.pages(), file_);
    const MapRecord with_room = StoreMap(rows_.PagesWithRoom(), file_);
    const PageNumber map_page = file_.Allocate();
    RowPage maps(0);
    Definition definition;
    definition.rows = rows_.rows();
    definition.owned = {map_page, maps.Append(owned)};
    definition.with_room = {map_page, maps.Append(with_room)};
    file_.Write(map_page, maps.page());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        definition.columns.push_back(TextColumn(columns_[i], static_cast<std::uint16_t>(i)));
    }
    file_.Write(definition_, DefinitionPage(definition));
}

Writer::Writer(std::string_view path) : file_(path), catalog_(CatalogOf(file_)) {}

void Writer::CheckColumns(std::string_view table, TableWriter::Texts columns) const {
    if (columns.size() > kMaxColumns) RaiseRunTime(kInvalidCall);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string fault = NameFault(columns[i]);
        if (!fault.empty()) {
            Fail(kInvalidName, Message("The Name Is Not Valid!\r\nTable: ", table,
                                       ", Column: ", columns[i], "\r\nCause: ", fault));
        }
        for (std::size_t j = 0; j < i; ++j) {
            if (!IsOneName(columns[i], columns[j])) continue;
            Fail(kDuplicateField, Message("The Field Is Defined More Than Once!\r\nTable: ", table,
                                          ", Column: ", columns[i]));
        }
    }
}

TableWriter& Writer::CreateTable(std::string_view name, TableWriter::Texts columns) {
    const std::string fault = TableNameFault(name);
    if (!fault.empty()) {
        Fail(kInvalidName,
             Message("The Name Is Not Valid!\r\nTable: ", name, "\r\nCause: ", fault));
    }
    if (catalog_.Holds(name)) {
        Fail(kTableExists,
             Message("The Table Already Exists!\r\nTable: ", name, "\r\nFile: ", file_.path()));
    }
    CheckColumns(name, columns);
    const PageNumber definition = file_.Allocate();
    catalog_.Add(name, definition, Now());
    tables_.emplace_back(new TableWriter(file_, name, columns, definition));
    return *tables_.back();
}

void Writer::Close() {
    for (const auto& table : tables_) table->Finish();
    catalog_.Store(file_);
    RowPage page_map(kPageMapPage);
    const MapRecord free = StoreFreeMap(file_);
    page_map.Append(free);
    page_map.Append(MapRecord{});
    for (const PageNumber page : file_.Unused()) file_.Write(page, Page());
    file_.Write(0, FileHeaderPage());
    file_.Commit(page_map.page());
}

}  // namespace tavolin::mdb
