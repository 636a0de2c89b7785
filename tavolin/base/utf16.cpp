#include "tavolin/base/utf16.h"

#include "tavolin/base/utf8.h"

namespace tavolin {

std::u16string ToUtf16(std::string_view utf8) {
    std::u16string units;
    units.reserve(utf8.size());
    ForEachUnit(utf8, [&](const Utf8Unit& unit) {
        if (!unit.well_formed) {
            units += static_cast<char16_t>(kReplacementCharacter);
        } else if (unit.value <= kLastBmpCharacter) {
            units += static_cast<char16_t>(unit.value);
        } else {
            units += HighSurrogate(unit.value);
            units += LowSurrogate(unit.value);
        }
    });
    return units;
}

std::string FromUtf16(std::u16string_view units) {
    std::string utf8;
    utf8.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const bool pair =
            i + 1 < units.size() && IsHighSurrogate(units[i]) && IsLowSurrogate(units[i + 1]);
        AppendUtf8(pair ? JoinSurrogates(units[i], units[i + 1]) : units[i], utf8);
        if (pair) ++i;
    }
    return utf8;
}

}  // namespace tavolin
