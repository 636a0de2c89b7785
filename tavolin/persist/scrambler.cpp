#include "tavolin/persist/scrambler.h"

#include <bit>
#include <cstdint>
#include <optional>

#include "tavolin/base/code_page.h"
#include "tavolin/base/utf8.h"

namespace tavolin {

namespace {

// The platform's random numbers: a linear congruence of 24 bits.
class RandomSequence {
  public:
    // Starts the sequence that belongs to a negative number.
    explicit RandomSequence(float negative) {
        const auto bits = std::bit_cast<std::uint32_t>(negative);
        state_ = ((bits & kMask) + (bits >> 24)) & kMask;
        Step();
    }

    // The next number of 0 <= r < 1 as r * 2^24.
    std::uint32_t Step() { return state_ = (state_ * 0x43FD43FDu + 0xC39EC3u) & kMask; }

  private:
    static constexpr std::uint32_t kMask = 0xFFFFFF;
    std::uint32_t state_ = 0;
};

// 65 to 90: the whole part of r * 26 + 65, in whole numbers so that nothing is ever rounded up.
std::uint8_t NextKey(RandomSequence& random) {
    return static_cast<std::uint8_t>((random.Step() * 26 >> 24) + 65);
}

// A pair's halves keep their kind, because a key has seven bits and the kind lies above them.
char32_t ScrambleCodeUnit(char32_t unit, std::uint8_t key) {
    if (const auto code = AnsiCode(unit)) {
        return AnsiCharacter(static_cast<std::uint8_t>(*code ^ key));
    }
    const char32_t changed = unit ^ key;
    return AnsiCode(changed) ? unit : changed;
}

char32_t ScrambleCharacter(char32_t c, RandomSequence& random) {
    if (c <= kLastBmpCharacter) return ScrambleCodeUnit(c, NextKey(random));
    const char32_t high = ScrambleCodeUnit(HighSurrogate(c), NextKey(random));
    return JoinSurrogates(high, ScrambleCodeUnit(LowSurrogate(c), NextKey(random)));
}

constexpr int SumOfCodes(std::string_view ascii) {
    int sum = 0;
    for (const char c : ascii) sum += c;
    return sum;
}

}  // namespace

// Works character by character of the UTF-8 text, not by way of UTF-16: two surrogates that stand
// there as three bytes each must not come out as one character of four.
std::string ScrambleText(std::string_view text) {
    RandomSequence random(static_cast<float>(-SumOfCodes("wqzmt7")));
    std::string result;
    result.reserve(text.size());
    ForEachUnit(text, [&](const Utf8Unit& unit) {
        if (unit.well_formed) {
            AppendUtf8(ScrambleCharacter(unit.value, random), result);
        } else {
            NextKey(random);
            result += static_cast<char>(unit.value);
        }
    });
    return result;
}

}  // namespace tavolin
