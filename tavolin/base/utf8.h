// UTF-8 one character at a time, for those who must look at characters. A lone surrogate as three
// bytes is a character; any other byte that belongs to no well-formed character is a unit of its
// own.
//
// Cutting a text into units never depends on what stands before a byte that is not a continuation
// byte (80 to BF): such a byte always begins a unit. Several functions lean on that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavolin {

struct Utf8Unit {
    char32_t value;  // the byte itself when it is ill-formed
    std::uint8_t length;
    bool well_formed;
};

inline constexpr char32_t kLastBmpCharacter = 0xFFFF;
inline constexpr char32_t kReplacementCharacter = 0xFFFD;  // what stands for an ill-formed byte

constexpr bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

constexpr char16_t HighSurrogate(char32_t c) { return static_cast<char16_t>(0xD7C0 + (c >> 10)); }
constexpr char16_t LowSurrogate(char32_t c) { return static_cast<char16_t>(0xDC00 + (c & 0x3FF)); }
constexpr char32_t JoinSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

constexpr bool IsContinuation(char byte) {
    return (static_cast<std::uint8_t>(byte) & 0xC0) == 0x80;
}

// Whether a unit begins at `position`, whatever stands there; true at the end of the text.
constexpr bool BeginsUnit(std::string_view text, std::size_t position) {
    return position >= text.size() || !IsContinuation(text[position]);
}

// The first unit of `text`, which must not be empty.
constexpr Utf8Unit FirstUnit(std::string_view text) {
    auto byte = [&](std::size_t i) -> char32_t { return static_cast<std::uint8_t>(text[i]); };
    const char32_t lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    const Utf8Unit ill_formed{lead, 1, false};
    const std::uint8_t length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 1 || lead > 0xF4 || text.size() < length) return ill_formed;
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(text[i])) return ill_formed;
        value = value << 6 | (byte(i) & 0x3F);
    }
    if (length == 3 && value < 0x800) return ill_formed;
    if (length == 4 && (value < 0x10000 || value > 0x10FFFF)) return ill_formed;
    return {value, length, true};
}

// Calls visit(unit) for each unit of the text in turn.
template <typename Visit>
void ForEachUnit(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const Utf8Unit unit = FirstUnit(text);
        visit(unit);
        text.remove_prefix(unit.length);
    }
}

// Writes the bytes of a character (a surrogate as three) to `out` and returns the end of them.
inline char* PutUtf8(char32_t c, char* out) {
    auto put = [&](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
        return out;
    }
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        if (c <= kLastBmpCharacter) {
            put(0xE0 | c >> 12);
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
    return out;
}

inline void AppendUtf8(char32_t c, std::string& out) {
    const std::size_t size = out.size();
    out.resize(size + 4);
    out.resize(static_cast<std::size_t>(PutUtf8(c, out.data() + size) - out.data()));
}

}  // namespace tavolin
