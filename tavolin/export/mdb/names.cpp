#include "tavolin/export/mdb/names.h"

#include <algorithm>
#include <cstdint>

#include "tavolin/base/text.h"
#include "tavolin/base/utf16.h"
#include "tavolin/export/mdb/sort_key.h"
#include "tavolin/export/mdb/text_value.h"

namespace tavolin::mdb {
namespace {

constexpr std::size_t kMaxUnits = 64;

bool IsControl(char16_t unit) { return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F); }

bool IsForbidden(char16_t unit) {
    return IsControl(unit) || std::u16string_view(u".!`[]").find(unit) != std::u16string::npos;
}

std::string CodePoint(char16_t unit) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "U+";
    for (int shift = 12; shift >= 0; shift -= 4) text += kDigits[unit >> shift & 0xF];
    return text;
}

}  // namespace

std::string NameFault(std::string_view name) {
    const std::u16string units = ToUtf16(name);
    if (units.empty()) return "It Is Empty";
    if (units.size() > kMaxUnits) {
        return "It Has " + std::to_string(units.size()) + " Characters, 64 Are Allowed";
    }
    if (units.front() == u' ' || units.back() == u' ') return "It Begins Or Ends With A Blank";
    const auto bad = std::find_if(units.begin(), units.end(), IsForbidden);
    if (bad != units.end()) return "The Character " + CodePoint(*bad) + " Is Not Allowed";
    if (StorableUnits(name) != units) return "It Is No Proper Text";
    return {};
}

std::string TableNameFault(std::string_view name) {
    std::string fault = NameFault(name);
    if (!fault.empty()) return fault;
    if (name.front() == '~' || EqualFold(name.substr(0, 4), "MSys")) {
        return "Names Like This Are Kept For Tables Of The System";
    }
    for (const char16_t unit : ToUtf16(name)) {
        if (!SortKey({&unit, 1})) return "The Character " + CodePoint(unit) + " Is Not Allowed";
    }
    return {};
}

bool IsOneName(std::string_view a, std::string_view b) {
    if (EqualFold(a, b)) return true;
    const auto key = SortKey(ToUtf16(a));
    return key && key == SortKey(ToUtf16(b));
}

}  // namespace tavolin::mdb
