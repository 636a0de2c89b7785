#include "tavolin/export/mdb/catalog.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "tavolin/base/utf16.h"
#include "tavolin/errors/error.h"
#include "tavolin/export/mdb/index_tree.h"
#include "tavolin/export/mdb/row.h"
#include "tavolin/export/mdb/sort_key.h"
#include "tavolin/export/mdb/system_tables.h"

namespace tavolin::mdb {
namespace {

constexpr std::uint32_t kTablesId = 0x0F000001;
constexpr std::uint32_t kDatabasesId = 0x0F000002;
constexpr std::uint32_t kRelationshipsId = 0x0F000003;
constexpr std::uint32_t kDatabaseId = 0x10000000;
constexpr std::uint32_t kRootId = 0x0F000000;

constexpr std::uint16_t kTableType = 1;
constexpr std::uint16_t kDatabaseType = 2;
constexpr std::uint16_t kContainerType = 3;
constexpr std::uint32_t kSystemFlag = 0x80000000;

struct FirstObject {
    std::uint32_t id;
    std::uint32_t parent;
    const char16_t* name;
    std::uint16_t type;
};
constexpr FirstObject kFirstObjects[] = {
    {kTablesId, kRootId, u"Tables", kContainerType},
    {kDatabasesId, kRootId, u"Databases", kContainerType},
    {kRelationshipsId, kRootId, u"Relationships", kContainerType},
    {kDatabaseId, kDatabasesId, u"MSysDb", kDatabaseType},
    {kObjectsPage, kTablesId, u"MSysObjects", kTableType},
    {kRightsPage, kTablesId, u"MSysACEs", kTableType},
    {kQueriesPage, kTablesId, u"MSysQueries", kTableType},
    {kRelationsPage, kTablesId, u"MSysRelationships", kTableType},
};

// Accounts as they stand under the constant date of the file header.
using Account = std::array<std::uint8_t, 2>;
constexpr Account kAdmin = {0xA6, 0x33};    // the user of an installation without log-on
constexpr Account kUsers = {0xA7, 0x33};    // everybody
constexpr Account kCreator = {0xA7, 0x36};  // whoever makes an object
constexpr Account kEngine = {0xA7, 0x31};

constexpr std::uint32_t kEverything = 0x000FFEFF;

struct Right {
    std::uint32_t object;
    std::uint32_t mask;
    Account account;
    bool inheritable;
};
constexpr Right kFirstRights[] = {
    {kRelationshipsId, 0x000F00FE, kCreator, true}, {kRelationshipsId, 0x00060001, kAdmin, false},
    {kRelationshipsId, 0x000FFFFF, kUsers, true},   {kTablesId, 0x000F00FE, kCreator, true},
    {kTablesId, kEverything, kAdmin, true},         {kTablesId, kEverything, kUsers, true},
    {kDatabasesId, 0x00060000, kAdmin, false},      {kDatabaseId, 0x0006000E, kAdmin, false},
    {kDatabaseId, 0x0000000E, kUsers, false},       {kObjectsPage, 0x00060000, kAdmin, false},
    {kObjectsPage, 0x00001400, kUsers, false},      {kRightsPage, 0x00060000, kAdmin, false},
    {kQueriesPage, 0x00060000, kAdmin, false},      {kQueriesPage, 0x00001400, kUsers, false},
    {kRelationsPage, 0x000E0000, kAdmin, false},    {kRelationsPage, 0x00001400, kUsers, false},
};

// Rows of the page of maps, as the system tables' definitions name them.
enum SystemMap : std::size_t {
    kObjectsMap = 0,
    kParentIdNameMap = 16,
    kIdMap = 17,
    kRightsMap = 18,
    kObjectIdMap = 20,
};

std::uint64_t DaysOf(Date date) {
    constexpr double kSecondsPerDay = 86400;
    return std::bit_cast<std::uint64_t>(static_cast<double>(date.seconds) / kSecondsPerDay);
}

// A part of a row of MSysObjects.
template <std::unsigned_integral Number>
Number FieldAt(ByteView row, std::size_t offset) {
    if (offset + sizeof(Number) > row.size()) throw DamagedState("a row that is too short");
    return LoadLittle<Number>(&row[offset]);
}

// Behind the number of columns. Part of the file format: do not change.
constexpr std::size_t kIdOffset = 2;
constexpr std::size_t kParentOffset = 6;
constexpr std::size_t kTypeOffset = 10;
constexpr std::size_t kCreatedOffset = 12;
constexpr std::size_t kFlagsOffset = 28;
constexpr std::size_t kNullMaskSize = 3;
constexpr std::uint32_t kObjectPresent = 0xFF;  // the columns up to Flags
constexpr std::size_t kObjectColumns = 17;
constexpr std::size_t kNullObjectColumns = 9;
constexpr std::size_t kRightColumns = 4;
constexpr std::uint32_t kRightPresent = 0x07;
constexpr std::uint32_t kInheritable = 0x08;

void PutEmptyIndexes(PageFile& file, PageNumber table, Definition& definition,
                     std::vector<MapRecord>& maps) {
    for (const Index& index : definition.indexes) {
        maps[index.map.row] = StoreMap(StoreIndex(file, table, index.root, {}), file);
    }
    file.Write(table, DefinitionPage(definition));
}

}  // namespace

// A system table's rows, where they stand, and the entries of its indexes.
struct Catalog::StoredTable {
    RowStream rows;
    std::vector<std::vector<Bytes>> entries;  // for each index
    std::vector<std::uint32_t> distinct_keys;

    void Store(PageFile& file, PageNumber page, Definition definition,
               std::vector<MapRecord>& maps) {
        rows.Finish();
        definition.rows = rows.rows();
        maps[definition.owned.row] = StoreMap(rows.pages(), file);
        maps[definition.with_room.row] = StoreMap(rows.PagesWithRoom(), file);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            Index& index = definition.indexes[i];
            index.distinct_keys = distinct_keys[i];
            maps[index.map.row] =
                StoreMap(StoreIndex(file, page, index.root, std::move(entries[i])), file);
        }
        file.Write(page, DefinitionPage(definition));
    }
};

Catalog::Catalog(Date created) {
    for (const FirstObject& each : kFirstObjects) {
        AddObject({each.id, each.parent, each.name, each.type, kSystemFlag, DaysOf(created), true});
    }
}

void Catalog::AddObject(Object object) {
    if (object.parent == kTablesId) {
        auto key = SortKey(object.name);
        if (!key) throw DamagedState("a table with a name that has no place in the order");
        table_keys_.insert(std::lower_bound(table_keys_.begin(), table_keys_.end(), *key), *key);
    }
    objects_.push_back(std::move(object));
}

bool Catalog::Holds(std::string_view name) const {
    const auto key = SortKey(ToUtf16(name));
    return key && std::binary_search(table_keys_.begin(), table_keys_.end(), *key);
}

void Catalog::Add(std::string_view name, PageNumber definition, Date created) {
    AddObject({definition, kTablesId, ToUtf16(name), kTableType, 0, DaysOf(created), false});
}

Catalog::Object Catalog::ReadObject(ByteView row) {
    Object object{FieldAt<std::uint32_t>(row, kIdOffset),
                  FieldAt<std::uint32_t>(row, kParentOffset),
                  {},
                  FieldAt<std::uint16_t>(row, kTypeOffset),
                  FieldAt<std::uint32_t>(row, kFlagsOffset),
                  FieldAt<std::uint64_t>(row, kCreatedOffset),
                  false};
    object.system = (object.flags & kSystemFlag) != 0;
    // From the end: the nulls, the number of values, and where the first two of them begin.
    const std::size_t starts = row.size() - kNullMaskSize - 2;
    const auto begin = FieldAt<std::uint16_t>(row, starts - 2);
    const auto end = FieldAt<std::uint16_t>(row, starts - 4);
    if (begin > end || end > row.size()) throw DamagedState("a name outside its row");
    for (std::size_t at = begin; at + 1 < end; at += 2) {
        object.name += static_cast<char16_t>(FieldAt<std::uint16_t>(row, at));
    }
    return object;
}

Catalog Catalog::Load(PageFile& file) {
    const Page maps = file.Read(kSystemMapsPage);
    std::vector<PageNumber> own;
    const auto load = [&](const Page& page, std::size_t record) {
        LoadedMap map = LoadMap(RowAt(page, record), file);
        own.insert(own.end(), map.bitmaps.begin(), map.bitmaps.end());
        own.insert(own.end(), map.pages.begin(), map.pages.end());
        return map.pages;
    };
    Catalog catalog;
    for (const PageNumber number : load(maps, kObjectsMap)) {
        const Page page = file.Read(number);
        for (std::size_t row = 0; row < RowCount(page); ++row) {
            catalog.AddObject(ReadObject(RowAt(page, row)));
        }
    }
    for (const SystemMap each : {kParentIdNameMap, kIdMap, kRightsMap, kObjectIdMap}) {
        load(maps, each);
    }
    load(file.Read(kPageMapPage), 0);
    std::erase_if(own,
                  [&](PageNumber page) { return page < kFirstFreePage || page >= file.count(); });
    file.Recycle(std::move(own));
    return catalog;
}

Catalog::StoredTable Catalog::StoreObjects(PageFile& file) const {
    StoredTable table{RowStream(file, kObjectsPage), {{}, {}}, {}};
    Row row(kObjectColumns);
    for (const Object& object : objects_) {
        row.Clear();
        Append(row.bytes(), object.id);
        Append(row.bytes(), object.parent);
        Append(row.bytes(), object.type);
        Append(row.bytes(), object.created);
        Append(row.bytes(), object.created);  // the last change
        Append(row.bytes(), object.flags);
        Append(row.NextValue(), object.name);
        const bool engines = object.system && object.type != kDatabaseType;
        Append(row.NextValue(), ByteView(engines ? kEngine : kAdmin));
        for (std::size_t i = 0; i < kNullObjectColumns; ++i) row.NextValue();
        row.Finish(kObjectPresent);
        const RowId place = table.rows.Append(row.bytes());
        Bytes parent_and_name;
        AppendLongKey(parent_and_name, object.parent);
        AppendTextKey(parent_and_name, *SortKey(object.name));
        table.entries[0].push_back(IndexEntry(std::move(parent_and_name), place));
        Bytes id;
        AppendLongKey(id, object.id);
        table.entries[1].push_back(IndexEntry(std::move(id), place));
    }
    const auto count = static_cast<std::uint32_t>(objects_.size());
    table.distinct_keys = {count, count};
    return table;
}

Catalog::StoredTable Catalog::StoreRights(PageFile& file) const {
    StoredTable table{RowStream(file, kRightsPage), {{}}, {}};
    Row row(kRightColumns);
    const auto add = [&](const Right& right) {
        row.Clear();
        Append(row.bytes(), right.object);
        Append(row.bytes(), right.mask);
        Append(row.NextValue(), ByteView(right.account));
        row.Finish(kRightPresent | (right.inheritable ? kInheritable : 0));
        Bytes key;
        AppendLongKey(key, right.object);
        table.entries[0].push_back(IndexEntry(std::move(key), table.rows.Append(row.bytes())));
    };
    for (const Right& right : kFirstRights) add(right);
    for (const Object& object : objects_) {
        if (object.system) continue;
        add({object.id, kEverything, kAdmin, false});
        add({object.id, kEverything, kUsers, false});
    }
    // Every object has rights.
    table.distinct_keys = {static_cast<std::uint32_t>(objects_.size())};
    return table;
}

void Catalog::Store(PageFile& file) const {
    std::vector<MapRecord> maps(kSystemMaps);
    StoreObjects(file).Store(file, kObjectsPage, ObjectsDefinition(), maps);
    StoreRights(file).Store(file, kRightsPage, RightsDefinition(), maps);
    auto queries = QueriesDefinition();
    PutEmptyIndexes(file, kQueriesPage, queries, maps);
    auto relations = RelationsDefinition();
    PutEmptyIndexes(file, kRelationsPage, relations, maps);
    RowPage page(0);
    for (const MapRecord& map : maps) page.Append(map);
    file.Write(kSystemMapsPage, page.page());
}

}  // namespace tavolin::mdb
