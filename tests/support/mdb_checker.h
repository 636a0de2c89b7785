// Reads a file of the Jet 4.0 format page by page and finds fault with whatever does not agree.
// It shares no code with the writer.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tavolin/base/utf16.h"

namespace tavolin {

class MdbChecker {
  public:
    using Row = std::vector<std::string>;
    struct Table {
        std::vector<std::string> columns;
        std::vector<Row> rows;
        std::set<unsigned> pages;
    };

    explicit MdbChecker(std::string bytes) : bytes_(std::move(bytes)) {
        if (Want(bytes_.size() % kSize == 0 && pages() >= 14, "size")) Check();
    }

    unsigned pages() const { return static_cast<unsigned>(bytes_.size() / kSize); }
    const std::string& faults() const { return faults_; }
    // Those of the user.
    const std::map<std::string, Table>& tables() const { return tables_; }

  private:
    static constexpr unsigned kSize = 4096;
    struct Index {
        unsigned distinct, map, root;
        std::vector<unsigned> columns;
    };
    struct StoredRow {
        unsigned page, number;
        std::string bytes;
    };
    struct Definition {
        unsigned rows, variable, columns;
        std::vector<std::string> names;
        std::vector<unsigned> numbers;
        std::vector<Index> indexes;
        std::vector<StoredRow> stored;
        std::set<unsigned> pages;
    };

    bool Want(bool condition, const std::string& what, unsigned page = 0) {
        if (!condition) faults_ += what + " (page " + std::to_string(page) + ")\n";
        return condition;
    }
    std::string_view Page(unsigned n) {
        if (!Want(n < pages(), "no such page", n)) n = 0;
        return std::string_view(bytes_).substr(std::size_t{n} * kSize, kSize);
    }
    static unsigned U8(std::string_view b, std::size_t at) {
        return static_cast<unsigned char>(b.at(at));
    }
    static unsigned U16(std::string_view b, std::size_t at) {
        return U8(b, at) | U8(b, at + 1) << 8;
    }
    static unsigned U32(std::string_view b, std::size_t at) {
        return U16(b, at) | U16(b, at + 2) << 16;
    }
    static std::string Wide(std::string_view b) {
        std::u16string units;
        for (std::size_t i = 0; i + 1 < b.size(); i += 2) units += static_cast<char16_t>(U16(b, i));
        return FromUtf16(units);
    }
    static std::string Text(std::string_view b) {
        if (b.substr(0, 2) != "\xFF\xFE") return Wide(b);
        std::u16string units;
        bool wide = false;
        for (std::size_t i = 2; i < b.size();) {
            if (b[i] == 0) {
                wide = !wide;
                ++i;
            } else {
                units += static_cast<char16_t>(wide ? U16(b, i) : U8(b, i));
                i += wide ? 2 : 1;
            }
        }
        return FromUtf16(units);
    }

    void Own(unsigned page, const std::string& owner) {
        const auto [place, is_new] = owners_.emplace(page, owner);
        Want(page < pages() && is_new, owner + " takes a page of " + place->second, page);
    }

    std::vector<std::string_view> RowsOf(unsigned number, unsigned owner) {
        const auto page = Page(number);
        Want(U16(page, 0) == 0x101 && U32(page, 4) == owner, "not a data page", number);
        std::vector<std::string_view> rows;
        unsigned end = kSize;
        const unsigned count = U16(page, 12);
        Want(count <= 255, "too many rows", number);
        for (unsigned i = 0; i < count; ++i) {
            const unsigned start = U16(page, 14 + 2 * i);
            if (!Want(start <= end && start >= 14 + 2 * count, "row offset", number)) break;
            rows.push_back(page.substr(start, end - start));
            end = start;
        }
        Want(U16(page, 2) == end - 14 - 2 * count, "free bytes", number);
        return rows;
    }

    std::set<unsigned> Map(unsigned pointer, const std::string& owner, unsigned map_owner = 0) {
        const auto records = RowsOf(pointer >> 8, map_owner);
        std::set<unsigned> set;
        if (!Want((pointer & 0xFF) < records.size(), "no map record", pointer >> 8)) return set;
        const auto record = records[pointer & 0xFF];
        const auto bits = [&](std::string_view bitmap, unsigned first) {
            for (unsigned i = 0; i < 8 * bitmap.size(); ++i) {
                if (U8(bitmap, i / 8) >> i % 8 & 1) set.insert(first + i);
            }
        };
        Want(record.size() == 69 && U8(record, 0) <= 1, "map record", pointer >> 8);
        if (U8(record, 0) == 0) {
            Want(U32(record, 1) % 8 == 0, "first page of a map", pointer >> 8);
            bits(record.substr(5), U32(record, 1));
            return set;
        }
        for (unsigned i = 0; i < 17; ++i) {
            const unsigned number = U32(record, 1 + 4 * i);
            if (number == 0) continue;
            Own(number, "bitmap of " + owner);
            Want(U32(Page(number), 0) == 0x105, "not a bitmap", number);
            bits(Page(number).substr(4), 32736 * i);
        }
        return set;
    }

    Definition Define(unsigned number, const std::string& owner) {
        const auto page = Page(number);
        Definition table{};
        const unsigned length = U32(page, 8);
        Want(U16(page, 0) == 0x102 && U32(page, 4) == 0 && length <= 4088 &&
                 U16(page, 2) == 4088 - length && U16(page, length - 2) == 0xFFFF,
             "definition", number);
        table.rows = U32(page, 16);
        table.variable = U16(page, 43);
        table.columns = U16(page, 45);
        const unsigned indexes = U32(page, 51);
        const unsigned columns_at = 63 + 12 * indexes;
        unsigned at = columns_at + 25 * table.columns;
        for (unsigned i = 0; i < table.columns; ++i) {
            table.numbers.push_back(U16(page, columns_at + 25 * i + 5));
            table.names.push_back(Wide(page.substr(at + 2, U16(page, at))));
            at += 2 + U16(page, at);
        }
        for (unsigned i = 0; i < indexes; ++i, at += 52) {
            Index index{U32(page, 63 + 12 * i + 4), U32(page, at + 34), U32(page, at + 38), {}};
            for (unsigned slot = 0; slot < 10; ++slot) {
                const unsigned column = U16(page, at + 4 + 3 * slot);
                if (column != 0xFFFF) index.columns.push_back(column);
            }
            table.indexes.push_back(index);
        }
        table.pages = Map(U32(page, 55), owner);
        const auto with_room = Map(U32(page, 59), owner);
        for (const unsigned each : table.pages) {
            Own(each, "data of " + owner);
            const auto rows = RowsOf(each, number);
            for (unsigned i = 0; i < rows.size(); ++i)
                table.stored.push_back({each, i, std::string(rows[i])});
        }
        for (const unsigned each : with_room) {
            Want(table.pages.count(each) == 1 && U16(Page(each), 2) > 2, "no room", each);
        }
        Want(table.stored.size() == table.rows, "row count of " + owner, number);
        for (const Index& index : table.indexes) CheckIndex(index, table, number, owner);
        return table;
    }

    // Whether all rows are in the index, in order, each under a key that begins with its column.
    void CheckIndex(const Index& index, const Definition& table, unsigned number,
                    const std::string& owner) {
        std::set<unsigned> found;
        std::vector<std::string> entries;
        std::vector<std::vector<unsigned>> levels;
        const std::function<std::string(unsigned)> walk = [&](unsigned n) -> std::string {
            const auto page = Page(n);
            const unsigned level = U8(page, 26);
            if (!Want(found.insert(n).second && U32(page, 4) == number && U16(page, 24) == 0 &&
                          U16(page, 0) == (level == 0 ? 0x104 : 0x103),
                      "index page", n))
                return {};
            if (levels.size() <= level) levels.resize(level + 1);
            levels[level].push_back(n);
            std::vector<std::string> own;
            unsigned begin = 0;
            for (unsigned bit = 1; bit <= 3616; ++bit) {
                if (~U8(page, 27 + bit / 8) >> bit % 8 & 1) continue;
                own.emplace_back(page.substr(480 + begin, bit - begin));
                begin = bit;
            }
            Want(U16(page, 2) == 3616 - begin, "free bytes of an index", n);
            if (level == 0) {
                entries.insert(entries.end(), own.begin(), own.end());
                return own.empty() ? "" : own.back();
            }
            Want(!own.empty(), "node with one child", n);
            for (const std::string& entry : own) {
                const std::size_t key = entry.size() - 4;
                unsigned child = 0;
                for (std::size_t i = key; i < entry.size(); ++i) child = child << 8 | U8(entry, i);
                Want(walk(child) == entry.substr(0, key), "key of a node", n);
            }
            return walk(U32(page, 20));
        };
        walk(index.root);
        for (const unsigned each : found) {
            if (each >= 14) Own(each, "index of " + owner);
        }
        Want(Map(index.map, owner) == found, "map of an index of " + owner, index.root);
        for (const auto& level : levels) {
            for (std::size_t i = 0; i < level.size(); ++i) {
                Want(U32(Page(level[i]), 12) == (i ? level[i - 1] : 0) &&
                         U32(Page(level[i]), 16) == (i + 1 < level.size() ? level[i + 1] : 0),
                     "links of an index", level[i]);
            }
        }
        CheckEntries(index, table, entries);
    }

    void CheckEntries(const Index& index, const Definition& table,
                      const std::vector<std::string>& entries) {
        std::map<unsigned, const StoredRow*> rows;
        for (const StoredRow& row : table.stored) rows[row.page << 8 | row.number] = &row;
        Want(entries.size() == rows.size(), "entries of an index", index.root);
        std::set<std::string> keys;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::string& entry = entries[i];
            Want(i == 0 || entries[i - 1] < entry, "order of an index", index.root);
            const std::size_t key = entry.size() - 4;
            keys.insert(entry.substr(0, key));
            const unsigned pointer = U8(entry, key) << 24 | U8(entry, key + 1) << 16 |
                                     U8(entry, key + 2) << 8 | U8(entry, key + 3);
            if (!Want(rows.count(pointer) == 1, "row of an entry", index.root)) continue;
            // The first column of every index is the first or second number of a row.
            const unsigned value = U32(rows[pointer]->bytes, 2 + 4 * index.columns[0]);
            std::string wanted = "\x7F";
            for (const int shift : {24, 16, 8, 0})
                wanted += static_cast<char>((value ^ 0x80000000) >> shift);
            Want(entry.substr(0, 5) == wanted, "key of an entry", index.root);
            rows.erase(pointer);
        }
        Want(keys.size() == index.distinct, "distinct keys", index.root);
    }

    // The variable values of a row, by their places.
    std::vector<std::string> ValuesOf(const std::string& row, const Definition& table) {
        const std::size_t mask = (table.columns + 7) / 8;
        if (!Want(U16(row, 0) == table.columns, "columns of a row")) return {};
        if (table.variable == 0) return {};
        const std::size_t count_at = row.size() - mask - 2;
        Want(U16(row, count_at) == table.variable, "values of a row");
        std::vector<std::string> values;
        for (unsigned i = 0; i < table.variable; ++i) {
            const unsigned begin = U16(row, count_at - 2 * i - 2);
            const unsigned end = U16(row, count_at - 2 * i - 4);
            if (!Want(begin <= end && end <= count_at, "value of a row")) return values;
            values.push_back(row.substr(begin, end - begin));
        }
        return values;
    }

    void Check() {
        for (unsigned n = 0; n < 14; ++n) Own(n, "the system");
        Want(Page(0).substr(4, 16) == std::string_view("Standard Jet DB\0", 16), "header");
        const Definition objects = Define(2, "MSysObjects");
        const Definition rights = Define(3, "MSysACEs");
        Define(4, "MSysQueries");
        Define(5, "MSysRelationships");
        Want(RowsOf(6, 0).size() == 31, "maps of the system", 6);
        std::map<unsigned, unsigned> allowed;
        for (const StoredRow& row : rights.stored) ++allowed[U32(row.bytes, 2)];
        for (const StoredRow& row : objects.stored) {
            const std::string name = Wide(ValuesOf(row.bytes, objects).at(0));
            const unsigned id = U32(row.bytes, 2);
            Want(allowed[id] > 0, "no rights to " + name);
            if (U16(row.bytes, 10) == 1 && id >= 14) ReadTable(id, name);
        }
        CheckFreeMap();
    }

    void ReadTable(unsigned id, const std::string& name) {
        Own(id, "definition of " + name);
        const auto page = Page(id);
        for (const std::size_t at : {55, 59})
            owners_.emplace(U32(page, at) >> 8, "maps of " + name);
        const Definition definition = Define(id, name);
        Table table{definition.names, {}, definition.pages};
        for (const StoredRow& row : definition.stored) {
            table.rows.emplace_back();
            for (const auto& value : ValuesOf(row.bytes, definition))
                table.rows.back().push_back(Text(value));
        }
        Want(tables_.emplace(name, std::move(table)).second, "two tables " + name, id);
    }

    void CheckFreeMap() {
        const auto free = Map(U32(Page(1), 4) == 1 ? 0x100 : 0, "the file", 1);
        const unsigned covered = *free.rbegin() + 1;
        for (unsigned n = 0; n < covered; ++n) {
            const bool is_free = n >= pages() || owners_.count(n) == 0;
            Want((free.count(n) == 1) == is_free, "free or not", n);
        }
        Want(covered >= pages() && covered % 8 == 0, "reach of the map of free pages");
    }

    std::string bytes_;
    std::string faults_;
    std::map<unsigned, std::string> owners_;
    std::map<std::string, Table> tables_;
};

}  // namespace tavolin
