// Code page 1252, with a character for all 256 codes: the five unassigned bytes 81, 8D, 8F, 90 and
// 9D stand for the control characters of the same value. Raises nothing but std::bad_alloc.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin {

// The code of a character; nothing when the page does not have it.
TAVOLIN_API std::optional<std::uint8_t> AnsiCode(char32_t character);

// The character of a code: AnsiCode(AnsiCharacter(c)) is c for every c.
TAVOLIN_API char32_t AnsiCharacter(std::uint8_t code);

// One byte for each character; nothing when a character is not in the page or a byte is not UTF-8.
TAVOLIN_API std::optional<std::string> EncodeAnsi(std::string_view utf8);

// Whether EncodeAnsi gives the bytes, without making them.
TAVOLIN_API bool FitsAnsi(std::string_view utf8);

// One byte for each character, and a numeric character reference, as "&#8364;", for each one that
// is not in the page. A lone surrogate, a control character and a byte that is not UTF-8
// become "&#65533;".
TAVOLIN_API std::string EncodeAnsiWithReferences(std::string_view utf8);

// The UTF-8 text of bytes of the page. Every byte has a character, so this never fails.
TAVOLIN_API std::string DecodeAnsi(std::string_view bytes);

// A text as it goes into a text file: in the code page when all of it fits, else a UTF-8 byte-order
// mark (EF BB BF) and the text's own bytes.
TAVOLIN_API std::string EncodeTextFile(std::string_view utf8);

}  // namespace tavolin
