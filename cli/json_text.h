// Texts in JSON.
#pragma once

#include <string>
#include <string_view>

namespace tavolin::cli {

// The text in quotes, in UTF-8, with control characters, quotes and backslashes escaped. A lone
// surrogate is written as \uD800 and the like; an ill-formed byte as the replacement character,
// because JSON has no place for it.
std::string JsonText(std::string_view text);

}  // namespace tavolin::cli
