#include "tavolin/export/mdb/row_page.h"

#include <cstring>

#include "tavolin/errors/error.h"

namespace tavolin::mdb {
namespace {

constexpr std::size_t kRowFreeOffset = 2;
constexpr std::size_t kOwnerOffset = 4;
constexpr std::size_t kRowsOffset = 12;
constexpr std::size_t kRowHeaderSize = 14;
constexpr std::size_t kSlotSize = 2;
constexpr std::uint16_t kMaxRows = 255;
// A page with less is not worth another program's look.
constexpr std::size_t kWorthwhileRoom = 16;

}  // namespace

RowPage::RowPage(PageNumber owner) {
    page_.Put(0, kDataPage);
    page_.Put(kOwnerOffset, owner);
    page_.Put(kRowFreeOffset, static_cast<std::uint16_t>(Free()));
}

std::size_t RowPage::Free() const { return lowest_ - kRowHeaderSize - kSlotSize * rows_; }

bool RowPage::Fits(std::size_t size) const {
    return rows_ < kMaxRows && size + kSlotSize <= Free();
}

bool RowPage::HasRoom() const { return Fits(kWorthwhileRoom - kSlotSize); }

std::uint8_t RowPage::Append(ByteView row) {
    lowest_ -= row.size();
    std::memcpy(page_.data() + lowest_, row.data(), row.size());
    page_.Put(kRowHeaderSize + kSlotSize * rows_, static_cast<std::uint16_t>(lowest_));
    ++rows_;
    page_.Put(kRowsOffset, rows_);
    page_.Put(kRowFreeOffset, static_cast<std::uint16_t>(Free()));
    return static_cast<std::uint8_t>(rows_ - 1);
}

std::size_t RowCount(const Page& page) {
    const auto rows = page.Get<std::uint16_t>(kRowsOffset);
    if (page.Get<std::uint16_t>(0) != kDataPage || rows > kMaxRows) {
        throw DamagedState("not a page of rows");
    }
    return rows;
}

ByteView RowAt(const Page& page, std::size_t row) {
    if (row >= RowCount(page)) throw DamagedState("a row that is not there");
    const auto start = [&](std::size_t slot) -> std::size_t {
        return page.Get<std::uint16_t>(kRowHeaderSize + kSlotSize * slot);
    };
    const std::size_t end = row == 0 ? kPageSize : start(row - 1);
    if (start(row) > end || end > kPageSize) throw DamagedState("a row outside its page");
    return page.bytes().subspan(start(row), end - start(row));
}

RowId RowStream::Append(ByteView row) {
    if (number_ != 0 && !page_.Fits(row.size())) {
        file_.Write(number_, page_.page());
        number_ = 0;
        page_ = RowPage(owner_);
    }
    if (number_ == 0) {
        number_ = file_.Allocate();
        pages_.Add(number_);
    }
    ++rows_;
    return {number_, page_.Append(row)};
}

void RowStream::Finish() {
    if (number_ != 0) file_.Write(number_, page_.page());
}

PageSet RowStream::PagesWithRoom() const {
    PageSet pages;
    if (number_ != 0 && page_.HasRoom()) pages.Add(number_);
    return pages;
}

}  // namespace tavolin::mdb
