// Pages, of which a file of the Jet 4.0 format consists, and numbers in them. Numbers stand with
// their least significant byte first unless a name says otherwise.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tavolin/persist/file_system.h"
#include "tavolin/persist/little_endian.h"

namespace tavolin::mdb {

using PageNumber = std::uint32_t;
using Bytes = std::vector<std::uint8_t>;

inline constexpr std::size_t kPageSize = 4096;
// A file stays below 2^31 bytes.
inline constexpr PageNumber kMaxPages = 524287;
// The first pages stand at the same place in every file.
inline constexpr PageNumber kFirstFreePage = 14;

// The first two bytes of a page, as a number.
enum PageKind : std::uint16_t {
    kDataPage = 0x0101,
    kDefinitionPage = 0x0102,
    kIndexNode = 0x0103,
    kIndexLeaf = 0x0104,
    kBitmapPage = 0x0105,
};

// Zeros until something is put there.
class Page {
  public:
    ByteView bytes() const { return bytes_; }
    std::uint8_t* data() { return bytes_.data(); }

    template <std::unsigned_integral Number>
    void Put(std::size_t offset, Number value) {
        StoreLittle(&bytes_[offset], value);
    }
    void Put(std::size_t offset, PageKind kind) { Put<std::uint16_t>(offset, kind); }
    template <std::unsigned_integral Number>
    Number Get(std::size_t offset) const {
        return LoadLittle<Number>(&bytes_[offset]);
    }

  private:
    std::array<std::uint8_t, kPageSize> bytes_{};
};

template <std::unsigned_integral Number>
void Append(Bytes& bytes, Number value) {
    bytes.resize(bytes.size() + sizeof value);
    StoreLittle(bytes.data() + bytes.size() - sizeof value, value);
}

inline void Append(Bytes& bytes, ByteView more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// Most significant byte first.
template <std::unsigned_integral Number>
void AppendBig(Bytes& bytes, Number value) {
    for (std::size_t i = sizeof value; i-- > 0;) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

// UTF-16, two bytes a unit.
inline void Append(Bytes& bytes, std::u16string_view units) {
    for (const char16_t unit : units) Append(bytes, static_cast<std::uint16_t>(unit));
}

// A row's place: its page and its number there.
struct RowId {
    PageNumber page = 0;
    std::uint8_t row = 0;

    // As it stands in definitions.
    std::uint32_t Pointer() const { return page << 8 | row; }
};

}  // namespace tavolin::mdb
