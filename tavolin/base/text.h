// Texts without regard to case: folding, comparing, hashing and replacing.
//
//     EqualFold("Straße", "STRAẞE")               // true
//     HashFold("Anna") == HashFold("ANNA")        // true
//     ReplaceFold("C:\\Db\\x", "c:\\db", "D:")    // "D:\\x"
//
// Texts are UTF-8. A lone UTF-16 surrogate may stand in them as its three bytes (ED A0 80 to
// ED BF BF) and counts as one character. Any other byte that belongs to no well-formed character
// is a unit of its own, equal only to the same byte. Every function accepts every sequence of
// bytes, raises nothing but std::bad_alloc, and never reads the process locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin {

// The lower case of `text`: one character becomes one character, for every character of the Basic
// Multilingual Plane that has a simple lower case (U+0130 becomes i, U+212A k, U+1E9E U+00DF).
// Everything else, characters above U+FFFF included, stays. The byte length may change: the result
// has at least a third and at most one and a half times the bytes. Folding twice changes nothing
// more.
TAVOLIN_API std::string Fold(std::string_view text);

// Replaces the content of `out` by Fold(text), keeping its capacity. `text` must not lie in `out`.
TAVOLIN_API void FoldInto(std::string_view text, std::string& out);

// Exactly Fold(a) == Fold(b), without making either.
TAVOLIN_API bool EqualFold(std::string_view a, std::string_view b);

// 32 well-mixed bits of Fold(text), the same on every machine: texts that are EqualFold have the
// same hash. DO NOT CHANGE the function: its values are stored in files. With f = Fold(text),
// n = its number of bytes, all arithmetic modulo 2^64 and W(i) = the bytes f[i] to f[i+7] as a
// little-endian word:
//
//     h = 0x9AE16A3B2F90404F xor n
//     words: n = 0: none.
//            n < 8: one, the n bytes with zero bytes behind them.
//            else:  W(0), W(8), W(16) ... as long as the offset is less than n - 8, then W(n - 8)
//     for each word w:  h = (h xor w) * 0x9E3779B97F4A7C15;  h = h xor (h >> 32)
//     h = h * 0xD6E8FEB86659FD93;  h = h xor (h >> 29);  h = h * 0xBF58476D1CE4E5B9
//     the hash is h >> 32
TAVOLIN_API std::uint32_t HashFold(std::string_view text);

// Whether every byte is below 0x80; true for an empty text.
TAVOLIN_API bool IsAscii(std::string_view text);

// `text` with every occurrence of `what`, without regard to case, replaced by `with`. Occurrences
// are taken from left to right, do not overlap, and consist of whole characters; what is put in is
// not searched again, and the rest keeps its bytes. An empty `what` occurs nowhere.
TAVOLIN_API std::string ReplaceFold(std::string_view text, std::string_view what,
                                    std::string_view with);

// Less than, equal to or greater than 0 as ToUtf16(a) stands before, is the same as, or stands
// behind ToUtf16(b) in the order of their code units (case counts). It differs from the order of
// the bytes only where a character above U+FFFF meets one from U+E000 on or a lone surrogate, and
// in that every ill-formed byte counts as U+FFFD.
TAVOLIN_API int CompareCodeUnits(std::string_view a, std::string_view b);

// Appends bytes that stand for Fold(text) in that order: the bytes of two texts compare as
// CompareCodeUnits(Fold(a), Fold(b)) does. Those of texts that are joined are theirs, joined.
TAVOLIN_API void AppendSortBytes(std::string_view text, std::string& out);

}  // namespace tavolin
