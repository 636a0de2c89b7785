// Pages of rows: the data of tables, and usage maps.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavolin/export/mdb/page.h"
#include "tavolin/export/mdb/page_file.h"
#include "tavolin/export/mdb/page_set.h"

namespace tavolin::mdb {

inline constexpr std::size_t kMaxRowSize = 4060;

// A page being filled with rows, from its end downward.
class RowPage {
  public:
    // The owner is the page of the table's definition.
    explicit RowPage(PageNumber owner);

    bool Fits(std::size_t size) const;
    // The row must fit. Gives its number.
    std::uint8_t Append(ByteView row);
    // Whether another program should find room here.
    bool HasRoom() const;
    const Page& page() const { return page_; }

  private:
    std::size_t Free() const;

    Page page_;
    std::size_t lowest_ = kPageSize;
    std::uint16_t rows_ = 0;
};

// How many rows are on the page; DamagedState for another kind of page.
std::size_t RowCount(const Page& page);
// The bytes of a row; DamagedState for one that is not there.
ByteView RowAt(const Page& page, std::size_t row);

// A table's rows, on as many pages as they take.
class RowStream {
  public:
    RowStream(PageFile& file, PageNumber owner) : file_(file), owner_(owner), page_(owner) {}

    // The row must not be longer than kMaxRowSize.
    RowId Append(ByteView row);
    // Writes the last page. Nothing may be appended afterwards.
    void Finish();

    std::uint32_t rows() const { return rows_; }
    const PageSet& pages() const { return pages_; }
    // Those with room for more rows, once finished.
    PageSet PagesWithRoom() const;

  private:
    PageFile& file_;
    PageNumber owner_;
    RowPage page_;
    PageNumber number_ = 0;  // of page_; 0 while there is none
    PageSet pages_;
    std::uint32_t rows_ = 0;
};

}  // namespace tavolin::mdb
