#include "tavolin/base/text.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <utility>

#include "tavolin/base/fold.h"
#include "tavolin/base/words.h"

namespace tavolin {

namespace {

// How many bytes at the start of `text` are `what` without regard to case.
std::optional<std::size_t> MatchStart(std::string_view text, std::string_view what) {
    std::size_t length = 0;
    while (!what.empty()) {
        if (length == text.size()) return std::nullopt;
        const Utf8Unit have = FirstUnit(text.substr(length));
        const Utf8Unit want = FirstUnit(what);
        if (FoldedValue(have) != FoldedValue(want)) return std::nullopt;
        length += have.length;
        what.remove_prefix(want.length);
    }
    return length;
}

// The last place up to `position` where a unit begins in both texts. They must agree before
// `position` but for the case of ASCII letters, so that they are cut alike up to that place.
std::size_t CommonUnitStart(std::string_view a, std::string_view b, std::size_t position) {
    while (position > 0 && !(BeginsUnit(a, position) && BeginsUnit(b, position))) --position;
    return position;
}

bool EqualFoldFrom(std::string_view a, std::string_view b, std::size_t position) {
    const std::size_t start = CommonUnitStart(a, b, position);
    return MatchStart(a.substr(start), b.substr(start)) == a.size() - start;
}

std::size_t FirstDifference(std::string_view a, std::string_view b) {
    const std::size_t size = std::min(a.size(), b.size());
    std::size_t i = 0;
    while (i + kWordBytes <= size && LoadWord(a.data() + i) == LoadWord(b.data() + i)) {
        i += kWordBytes;
    }
    while (i < size && a[i] == b[i]) ++i;
    return i;
}

// The UTF-16 code units of a text, one at a time.
class CodeUnits {
  public:
    explicit CodeUnits(std::string_view text) : rest_(text) {}

    // The next unit, or -1 behind the last.
    int Next() {
        if (pending_ != 0) return std::exchange(pending_, 0);
        if (rest_.empty()) return -1;
        const Utf8Unit unit = FirstUnit(rest_);
        rest_.remove_prefix(unit.length);
        if (!unit.well_formed) return static_cast<int>(kReplacementCharacter);
        if (unit.value <= kLastBmpCharacter) return static_cast<int>(unit.value);
        pending_ = LowSurrogate(unit.value);
        return HighSurrogate(unit.value);
    }

  private:
    std::string_view rest_;
    int pending_ = 0;
};

}  // namespace

bool EqualFold(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return !(IsAscii(a) && IsAscii(b)) && EqualFoldFrom(a, b, 0);
    const std::size_t size = a.size();
    for (std::size_t i = 0; i < size;) {
        const bool whole = size >= kWordBytes;
        if (whole) i = std::min(i, size - kWordBytes);
        const auto load = [&](std::string_view text) {
            return whole ? LoadWord(text.data() + i) : LoadPartialWord(text.data(), size);
        };
        const std::uint64_t x = load(a);
        const std::uint64_t y = load(b);
        const std::uint64_t difference = x == y ? 0 : LowerAscii(x) ^ LowerAscii(y);
        if (difference != 0) {
            // Two ASCII characters at the first difference settle it.
            const int first_byte = std::countr_zero(difference) / 8 * 8;
            return ((x | y) >> first_byte & 0x80) != 0 && EqualFoldFrom(a, b, i);
        }
        i += kWordBytes;
    }
    return true;
}

bool IsAscii(std::string_view text) {
    const char* data = text.data();
    const std::size_t size = text.size();
    if (size < kWordBytes) return (LoadPartialWord(data, size) & kHighBits) == 0;
    std::uint64_t seen = LoadWord(data + size - kWordBytes);
    for (std::size_t i = 0; i + kWordBytes < size; i += kWordBytes) seen |= LoadWord(data + i);
    return (seen & kHighBits) == 0;
}

std::string ReplaceFold(std::string_view text, std::string_view what, std::string_view with) {
    std::string result;
    while (!text.empty()) {
        const auto match = what.empty() ? std::nullopt : MatchStart(text, what);
        const std::size_t taken = match ? *match : FirstUnit(text).length;
        result += match ? with : text.substr(0, taken);
        text.remove_prefix(taken);
    }
    return result;
}

void AppendSortBytes(std::string_view text, std::string& out) {
    // Each UTF-16 code unit in the form that UTF-8 gives a character of its value, which keeps the
    // order of the units.
    ForEachUnit(text, [&](const Utf8Unit& unit) {
        if (!unit.well_formed) {
            AppendUtf8(kReplacementCharacter, out);
        } else if (unit.value > kLastBmpCharacter) {
            AppendUtf8(HighSurrogate(unit.value), out);
            AppendUtf8(LowSurrogate(unit.value), out);
        } else {
            AppendUtf8(FoldCharacter(unit.value), out);
        }
    });
}

int CompareCodeUnits(std::string_view a, std::string_view b) {
    const std::size_t difference = FirstDifference(a, b);
    const std::size_t start = CommonUnitStart(a, b, difference);
    CodeUnits left(a.substr(start));
    CodeUnits right(b.substr(start));
    for (;;) {
        const int x = left.Next();
        const int y = right.Next();
        if (x != y) return x < y ? -1 : 1;
        if (x < 0) return 0;
    }
}

}  // namespace tavolin
