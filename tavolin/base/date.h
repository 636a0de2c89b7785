// A moment of local time, to the second.
#pragma once

#include <compare>
#include <cstdint>

namespace tavolin {

// Seconds since the midnight that began 30 December 1899, the platform's day zero.
struct Date {
    std::int64_t seconds = 0;
    friend auto operator<=>(const Date&, const Date&) = default;
};

}  // namespace tavolin
