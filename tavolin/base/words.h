// Eight bytes of text as one little-endian word, for this folder's own use.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tavolin {

inline constexpr std::size_t kWordBytes = 8;
inline constexpr std::uint64_t kHighBits = 0x8080808080808080;
inline constexpr std::uint64_t kEveryByte = 0x0101010101010101;

constexpr std::uint64_t SwapBytes(std::uint64_t word) {
#if defined(__GNUC__)
    return __builtin_bswap64(word);  // compilers do not turn the loop into this on every machine
#else
    std::uint64_t swapped = 0;
    for (std::size_t i = 0; i < kWordBytes; ++i) swapped |= (word >> 8 * i & 0xFF) << (56 - 8 * i);
    return swapped;
#endif
}

inline std::uint64_t LoadWord(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, kWordBytes);
    if constexpr (std::endian::native == std::endian::big) word = SwapBytes(word);
    return word;
}

inline void StoreWord(std::uint64_t word, char* bytes) {
    if constexpr (std::endian::native == std::endian::big) word = SwapBytes(word);
    std::memcpy(bytes, &word, kWordBytes);
}

// `count` bytes, fewer than eight, with zero bytes behind them.
inline std::uint64_t LoadPartialWord(const char* bytes, std::size_t count) {
    auto half = [](const char* at) {
        std::uint32_t value;
        std::memcpy(&value, at, sizeof value);
        if constexpr (std::endian::native == std::endian::big) {
            value = static_cast<std::uint32_t>(SwapBytes(value) >> 32);
        }
        return std::uint64_t{value};
    };
    auto byte = [&](std::size_t i) { return std::uint64_t{static_cast<std::uint8_t>(bytes[i])}; };
    if (count >= 4) return half(bytes) | half(bytes + count - 4) << 8 * (count - 4);
    if (count == 0) return 0;
    return byte(0) | byte(count / 2) << 8 * (count / 2) | byte(count - 1) << 8 * (count - 1);
}

// A to Z become a to z; bytes from 0x80 on stay.
constexpr std::uint64_t LowerAscii(std::uint64_t word) {
    const std::uint64_t low = word & ~kHighBits;
    const std::uint64_t from_a = low + kEveryByte * (0x80 - 'A');
    const std::uint64_t beyond_z = low + kEveryByte * (0x7F - 'Z');
    return word | ((from_a & ~beyond_z & ~word & kHighBits) >> 2);
}

// The high bit of each byte that is zero.
constexpr std::uint64_t ZeroBytes(std::uint64_t word) {
    return ~(((word & ~kHighBits) + ~kHighBits) | word) & kHighBits;
}

}  // namespace tavolin
