#include "cli/display_text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "cli/width_table.h"
#include "tavolin/base/text.h"
#include "tavolin/base/utf8.h"

namespace tavolin::cli {
namespace {

template <std::size_t N>
bool Holds(const WidthRange (&ranges)[N], char32_t c) {
    const WidthRange* range = std::upper_bound(
        std::begin(ranges), std::end(ranges), c,
        [](char32_t value, const WidthRange& candidate) { return value < candidate.first; });
    return range != std::begin(ranges) && c <= std::prev(range)->last;
}

std::size_t UnitWidth(const Utf8Unit& unit) {
    if (!unit.well_formed || unit.value < 0x300) return 1;
    if (Holds(kZeroWidth, unit.value)) return 0;
    return Holds(kWide, unit.value) ? 2 : 1;
}

// Adds up columns. Emoji that joiners make one picture of, as a family, take the columns of the
// first; a symbol of one column that is asked to be shown as an emoji takes two.
class Columns {
  public:
    // The columns of everything so far, this unit included.
    std::size_t Add(const Utf8Unit& unit) {
        constexpr char32_t kJoiner = 0x200D;
        constexpr char32_t kAsEmoji = 0xFE0F;
        constexpr char32_t kFirstEmoji = 0x203C;
        std::size_t width = UnitWidth(unit);
        if (unit.value == kAsEmoji && base_ >= kFirstEmoji && base_width_ == 1) {
            base_width_ = 2;
            return sum_ += 1;
        }
        if (width > 0) {
            const bool joined = after_joiner_ && base_ >= kFirstEmoji && unit.value >= kFirstEmoji;
            base_ = unit.well_formed ? unit.value : 0;
            base_width_ = joined ? 2 : width;
            if (joined) width = 0;
        }
        after_joiner_ = unit.value == kJoiner;
        return sum_ += width;
    }

  private:
    std::size_t sum_ = 0;
    char32_t base_ = 0;  // the last one that takes columns
    std::size_t base_width_ = 0;
    bool after_joiner_ = false;
};

// How many bytes of the text fit in so many columns.
std::size_t BytesWithin(std::string_view text, std::size_t width) {
    Columns columns;
    std::size_t bytes = 0;
    while (bytes < text.size()) {
        const Utf8Unit unit = FirstUnit(text.substr(bytes));
        if (columns.Add(unit) > width) break;
        bytes += unit.length;
    }
    return bytes;
}

bool IsControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200E && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || IsSurrogate(c);
}

std::string Escape(const Utf8Unit& unit) {
    if (unit.value == '\n') return "\\n";
    if (unit.value == '\r') return "\\r";
    if (unit.value == '\t') return "\\t";
    char text[16];
    const bool byte = !unit.well_formed || unit.value < 0x80;
    std::snprintf(text, sizeof text, byte ? "\\x%02X" : "\\u%04X",
                  static_cast<unsigned>(unit.value));
    return text;
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
    if (IsAscii(text)) return text.size();
    Columns columns;
    std::size_t width = 0;
    ForEachUnit(text, [&](const Utf8Unit& unit) { width = columns.Add(unit); });
    return width;
}

std::string Printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    std::size_t at = 0;
    ForEachUnit(text, [&](const Utf8Unit& unit) {
        if (!unit.well_formed || IsControl(unit.value)) {
            result += Escape(unit);
        } else {
            result.append(text, at, unit.length);
        }
        at += unit.length;
    });
    return result;
}

std::string Shortened(std::string_view text, std::size_t width) {
    if (DisplayWidth(text) <= width) return std::string(text);
    if (width == 0) return {};
    return std::string(text.substr(0, BytesWithin(text, width - 1))) + "…";
}

std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    while (DisplayWidth(text) > width) {
        std::size_t end = std::max(BytesWithin(text, width), std::size_t{FirstUnit(text).length});
        const std::size_t blank = text.substr(0, end + 1).find_last_of(' ');
        if (blank != text.npos && blank > 0) end = blank;
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(text.size(), end + (blank == end ? 1 : 0)));
    }
    if (!text.empty() || lines.empty()) lines.emplace_back(text);
    return lines;
}

bool IsUtf8(std::string_view text, std::size_t& bad) {
    if (IsAscii(text)) return true;
    for (bad = 0; bad < text.size();) {
        const Utf8Unit unit = FirstUnit(text.substr(bad));
        if (!unit.well_formed || IsSurrogate(unit.value)) return false;
        bad += unit.length;
    }
    return true;
}

}  // namespace tavolin::cli
