// Rows in aligned columns.
//
//     TextTable table({"ID", "Name"});
//     table.Add({"7", "Ann"});
//     table.Print(std::cout, {});
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace tavolin::cli {

class TextTable {
  public:
    enum class Fit { kCut, kWrap };
    struct Layout {
        bool header = true;
        std::size_t width = 0;  // that lines shall fit in; 0 for no limit
        Fit fit = Fit::kCut;    // what becomes of a value that is wider than its column
    };

    explicit TextTable(const std::vector<std::string>& headers);

    // Adds a row, which must have a cell for each header.
    void Add(const std::vector<std::string>& cells);
    // The column's values are moved to its right edge.
    void AlignRight(std::size_t column) { to_the_right_[column] = true; }

    // Prints the headers, a line under them, and the rows. Columns are as wide as their widest
    // cell; where the width is limited the widest columns give way until a line fits in it, or
    // until no column is wider than kNarrowest.
    void Print(std::ostream& out, const Layout& layout) const;

    static constexpr std::size_t kNarrowest = 6;

  private:
    using Row = std::vector<std::string>;

    std::vector<std::size_t> Widths(const Layout& layout) const;
    void PrintRow(std::ostream& out, const Row& cells, const std::vector<std::size_t>& widths,
                  Fit fit) const;
    void PrintLine(std::ostream& out, const Row& cells,
                   const std::vector<std::size_t>& widths) const;

    std::vector<Row> rows_;  // the first one is the headers
    std::vector<bool> to_the_right_;
};

}  // namespace tavolin::cli
