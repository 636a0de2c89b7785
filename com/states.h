// Byte arrays that hosts give.
#pragma once

#include <cstdint>
#include <vector>

#include "com/platform.h"

namespace tavolin::com {

// The bytes of an array of one dimension; no array has none. Raises 13 for anything else.
std::vector<std::uint8_t> BytesOf(SAFEARRAY* array);

}  // namespace tavolin::com
