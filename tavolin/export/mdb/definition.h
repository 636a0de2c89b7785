// Table definitions: the page that tells of a table's columns and indexes and where its rows are.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavolin/export/mdb/page.h"

namespace tavolin::mdb {

enum ColumnType : std::uint8_t {
    kBoolean = 1,
    kByte = 2,
    kInteger = 3,
    kLong = 4,
    kDateTime = 8,
    kBinary = 9,
    kText = 10,
    kOle = 11,
    kMemo = 12,
};

enum ColumnFlag : std::uint8_t {
    kFixed = 0x01,
    kNullable = 0x02,
    kSystemColumn = 0x10,
    kScrambled = 0x20,
};

enum ColumnExtra : std::uint8_t {
    kPlain = 0x00,
    kCompressible = 0x01,
};

struct Column {
    std::u16string name;
    ColumnType type = kText;
    std::uint16_t number = 0;
    std::uint16_t variable_index = 0;  // of a fixed one: how many of the variable ones are before
    std::uint16_t ordinal = 0;
    std::uint8_t flags = kNullable;
    std::uint8_t extra = kPlain;
    std::uint16_t offset = 0;  // of a fixed one, in the fixed part of a row
    std::uint16_t length = 0;  // in bytes
};

enum IndexFlag : std::uint8_t {
    kUnique = 0x01,
    kIgnoreNull = 0x02,
    kRequired = 0x08,
    kAlwaysSet = 0x80,
};

struct Index {
    std::u16string name;
    std::vector<std::uint16_t> columns;
    std::uint8_t flags = kAlwaysSet;
    bool primary = false;
    RowId map;  // the usage map of its pages
    PageNumber root = 0;
    std::uint32_t distinct_keys = 0;
};

// The usage maps of a column whose long values stand on pages of their own.
struct LongColumn {
    std::uint16_t number = 0;
    RowId owned;
    RowId with_room;
};

struct Definition {
    bool system = false;
    std::uint32_t rows = 0;
    std::vector<Column> columns;
    std::vector<Index> indexes;
    std::vector<std::size_t> index_order;  // of `indexes`, by name
    std::vector<LongColumn> long_columns;
    RowId owned;  // the usage maps of its data pages
    RowId with_room;
};

// The definition's page. It must fit one: thirty columns whatever their names are.
Page DefinitionPage(const Definition& definition);

}  // namespace tavolin::mdb
