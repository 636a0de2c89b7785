// UTF-16, as hosts keep their texts, to and from UTF-8.
//
// ToUtf16(FromUtf16(t)) is t for every sequence of code units, lone surrogates included, and
// FromUtf16(ToUtf16(t)) is t for every well-formed UTF-8 text. Raises nothing but std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin {

// Each byte that belongs to no well-formed character becomes one U+FFFD. Three bytes that encode a
// surrogate become that surrogate, so that a high and a low one side by side come out as a pair.
TAVOLIN_API std::u16string ToUtf16(std::string_view utf8);

// A pair of surrogates becomes one character of four bytes, a lone surrogate its three bytes.
TAVOLIN_API std::string FromUtf16(std::u16string_view units);

}  // namespace tavolin
