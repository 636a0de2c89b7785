// What the readers of a damaged state share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tavolin/persist/property_bag.h"

namespace tavolin {

// Steps over a varint; nothing when it does not end in time.
inline std::optional<std::uint64_t> SkipVarint(std::span<const std::uint8_t> bytes, std::size_t& at,
                                               std::size_t end) {
    std::uint64_t number = 0;
    for (int shift = 0; shift < 64 && at < end; shift += 7) {
        const std::uint8_t byte = bytes[at++];
        number |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if (byte < 0x80) return number;
    }
    return {};
}

// Whether a length stands in front of the value.
inline bool IsSized(PropertyType type) {
    return type == PropertyType::kObject || type == PropertyType::kSeries ||
           type == PropertyType::kBlocks;
}

inline std::string BytesText(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

}  // namespace tavolin
