// A hint to the machine, which changes no outcome.
#pragma once

#include <cstddef>

namespace tavolin {

inline constexpr std::size_t kLineBytes = 64;

// Has the lines of memory from `address` on fetched while other work goes on.
inline void PrefetchLines([[maybe_unused]] const void* address,
                          [[maybe_unused]] std::size_t lines) {
#if defined(__GNUC__)
    const char* const at = static_cast<const char*>(address);
    for (std::size_t i = 0; i < lines; ++i) __builtin_prefetch(at + i * kLineBytes);
    // gcc takes a function that does nothing else for one without an effect and drops its calls.
    asm volatile("");
#endif
}
inline void PrefetchLine(const void* address) { PrefetchLines(address, 1); }

}  // namespace tavolin
