#include "cli/text_table.h"

#include <algorithm>
#include <numeric>
#include <ostream>

#include "cli/display_text.h"
#include "cli/terminal.h"

namespace tavolin::cli {
namespace {

constexpr std::size_t kGap = 2;

}  // namespace

TextTable::TextTable(const std::vector<std::string>& headers) : to_the_right_(headers.size()) {
    Add(headers);
}

void TextTable::Add(const std::vector<std::string>& cells) {
    auto& row = rows_.emplace_back();
    row.reserve(cells.size());
    for (const auto& cell : cells) row.push_back(Printable(cell));
}

std::vector<std::size_t> TextTable::Widths(const Layout& layout) const {
    std::vector<std::size_t> widths(rows_[0].size(), 0);
    for (std::size_t r = layout.header ? 0 : 1; r < rows_.size(); ++r) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(rows_[r][i]));
        }
    }
    if (layout.width == 0 || widths.empty()) return widths;
    std::size_t total = std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * kGap);
    while (total > layout.width) {
        const auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest <= kNarrowest) break;
        --*widest;
        --total;
    }
    return widths;
}

// Cells that all fit in their columns.
void TextTable::PrintLine(std::ostream& out, const Row& cells,
                          const std::vector<std::size_t>& widths) const {
    std::string line;
    std::size_t pending = 0;  // blanks are written only in front of something
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t left = widths[i] - std::min(widths[i], DisplayWidth(cells[i]));
        if (!cells[i].empty()) {
            line.append(pending + (to_the_right_[i] ? left : 0), ' ').append(cells[i]);
            pending = to_the_right_[i] ? 0 : left;
        } else {
            pending += widths[i];
        }
        pending += kGap;
    }
    out << line << '\n';
}

void TextTable::PrintRow(std::ostream& out, const Row& cells,
                         const std::vector<std::size_t>& widths, Fit fit) const {
    Row line(cells.size());
    if (fit == Fit::kCut) {
        for (std::size_t i = 0; i < cells.size(); ++i) line[i] = Shortened(cells[i], widths[i]);
        return PrintLine(out, line, widths);
    }
    std::vector<std::vector<std::string>> wrapped;
    std::size_t lines = 1;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        lines = std::max(lines, wrapped.emplace_back(Wrapped(cells[i], widths[i])).size());
    }
    for (std::size_t n = 0; n < lines; ++n) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line[i] = n < wrapped[i].size() ? wrapped[i][n] : std::string();
        }
        PrintLine(out, line, widths);
    }
}

void TextTable::Print(std::ostream& out, const Layout& layout) const {
    const std::vector<std::size_t> widths = Widths(layout);
    if (layout.header) {
        PrintRow(out, rows_[0], widths, layout.fit);
        Row line;
        line.reserve(widths.size());
        for (const std::size_t column : widths) line.emplace_back(column, '-');
        PrintLine(out, line, widths);
    }
    for (std::size_t r = 1; r < rows_.size() && out && !Interrupted(); ++r) {
        PrintRow(out, rows_[r], widths, layout.fit);
    }
}

}  // namespace tavolin::cli
