// Whether memory that is given back is kept for whoever asks next. Not under the address sanitizer,
// which then sees who uses what is gone.
#pragma once

namespace tavolin {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kReusesMemory = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kReusesMemory = false;
#else
inline constexpr bool kReusesMemory = true;
#endif
#else
inline constexpr bool kReusesMemory = true;
#endif

}  // namespace tavolin
