// The checksum of stored bytes. It is part of the file format: do not change.
#pragma once

#include <cstdint>
#include <span>

namespace tavolin {

// 64 bits over the bytes and their number; several gigabytes a second. Any one changed byte, or any
// change within one aligned word of eight, always changes the result; other damage goes unnoticed
// with a chance of about 1 in 2^64. No protection against somebody who means to deceive.
std::uint64_t Checksum(std::span<const std::uint8_t> bytes);

}  // namespace tavolin
