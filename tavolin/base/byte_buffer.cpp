#include "tavolin/base/byte_buffer.h"

#include <bit>
#include <cstring>
#include <new>

#include "tavolin/base/large_pages.h"

namespace tavolin {
namespace {

// What is larger than this is kept when it goes.
constexpr std::size_t kLeastKept = std::size_t{4} << 20;

// Sizes that differ by little become one, so that the memory of one buffer serves the next.
std::size_t Rounded(std::size_t capacity) {
    if (capacity < kLeastKept) return capacity;
    const std::size_t step = std::bit_floor(capacity) / 8;
    if (capacity > SIZE_MAX - ByteBuffer::kPadding - step) return capacity;
    return (capacity + step - 1) & ~(step - 1);
}

}  // namespace

ByteBuffer::~ByteBuffer() {
    if (data_ == nullptr) return;
    if (capacity_ >= kLeastKept) {
        KeepLarge(data_, capacity_ + kPadding);
    } else {
        FreeLarge(data_, capacity_ + kPadding);
    }
}

void ByteBuffer::Reserve(std::size_t capacity) {
    if (capacity <= capacity_) return;
    if (capacity > SIZE_MAX - kPadding) throw std::bad_alloc();
    capacity = Rounded(capacity);
    ByteBuffer wider;
    const auto allocate = capacity >= kLeastKept ? AllocateAgain : AllocateLarge;
    wider.data_ = static_cast<std::uint8_t*>(allocate(capacity + kPadding));
    wider.capacity_ = capacity;
    wider.size_ = size_;
    if (size_ != 0) std::memcpy(wider.data_, data_, size_);
    swap(wider);
}

}  // namespace tavolin
