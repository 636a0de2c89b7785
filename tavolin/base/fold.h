// The parts of folding that this folder's sources share; callers elsewhere use text.h.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "tavolin/base/fold_table.h"
#include "tavolin/base/utf8.h"

namespace tavolin {

constexpr char32_t FoldCharacter(char32_t c) {
    if (c > kLastBmpCharacter) return c;
    const std::size_t block = kFoldBlock[c >> 6];
    return (c + kFoldDelta[block << 6 | (c & 0x3F)]) & kLastBmpCharacter;
}

// What two units must share to be equal without regard to case. The mark keeps an ill-formed byte
// apart from the character of the same value.
constexpr char32_t FoldedValue(const Utf8Unit& unit) {
    constexpr char32_t kIllFormedMark = 0x80000000;
    return unit.well_formed ? FoldCharacter(unit.value) : unit.value | kIllFormedMark;
}

// The room FoldTo needs for a text of `size` bytes: two bytes may become three, and the last word
// is written whole.
constexpr std::size_t FoldRoom(std::size_t size) { return size + size / 2 + 8; }

// Writes the folded text to `out` and returns the end of it.
char* FoldTo(std::string_view text, char* out);

// Calls use(folded) with the folded text, kept on the stack when it is short; returns its result.
template <typename Use>
auto WithFolded(std::string_view text, Use use) {
    constexpr std::size_t kShort = 512;
    auto fold = [&](char* room) {
        return std::string_view(room, static_cast<std::size_t>(FoldTo(text, room) - room));
    };
    if (FoldRoom(text.size()) <= kShort) {
        char room[kShort];
        return use(fold(room));
    }
    const std::unique_ptr<char[]> room(new char[FoldRoom(text.size())]);
    return use(fold(room.get()));
}

}  // namespace tavolin
