#include "tavolin/export/mdb/definition.h"

#include <algorithm>
#include <cstring>

#include "tavolin/errors/trap.h"

namespace tavolin::mdb {
namespace {

constexpr std::uint32_t kTableMark = 0x659;
constexpr std::uint32_t kIndexMark = 0x783;
constexpr std::uint16_t kGeneralOrder = 0x0409;
constexpr std::uint16_t kNoColumn = 0xFFFF;
constexpr std::uint8_t kAscending = 1;
constexpr std::size_t kIndexSlots = 10;
constexpr std::size_t kFreeBytesAt = 2;
constexpr std::size_t kLengthOffset = 8;
constexpr std::size_t kPageHeader = 8;

// Narrows and appends: the numbers of a definition are written with their width beside them.
void Put8(Bytes& bytes, std::size_t value) { bytes.push_back(static_cast<std::uint8_t>(value)); }
void Put16(Bytes& bytes, std::size_t value) { Append(bytes, static_cast<std::uint16_t>(value)); }
void Put32(Bytes& bytes, std::size_t value) { Append(bytes, static_cast<std::uint32_t>(value)); }

void PutName(Bytes& bytes, std::u16string_view name) {
    Put16(bytes, 2 * name.size());
    Append(bytes, name);
}

void PutHeader(Bytes& bytes, const Definition& table) {
    const auto is_variable = [](const Column& column) { return (column.flags & kFixed) == 0; };
    Put16(bytes, kDefinitionPage);
    Put16(bytes, 0);  // free bytes, put in at the end
    Put32(bytes, 0);  // the next page
    Put32(bytes, 0);  // the length, put in at the end
    Put32(bytes, kTableMark);
    Put32(bytes, table.rows);
    Put32(bytes, 0);  // the last automatic number
    Put8(bytes, 1);
    bytes.resize(40);
    Put8(bytes, table.system ? 'S' : 'N');
    Put16(bytes, table.columns.size());  // ever
    Put16(bytes, static_cast<std::size_t>(
                     std::count_if(table.columns.begin(), table.columns.end(), is_variable)));
    Put16(bytes, table.columns.size());
    Put32(bytes, table.indexes.size());  // the logical ones
    Put32(bytes, table.indexes.size());  // the real ones
    Put32(bytes, table.owned.Pointer());
    Put32(bytes, table.with_room.Pointer());
}

void PutColumn(Bytes& bytes, const Column& column) {
    Put8(bytes, column.type);
    Put32(bytes, kTableMark);
    Put16(bytes, column.number);
    Put16(bytes, column.variable_index);
    Put16(bytes, column.ordinal);
    Put16(bytes, kGeneralOrder);
    Put16(bytes, 0);
    Put8(bytes, column.flags);
    Put8(bytes, column.extra);
    Put32(bytes, 0);
    Put16(bytes, column.offset);
    Put16(bytes, column.length);
}

void PutIndex(Bytes& bytes, const Index& index) {
    Put32(bytes, kIndexMark);
    for (std::size_t i = 0; i < kIndexSlots; ++i) {
        const bool used = i < index.columns.size();
        Put16(bytes, used ? index.columns[i] : kNoColumn);
        Put8(bytes, used ? kAscending : 0);
    }
    Put32(bytes, index.map.Pointer());
    Put32(bytes, index.root);
    Put32(bytes, 0);
    Put8(bytes, index.flags);
    Put32(bytes, 0);
    Put8(bytes, 0);
}

// What a program shows as an index; here each is a real one of its own, of the same number.
void PutLogicalIndex(Bytes& bytes, std::size_t number, bool primary) {
    constexpr std::uint32_t kNoRelation = 0xFFFFFFFF;
    Put32(bytes, kTableMark);
    Put32(bytes, number);
    Put32(bytes, number);
    Put8(bytes, 0);
    Put32(bytes, kNoRelation);
    Put32(bytes, 0);
    Put8(bytes, 4);
    Put8(bytes, 4);
    Put8(bytes, primary ? 1 : 0);
    Put32(bytes, 0);
}

void PutIndexes(Bytes& bytes, const Definition& table) {
    for (const Index& index : table.indexes) PutIndex(bytes, index);
    for (const std::size_t i : table.index_order) {
        PutLogicalIndex(bytes, i, table.indexes[i].primary);
    }
    for (const std::size_t i : table.index_order) PutName(bytes, table.indexes[i].name);
}

}  // namespace

Page DefinitionPage(const Definition& table) {
    Bytes bytes;
    PutHeader(bytes, table);
    for (const Index& index : table.indexes) {
        Put32(bytes, 0);
        Put32(bytes, index.distinct_keys);
        Put32(bytes, 0);
    }
    for (const Column& column : table.columns) PutColumn(bytes, column);
    for (const Column& column : table.columns) PutName(bytes, column.name);
    PutIndexes(bytes, table);
    for (const LongColumn& column : table.long_columns) {
        Put16(bytes, column.number);
        Put32(bytes, column.owned.Pointer());
        Put32(bytes, column.with_room.Pointer());
    }
    Put16(bytes, 0xFFFF);
    if (bytes.size() > kPageSize - kPageHeader) RaiseRunTime(kInternalError);
    Page page;
    std::memcpy(page.data(), bytes.data(), bytes.size());
    page.Put(kFreeBytesAt, static_cast<std::uint16_t>(kPageSize - kPageHeader - bytes.size()));
    page.Put(kLengthOffset, static_cast<std::uint32_t>(bytes.size()));
    return page;
}

}  // namespace tavolin::mdb
