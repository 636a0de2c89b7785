// The memory that this program takes, in bytes; 0 where the system does not tell.
#pragma once

#include <cstddef>

namespace tavolin::cli {

std::size_t MemoryUsed();

}  // namespace tavolin::cli
