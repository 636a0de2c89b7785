#include "cli/display_text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "tavolin/base/text.h"
#include "tavolin/base/utf8.h"

namespace tavolin::cli {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Characters that stand on the one before them, or are not seen at all.
constexpr Range kZeroWidth[] = {
    {0x0300, 0x036F},   {0x0483, 0x0489},   {0x0591, 0x05BD}, {0x05BF, 0x05BF}, {0x05C1, 0x05C2},
    {0x05C4, 0x05C5},   {0x05C7, 0x05C7},   {0x0610, 0x061A}, {0x064B, 0x065F}, {0x0670, 0x0670},
    {0x06D6, 0x06DC},   {0x06DF, 0x06E4},   {0x06E7, 0x06E8}, {0x06EA, 0x06ED}, {0x0711, 0x0711},
    {0x0730, 0x074A},   {0x0900, 0x0902},   {0x093A, 0x093A}, {0x093C, 0x093C}, {0x0941, 0x0948},
    {0x094D, 0x094D},   {0x0951, 0x0957},   {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
    {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},   {0x200B, 0x200F}, {0x2060, 0x2064}, {0x20D0, 0x20F0},
    {0x302A, 0x302D},   {0x3099, 0x309A},   {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF},
    {0x1F3FB, 0x1F3FF}, {0xE0100, 0xE01EF},
};

constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x25FD, 0x25FE},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x26A1, 0x26A1},
    {0x26BD, 0x26BE},   {0x26C4, 0x26C5},   {0x26D4, 0x26D4},   {0x2705, 0x2705},
    {0x270A, 0x270B},   {0x2728, 0x2728},   {0x274C, 0x274C},   {0x2753, 0x2755},
    {0x2757, 0x2757},   {0x2795, 0x2797},   {0x2B50, 0x2B50},   {0x2E80, 0x303E},
    {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0xA4CF},   {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6},   {0x16FE0, 0x18AFF}, {0x1B000, 0x1B2FF}, {0x1F004, 0x1F004},
    {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F19A}, {0x1F200, 0x1F320}, {0x1F32D, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F7E0, 0x1F7EB}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD},
};

template <std::size_t N>
bool Holds(const Range (&ranges)[N], char32_t c) {
    const Range* range = std::upper_bound(
        std::begin(ranges), std::end(ranges), c,
        [](char32_t value, const Range& candidate) { return value < candidate.first; });
    return range != std::begin(ranges) && c <= std::prev(range)->last;
}

std::size_t UnitWidth(const Utf8Unit& unit) {
    if (!unit.well_formed || unit.value < 0x300) return 1;
    if (Holds(kZeroWidth, unit.value)) return 0;
    return Holds(kWide, unit.value) ? 2 : 1;
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
    std::size_t width = 0;
    ForEachUnit(text, [&](const Utf8Unit& unit) { width += UnitWidth(unit); });
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
    std::size_t bytes = 0;
    std::size_t used = 0;
    while (bytes < text.size()) {
        const Utf8Unit unit = FirstUnit(text.substr(bytes));
        used += UnitWidth(unit);
        if (used > width - 1) break;
        bytes += unit.length;
    }
    return std::string(text.substr(0, bytes)) + "…";
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
