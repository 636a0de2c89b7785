// What tells one saved state from another.
#pragma once

#include <cstdint>

namespace tavolin {

// A state's length and the checksum in its header: two states that differ have different ones, but
// for a chance of 1 in 2^64. The moment and the name of a file do not count, nor what is behind its
// array.
struct StateMark {
    std::uint64_t length = 0;
    std::uint64_t checksum = 0;
    bool operator==(const StateMark&) const = default;
};

}  // namespace tavolin
