// The B-tree of an index, built from all its entries at once.
#pragma once

#include <vector>

#include "tavolin/export/mdb/page.h"
#include "tavolin/export/mdb/page_file.h"
#include "tavolin/export/mdb/page_set.h"

namespace tavolin::mdb {

// The key of one row and where the row is.
Bytes IndexEntry(Bytes key, RowId row);

// The parts of keys.
void AppendLongKey(Bytes& key, std::uint32_t value);
// `sort_key` is what SortKey gives.
void AppendTextKey(Bytes& key, ByteView sort_key);

// Writes the index of a table with its root on that page, whatever its size. Entries may come in
// any order. Gives the tree's pages.
PageSet StoreIndex(PageFile& file, PageNumber table, PageNumber root, std::vector<Bytes> entries);

}  // namespace tavolin::mdb
