// Texts as they stand on a screen: how wide they are, and what must not reach the terminal as it
// is.
//
//     DisplayWidth("日本")         // 4
//     Printable("two\nlines")      // "two\\nlines"
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

// The columns that a text takes: 2 for the wide characters of East Asia and for emoji, 0 for those
// that combine with the one before, else 1. Ill-formed bytes count 1 each.
std::size_t DisplayWidth(std::string_view text);

// The text with control characters, direction marks and ill-formed bytes written out: \n, \x1B,
// \u202E. Everything else stays.
std::string Printable(std::string_view text);

// The text, shortened to `width` columns with "…" at its end if it is wider.
std::string Shortened(std::string_view text, std::size_t width);

// The text in lines of up to `width` columns, cut at blanks where there are some; never none.
std::vector<std::string> Wrapped(std::string_view text, std::size_t width);

// True for well-formed UTF-8, in which surrogates have no place. Otherwise `bad` is the offset of
// the first byte that is wrong.
bool IsUtf8(std::string_view text, std::size_t& bad);

}  // namespace tavolin::cli
