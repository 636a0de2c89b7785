// The records of a set as they stand in a file, one by one, damaged ones included.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/model/types.h"

namespace tavolin {

// A record's image that can be read. docs/file-format.md tells the layout.
struct RecordImage {
    std::size_t size = 0;  // in bytes, as its fields tell
    std::size_t stated_size = 0;
    std::int32_t number_key = 0;
    std::uint16_t parts = 0;
    std::string_view fields[kFieldCount];
    const char* doubt = nullptr;  // what does not fit; nothing for a sound one
    bool key_in_doubt = false;    // the hash is not that of the key

    std::string Key() const;
    // Appends the image as it should have been, with the hash of its key.
    void AppendTo(std::vector<std::uint8_t>& images) const;

    // The image at the beginning of the bytes, which may be wrong in one thing that tells nothing
    // about the rest: its size, a zero, a flag, its hash.
    static std::optional<RecordImage> Read(std::span<const std::uint8_t> bytes);
};

}  // namespace tavolin
