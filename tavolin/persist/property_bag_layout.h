// What the writer and the reader of property bags agree on; docs/file-format.md tells it in full.
// Part of the file format: do not change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tavolin::bag_layout {

inline constexpr std::uint8_t kMagic[8] = {'T', 'V', 'L', 'N', 'B', 'A', 'G', 0x1A};

// Offsets in the header. The checksum covers everything from kLengthAt on.
inline constexpr std::size_t kVersionAt = 8;
inline constexpr std::size_t kZeroAt = 12;
inline constexpr std::size_t kChecksumAt = 16;
inline constexpr std::size_t kLengthAt = 24;
inline constexpr std::size_t kKeyTableAt = 32;
inline constexpr std::size_t kItemsAt = 40;

// The bytes of the length in front of objects, series, numbered objects and blocks.
inline constexpr std::size_t kLengthBytes = 8;

inline constexpr std::size_t kBlockAlignment = 8;
constexpr std::size_t AlignBlocks(std::size_t offset) {
    return (offset + kBlockAlignment - 1) / kBlockAlignment * kBlockAlignment;
}

// Equality of keys, which are mostly of one to eight characters: without a call for those.
inline bool SameKey(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
    if (size > 8) return std::memcmp(a.data(), b.data(), size) == 0;
    if (size < 4) {
        return size == 0 ||
               (a[0] == b[0] && a[size / 2] == b[size / 2] && a[size - 1] == b[size - 1]);
    }
    const auto same_four = [&](std::size_t at) {
        std::uint32_t x, y;
        std::memcpy(&x, a.data() + at, 4);
        std::memcpy(&y, b.data() + at, 4);
        return x == y;
    };
    return same_four(0) && same_four(size - 4);
}

}  // namespace tavolin::bag_layout
