// A row as it stands in the file: its fixed part, its values of any length, and where they begin.
//
//     Row row(2);
//     AppendText("Ada", row.NextValue());
//     AppendText("London", row.NextValue());
//     row.Finish(0b11);
#pragma once

#include <cstdint>
#include <vector>

#include "tavolin/export/mdb/page.h"

namespace tavolin::mdb {

class Row {
  public:
    explicit Row(std::size_t columns) : columns_(columns) { Clear(); }

    // Begins anew; memory is kept.
    void Clear();
    // Where the fixed part goes, before any value.
    Bytes& bytes() { return bytes_; }
    // Ends the value before; the next one is what is appended here. Nothing for a null.
    Bytes& NextValue();
    // `present` has a bit for each column that is not null. The size is never cut: it is for the
    // caller to see whether it fits a page.
    void Finish(std::uint32_t present);

  private:
    std::size_t columns_;
    Bytes bytes_;
    std::vector<std::size_t> starts_;
};

}  // namespace tavolin::mdb
