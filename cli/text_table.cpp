#include "cli/text_table.h"

#include <algorithm>
#include <numeric>
#include <ostream>

#include "cli/display_text.h"

namespace tavolin::cli {
namespace {

constexpr std::size_t kGap = 2;

void PrintRow(std::ostream& out, const std::vector<std::string>& cells,
              const std::vector<std::size_t>& widths) {
    std::string line;
    std::size_t pending = 0;  // blanks are written only in front of something
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string cell = Shortened(cells[i], widths[i]);
        if (!cell.empty()) {
            line.append(pending, ' ').append(cell);
            pending = 0;
        }
        pending += widths[i] - DisplayWidth(cell) + kGap;
    }
    out << line << '\n';
}

}  // namespace

TextTable::TextTable(const std::vector<std::string>& headers) { Add(headers); }

void TextTable::Add(const std::vector<std::string>& cells) {
    auto& row = rows_.emplace_back();
    row.reserve(cells.size());
    for (const auto& cell : cells) row.push_back(Printable(cell));
}

std::vector<std::size_t> TextTable::Widths(bool with_header, std::size_t width) const {
    std::vector<std::size_t> widths(rows_[0].size(), 0);
    for (std::size_t r = with_header ? 0 : 1; r < rows_.size(); ++r) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(rows_[r][i]));
        }
    }
    if (width == 0 || widths.empty()) return widths;
    std::size_t total = std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * kGap);
    while (total > width) {
        const auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest <= kNarrowest) break;
        --*widest;
        --total;
    }
    return widths;
}

void TextTable::Print(std::ostream& out, bool with_header, std::size_t width) const {
    const std::vector<std::size_t> widths = Widths(with_header, width);
    if (with_header) {
        PrintRow(out, rows_[0], widths);
        std::vector<std::string> line;
        line.reserve(widths.size());
        for (const std::size_t column : widths) line.emplace_back(column, '-');
        PrintRow(out, line, widths);
    }
    for (std::size_t r = 1; r < rows_.size(); ++r) PrintRow(out, rows_[r], widths);
}

}  // namespace tavolin::cli
