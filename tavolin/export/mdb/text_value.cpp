#include "tavolin/export/mdb/text_value.h"

#include <algorithm>

#include "tavolin/base/text.h"
#include "tavolin/base/utf16.h"
#include "tavolin/base/utf8.h"

namespace tavolin::mdb {
namespace {

// Begins a compressed text. It is U+FEFF, which an uncompressed one must therefore not begin with.
constexpr std::uint16_t kCompressed = 0xFEFF;
constexpr char16_t kReplacement = 0xFFFD;
// In a compressed text: from one byte a character to two, and back.
constexpr std::uint8_t kSwitch = 0;
constexpr std::size_t kMinCompressed = 3;

bool IsOneByte(char16_t unit) { return unit >= 0x01 && unit <= 0xFF; }

void AppendCompressed(std::u16string_view units, Bytes& bytes) {
    Append(bytes, kCompressed);
    for (const char16_t unit : units) bytes.push_back(static_cast<std::uint8_t>(unit));
}

// Some readers take a zero byte among those of wide characters for the switch, others do not: none
// is written.
bool AppendSwitching(std::u16string_view units, Bytes& bytes) {
    const auto has_zero = [](char16_t unit) { return (unit & 0xFF) == 0; };
    if (std::any_of(units.begin(), units.end(), has_zero)) return false;
    Append(bytes, kCompressed);
    bool wide = false;
    for (const char16_t unit : units) {
        if (IsOneByte(unit) == wide) {
            bytes.push_back(kSwitch);
            wide = !wide;
        }
        if (wide) {
            Append(bytes, static_cast<std::uint16_t>(unit));
        } else {
            bytes.push_back(static_cast<std::uint8_t>(unit));
        }
    }
    return true;
}

bool AppendUnits(std::u16string_view units, Bytes& bytes) {
    if (units.size() >= kMinCompressed && std::all_of(units.begin(), units.end(), IsOneByte)) {
        AppendCompressed(units, bytes);
        return true;
    }
    if (!units.empty() && units.front() == kCompressed) return AppendSwitching(units, bytes);
    Append(bytes, units);
    return true;
}

}  // namespace

std::u16string StorableUnits(std::string_view text) {
    std::u16string units = ToUtf16(text);
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!IsSurrogate(units[i])) continue;
        const bool pair =
            IsHighSurrogate(units[i]) && i + 1 < units.size() && IsLowSurrogate(units[i + 1]);
        if (pair) {
            ++i;
        } else {
            units[i] = kReplacement;
        }
    }
    return units;
}

TextSize AppendText(std::string_view text, Bytes& bytes) {
    if (text.size() >= kMinCompressed && IsAscii(text) && text.find('\0') == text.npos) {
        Append(bytes, kCompressed);
        bytes.insert(bytes.end(), text.begin(), text.end());
        return {text.size(), true};
    }
    const std::u16string units = StorableUnits(text);
    return {units.size(), AppendUnits(units, bytes)};
}

}  // namespace tavolin::mdb
