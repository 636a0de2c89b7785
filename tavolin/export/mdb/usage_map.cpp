#include "tavolin/export/mdb/usage_map.h"

#include <algorithm>
#include <cstring>

#include "tavolin/errors/error.h"

namespace tavolin::mdb {
namespace {

// The first byte of a record. An inline one has a bitmap of its own behind the first page that it
// tells of, a multiple of 8; the other one has the numbers of the bitmap pages, 0 for none.
constexpr std::uint8_t kInline = 0;
constexpr std::uint8_t kOnPages = 1;
constexpr std::size_t kInlineBits = 5;
constexpr PageNumber kInlinePages = 8 * (sizeof(MapRecord) - kInlineBits);

constexpr std::size_t kBitmapStart = 4;
constexpr PageNumber kPagesPerBitmap = 8 * (kPageSize - kBitmapStart);
constexpr std::size_t kBitmaps = (sizeof(MapRecord) - 1) / sizeof(PageNumber);

using Bitmaps = std::array<PageNumber, kBitmaps>;  // 0 where there is none

void SetBit(std::uint8_t* bits, PageNumber bit) {
    bits[bit / 8] = static_cast<std::uint8_t>(bits[bit / 8] | 1u << bit % 8);
}

void ForEachBit(ByteView bits, PageNumber first, std::vector<PageNumber>& pages) {
    for (std::size_t i = 0; i < bits.size(); ++i) {
        for (PageNumber bit = 0; bit < 8; ++bit) {
            if (bits[i] >> bit & 1) pages.push_back(first + static_cast<PageNumber>(8 * i) + bit);
        }
    }
}

MapRecord InlineRecord(const PageSet& pages, PageNumber first) {
    MapRecord record{kInline};
    StoreLittle(&record[1], first);
    pages.ForEach([&](PageNumber page) { SetBit(&record[kInlineBits], page - first); });
    return record;
}

MapRecord WriteBitmaps(const PageSet& pages, const Bitmaps& bitmaps, PageFile& file) {
    std::vector<Page> contents(kBitmaps);
    pages.ForEach([&](PageNumber page) {
        SetBit(contents[page / kPagesPerBitmap].data() + kBitmapStart, page % kPagesPerBitmap);
    });
    MapRecord record{kOnPages};
    for (std::size_t i = 0; i < kBitmaps; ++i) {
        StoreLittle(&record[1 + sizeof(PageNumber) * i], bitmaps[i]);
        if (bitmaps[i] == 0) continue;
        contents[i].Put(0, kBitmapPage);
        file.Write(bitmaps[i], contents[i]);
    }
    return record;
}

}  // namespace

MapRecord StoreMap(const PageSet& pages, PageFile& file) {
    if (pages.empty()) return {};
    const PageNumber first = pages.end() <= kInlinePages ? 0 : pages.first() / 8 * 8;
    if (pages.end() - first <= kInlinePages) return InlineRecord(pages, first);
    std::array<bool, kBitmaps> needed{};
    pages.ForEach([&](PageNumber page) { needed[page / kPagesPerBitmap] = true; });
    Bitmaps bitmaps{};
    for (std::size_t i = 0; i < kBitmaps; ++i) {
        if (needed[i]) bitmaps[i] = file.Allocate();
    }
    return WriteBitmaps(pages, bitmaps, file);
}

MapRecord StoreFreeMap(PageFile& file) {
    Bitmaps bitmaps{};
    std::size_t count = 0;
    // The bitmaps are pages of the file themselves. All of them are needed, even those without a
    // bit: what no bitmap tells of counts as free.
    const auto covers = [&] {
        return count == 0 ? kInlinePages - 8 : static_cast<PageNumber>(count) * kPagesPerBitmap;
    };
    while (covers() < file.count()) bitmaps[count++] = file.Allocate();
    PageSet free;
    for (const PageNumber page : file.Unused()) free.Add(page);
    if (count == 0) {
        free.AddRun(file.count(), kInlinePages);
        return InlineRecord(free, 0);
    }
    free.AddRun(file.count(), covers());
    return WriteBitmaps(free, bitmaps, file);
}

LoadedMap LoadMap(ByteView record, const PageFile& file) {
    if (record.size() != sizeof(MapRecord) || record[0] > kOnPages) {
        throw DamagedState("not a usage map");
    }
    LoadedMap map;
    if (record[0] == kInline) {
        ForEachBit(record.subspan(kInlineBits), LoadLittle<PageNumber>(&record[1]), map.pages);
        return map;
    }
    for (std::size_t i = 0; i < kBitmaps; ++i) {
        const auto number = LoadLittle<PageNumber>(&record[1 + sizeof(PageNumber) * i]);
        if (number == 0) continue;
        map.bitmaps.push_back(number);
        const Page page = file.Read(number);
        ForEachBit(page.bytes().subspan(kBitmapStart), static_cast<PageNumber>(i) * kPagesPerBitmap,
                   map.pages);
    }
    return map;
}

}  // namespace tavolin::mdb
