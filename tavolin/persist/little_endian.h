// Numbers as they stand in files: least significant byte first, at any address.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tavolin {

template <std::unsigned_integral Number>
Number LoadLittle(const std::uint8_t* from) {
    if constexpr (std::endian::native == std::endian::little) {
        Number number;
        std::memcpy(&number, from, sizeof number);
        return number;
    } else {
        Number number = 0;
        for (std::size_t i = sizeof number; i-- > 0;) {
            number = static_cast<Number>((number << 8) | from[i]);
        }
        return number;
    }
}

template <std::unsigned_integral Number>
void StoreLittle(std::uint8_t* to, Number number) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(to, &number, sizeof number);
    } else {
        for (std::size_t i = 0; i < sizeof number; ++i) {
            to[i] = static_cast<std::uint8_t>(number >> (8 * i));
        }
    }
}

}  // namespace tavolin
