// Text values: UTF-16, or one byte a character where that is shorter.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tavolin/export/mdb/page.h"

namespace tavolin::mdb {

inline constexpr std::size_t kMaxTextUnits = 255;

// The text's UTF-16 with U+FFFD for every lone surrogate, which many readers stumble over.
std::u16string StorableUnits(std::string_view text);

struct TextSize {
    std::size_t units = 0;  // of UTF-16
    bool storable = true;   // false when the format has no form for the text
};
// Appends the stored form of a text, of any length, unless it has none.
TextSize AppendText(std::string_view text, Bytes& bytes);

}  // namespace tavolin::mdb
