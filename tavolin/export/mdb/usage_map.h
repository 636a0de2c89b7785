// Usage maps: sets of pages as they stand in the file, in a record of fixed size and, when the
// pages are far apart, bitmap pages beside it.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tavolin/export/mdb/page.h"
#include "tavolin/export/mdb/page_file.h"
#include "tavolin/export/mdb/page_set.h"

namespace tavolin::mdb {

using MapRecord = std::array<std::uint8_t, 69>;

// The record of a set of pages, whose bitmap pages have been allocated and written.
MapRecord StoreMap(const PageSet& pages, PageFile& file);

// The record of the pages that are free: the recycled ones that nobody took, and all behind the
// file's end. Nothing may be allocated afterwards.
MapRecord StoreFreeMap(PageFile& file);

// The pages of a map, and the bitmap pages that it is on. DamagedState for what is no map.
struct LoadedMap {
    std::vector<PageNumber> pages;
    std::vector<PageNumber> bitmaps;
};
LoadedMap LoadMap(ByteView record, const PageFile& file);

}  // namespace tavolin::mdb
