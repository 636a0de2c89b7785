// What the system tables say: the tables of a file, and the rights of everybody to them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/date.h"
#include "tavolin/export/mdb/page.h"
#include "tavolin/export/mdb/page_file.h"
#include "tavolin/export/mdb/row_page.h"
#include "tavolin/export/mdb/usage_map.h"

namespace tavolin::mdb {

class Catalog {
  public:
    // That of a new file.
    explicit Catalog(Date created);
    // That of the file as it is. Its pages are handed back to the file: Store writes all anew.
    // DamagedState for what cannot be believed.
    static Catalog Load(PageFile& file);

    // Whether a table, or a system table, goes by that name in any letter case. The name must be
    // one that TableNameFault finds no fault with.
    bool Holds(std::string_view name) const;
    void Add(std::string_view name, PageNumber definition, Date created);

    // Writes the pages of the system tables.
    void Store(PageFile& file) const;

  private:
    struct Object {
        std::uint32_t id;  // of a table, the page of its definition
        std::uint32_t parent;
        std::u16string name;
        std::uint16_t type;
        std::uint32_t flags;
        std::uint64_t created;  // the bits of days and their parts
        bool system;
    };
    struct StoredTable;

    Catalog() = default;
    static Object ReadObject(ByteView row);
    void AddObject(Object object);
    StoredTable StoreObjects(PageFile& file) const;
    StoredTable StoreRights(PageFile& file) const;

    std::vector<Object> objects_;
    std::vector<Bytes> table_keys_;  // of the tables' names, in order
};

}  // namespace tavolin::mdb
