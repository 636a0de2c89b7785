// Rows in aligned columns.
//
//     TextTable table({"ID", "Name"});
//     table.Add({"7", "Ann"});
//     table.Print(std::cout);
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace tavolin::cli {

class TextTable {
  public:
    explicit TextTable(const std::vector<std::string>& headers);

    // Adds a row, which must have a cell for each header.
    void Add(const std::vector<std::string>& cells);

    // Prints the headers, a line under them, and the rows. Columns are as wide as their widest
    // cell; with `width` above 0 the widest columns give way until a line fits in it, or until no
    // column is wider than kNarrowest.
    void Print(std::ostream& out, bool with_header = true, std::size_t width = 0) const;

    static constexpr std::size_t kNarrowest = 6;

  private:
    std::vector<std::size_t> Widths(bool with_header, std::size_t width) const;

    std::vector<std::vector<std::string>> rows_;  // the first one is the headers
};

}  // namespace tavolin::cli
