// A hint to the machine, which changes no outcome.
#pragma once

#include <cstddef>

namespace tavolin {

inline constexpr std::size_t kLineBytes = 64;

// Has the line of memory at `address` fetched while other work goes on.
inline void PrefetchLine([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
    // gcc takes a function that does nothing else for one without an effect and drops its calls.
    asm volatile("");
#endif
}

}  // namespace tavolin
