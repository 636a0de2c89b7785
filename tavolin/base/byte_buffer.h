// A growing array of bytes for large amounts: new bytes are not filled with anything, and large
// ones lie in large pages where the machine has them. The memory of the last one of 4 MiB or more
// is kept for the next one of its size; see large_pages.h.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "tavolin/base/export.h"

namespace tavolin {

class TAVOLIN_API ByteBuffer {
  public:
    // That many bytes behind the last one may be read, whatever they hold.
    static constexpr std::size_t kPadding = 64;

    ByteBuffer() = default;
    explicit ByteBuffer(std::size_t size) { Resize(size); }
    ~ByteBuffer();
    ByteBuffer(ByteBuffer&& other) noexcept { swap(other); }
    ByteBuffer& operator=(ByteBuffer&& other) noexcept {
        ByteBuffer(std::move(other)).swap(*this);
        return *this;
    }

    std::uint8_t* data() { return data_; }
    const std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }
    std::size_t capacity() const { return capacity_; }
    bool empty() const { return size_ == 0; }
    std::uint8_t* begin() { return data_; }
    std::uint8_t* end() { return data_ + size_; }
    const std::uint8_t* begin() const { return data_; }
    const std::uint8_t* end() const { return data_ + size_; }
    std::span<std::uint8_t> bytes() { return {data_, size_}; }
    std::span<const std::uint8_t> bytes() const { return {data_, size_}; }
    // A copy, for those who are given arrays of the language's own kind.
    operator std::vector<std::uint8_t>() const { return {begin(), end()}; }

    // What is new after growing is undefined. When memory runs out nothing has changed.
    void Resize(std::size_t size) {
        if (size > capacity_) Reserve(std::max(size, capacity_ + capacity_ / 2));
        size_ = size;
    }
    // Makes room for `capacity` bytes in all. Room that is not used costs addresses alone.
    void Reserve(std::size_t capacity);

    void swap(ByteBuffer& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

  private:
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace tavolin
