#include "tavolin/base/code_page.h"

#include <algorithm>
#include <iterator>

#include "tavolin/base/utf8.h"

namespace tavolin {

namespace {

// The characters of the codes 80 to 9F; every other code is its own character.
constexpr std::uint8_t kFirstMapped = 0x80;
constexpr char16_t kMapped[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
constexpr std::uint8_t kBehindMapped = kFirstMapped + std::size(kMapped);

}  // namespace

std::optional<std::uint8_t> AnsiCode(char32_t character) {
    if (character < kFirstMapped || (character >= kBehindMapped && character <= 0xFF)) {
        return static_cast<std::uint8_t>(character);
    }
    const auto* found = std::find(std::begin(kMapped), std::end(kMapped), character);
    if (found == std::end(kMapped)) return std::nullopt;
    return static_cast<std::uint8_t>(kFirstMapped + (found - std::begin(kMapped)));
}

char32_t AnsiCharacter(std::uint8_t code) {
    return code < kFirstMapped || code >= kBehindMapped ? code : kMapped[code - kFirstMapped];
}

std::optional<std::string> EncodeAnsi(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    while (!utf8.empty()) {
        const Utf8Unit unit = FirstUnit(utf8);
        const auto code = unit.well_formed ? AnsiCode(unit.value) : std::nullopt;
        if (!code) return std::nullopt;
        bytes += static_cast<char>(*code);
        utf8.remove_prefix(unit.length);
    }
    return bytes;
}

std::string DecodeAnsi(std::string_view bytes) {
    std::string utf8;
    utf8.reserve(bytes.size());
    for (const char byte : bytes) AppendUtf8(AnsiCharacter(static_cast<std::uint8_t>(byte)), utf8);
    return utf8;
}

std::string EncodeTextFile(std::string_view utf8) {
    if (auto bytes = EncodeAnsi(utf8)) return *std::move(bytes);
    std::string marked = "\xEF\xBB\xBF";
    marked += utf8;
    return marked;
}

}  // namespace tavolin
