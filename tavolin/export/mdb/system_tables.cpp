#include "tavolin/export/mdb/system_tables.h"

#include <initializer_list>

namespace tavolin::mdb {
namespace {

// A fixed column has an offset, another one its place among the variable ones; both are counted in
// the order of the numbers, while the definitions list columns by name.
struct Entry {
    const char16_t* name;
    ColumnType type;
    std::uint16_t number;
    std::uint16_t variable_index;
    std::uint16_t offset;
    std::uint16_t length;
};

constexpr std::uint16_t kVariable = 0xFFFF;  // as an offset
constexpr std::uint16_t kMaxLength = 510;

std::vector<Column> Columns(std::initializer_list<Entry> entries) {
    std::vector<Column> columns;
    for (const Entry& entry : entries) {
        Column column;
        column.name = entry.name;
        column.type = entry.type;
        column.number = entry.number;
        column.variable_index = entry.variable_index;
        const bool fixed = entry.offset != kVariable;
        // The names of accounts are kept from prying eyes.
        const std::u16string_view name = entry.name;
        const bool account = name == u"Owner" || name == u"SID";
        column.flags = static_cast<std::uint8_t>(kNullable | kSystemColumn | (fixed ? kFixed : 0) |
                                                 (account ? kScrambled : 0));
        column.offset = fixed ? entry.offset : 0;
        column.length = entry.length;
        columns.push_back(std::move(column));
    }
    return columns;
}

RowId Map(std::uint8_t row) { return {kSystemMapsPage, row}; }

LongColumn LongMaps(std::uint16_t number, std::uint8_t first_map) {
    return {number, Map(first_map), Map(static_cast<std::uint8_t>(first_map + 1))};
}

constexpr std::uint8_t kUniqueIndex = kAlwaysSet | kUnique;

}  // namespace

Definition ObjectsDefinition() {
    Definition table;
    table.system = true;
    table.columns = Columns({{u"Connect", kMemo, 9, 3, kVariable, 0},
                             {u"Database", kMemo, 8, 2, kVariable, 0},
                             {u"DateCreate", kDateTime, 4, 1, 10, 8},
                             {u"DateUpdate", kDateTime, 5, 1, 18, 8},
                             {u"Flags", kLong, 7, 2, 26, 4},
                             {u"ForeignName", kText, 10, 4, kVariable, kMaxLength},
                             {u"Id", kLong, 0, 0, 0, 4},
                             {u"Lv", kOle, 13, 7, kVariable, 0},
                             {u"LvExtra", kOle, 16, 10, kVariable, 0},
                             {u"LvModule", kOle, 15, 9, kVariable, 0},
                             {u"LvProp", kOle, 14, 8, kVariable, 0},
                             {u"Name", kText, 2, 0, kVariable, kMaxLength},
                             {u"Owner", kBinary, 6, 1, kVariable, kMaxLength},
                             {u"ParentId", kLong, 1, 0, 4, 4},
                             {u"RmtInfoLong", kOle, 12, 6, kVariable, 0},
                             {u"RmtInfoShort", kBinary, 11, 5, kVariable, kMaxLength},
                             {u"Type", kInteger, 3, 1, 8, 2}});
    table.indexes = {{u"ParentIdName", {1, 2}, kUniqueIndex, false, Map(16), 7},
                     {u"Id", {0}, kUniqueIndex, true, Map(17), 8}};
    table.index_order = {1, 0};
    table.long_columns = {LongMaps(9, 4),   LongMaps(8, 2),   LongMaps(13, 8), LongMaps(16, 14),
                          LongMaps(15, 12), LongMaps(14, 10), LongMaps(12, 6)};
    table.owned = Map(0);
    table.with_room = Map(1);
    return table;
}

Definition RightsDefinition() {
    Definition table;
    table.system = true;
    table.columns = Columns({{u"ACM", kLong, 2, 1, 4, 4},
                             {u"FInheritable", kBoolean, 3, 1, 0, 1},
                             {u"ObjectId", kLong, 0, 0, 0, 4},
                             {u"SID", kBinary, 1, 0, kVariable, kMaxLength}});
    table.indexes = {{u"ObjectId", {0}, kAlwaysSet | kRequired, false, Map(20), 9}};
    table.index_order = {0};
    table.owned = Map(18);
    table.with_room = Map(19);
    return table;
}

Definition QueriesDefinition() {
    Definition table;
    table.system = true;
    table.columns = Columns({{u"Attribute", kByte, 1, 0, 4, 1},
                             {u"Expression", kMemo, 5, 3, kVariable, 0},
                             {u"Flag", kInteger, 6, 4, 5, 2},
                             {u"LvExtra", kLong, 7, 4, 7, 4},
                             {u"Name1", kText, 3, 1, kVariable, kMaxLength},
                             {u"Name2", kText, 4, 2, kVariable, kMaxLength},
                             {u"ObjectId", kLong, 0, 0, 0, 4},
                             {u"Order", kBinary, 2, 0, kVariable, kMaxLength}});
    table.indexes = {{u"ObjectIdAttribute", {0, 1, 2}, kUniqueIndex, true, Map(25), 10}};
    table.index_order = {0};
    table.long_columns = {LongMaps(5, 23)};
    table.owned = Map(21);
    table.with_room = Map(22);
    return table;
}

Definition RelationsDefinition() {
    constexpr std::uint8_t kFlags = kAlwaysSet | kIgnoreNull;
    Definition table;
    table.system = true;
    table.columns = Columns({{u"ccolumn", kLong, 2, 1, 4, 4},
                             {u"grbit", kLong, 1, 1, 0, 4},
                             {u"icolumn", kLong, 3, 1, 8, 4},
                             {u"szColumn", kText, 5, 2, kVariable, kMaxLength},
                             {u"szObject", kText, 4, 1, kVariable, kMaxLength},
                             {u"szReferencedColumn", kText, 7, 4, kVariable, kMaxLength},
                             {u"szReferencedObject", kText, 6, 3, kVariable, kMaxLength},
                             {u"szRelationship", kText, 0, 0, kVariable, kMaxLength}});
    table.indexes = {{u"szRelationship", {0}, kFlags, false, Map(28), 11},
                     {u"szObject", {4}, kFlags, false, Map(29), 12},
                     {u"szReferencedObject", {6}, kFlags, false, Map(30), 13}};
    table.index_order = {1, 2, 0};
    table.owned = Map(26);
    table.with_room = Map(27);
    return table;
}

}  // namespace tavolin::mdb
