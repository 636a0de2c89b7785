#include "tavolin/base/code_page.h"

#include <algorithm>
#include <iterator>

#include "tavolin/base/text.h"
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

// Calls run(text) for each run of ASCII and other(unit) for each unit between them, until one of
// them says no.
template <class Run, class Other>
bool ForEachRun(std::string_view utf8, Run run, Other other) {
    while (!utf8.empty()) {
        const auto* end = std::find_if(utf8.begin(), utf8.end(), [](char byte) {
            return static_cast<std::uint8_t>(byte) >= kFirstMapped;
        });
        const auto length = static_cast<std::size_t>(end - utf8.begin());
        run(utf8.substr(0, length));
        utf8.remove_prefix(length);
        if (utf8.empty()) break;
        const Utf8Unit unit = FirstUnit(utf8);
        if (!other(unit)) return false;
        utf8.remove_prefix(unit.length);
    }
    return true;
}

std::optional<std::uint8_t> CodeOf(const Utf8Unit& unit) {
    return unit.well_formed ? AnsiCode(unit.value) : std::nullopt;
}

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
    const bool fits = ForEachRun(
        utf8, [&](std::string_view run) { bytes.append(run); },
        [&](const Utf8Unit& unit) {
            const auto code = CodeOf(unit);
            if (code) bytes += static_cast<char>(*code);
            return code.has_value();
        });
    if (!fits) return std::nullopt;
    return bytes;
}

bool FitsAnsi(std::string_view utf8) {
    if (IsAscii(utf8)) return true;
    return ForEachRun(
        utf8, [](std::string_view) {},
        [](const Utf8Unit& unit) { return CodeOf(unit).has_value(); });
}

std::string EncodeAnsiWithReferences(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    ForEachRun(
        utf8, [&](std::string_view run) { bytes.append(run); },
        [&](const Utf8Unit& unit) {
            if (const auto code = CodeOf(unit)) {
                bytes += static_cast<char>(*code);
                return true;
            }
            // A reference to a control character would show what the page has at its code.
            const bool shown =
                unit.well_formed && !IsSurrogate(unit.value) && unit.value >= kBehindMapped;
            const auto number =
                static_cast<std::uint32_t>(shown ? unit.value : kReplacementCharacter);
            bytes.append("&#").append(std::to_string(number)).append(";");
            return true;
        });
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
