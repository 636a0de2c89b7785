#include "tavolin/base/byte_buffer.h"

#include <cstring>
#include <new>

#include "tavolin/base/large_pages.h"

namespace tavolin {

ByteBuffer::~ByteBuffer() {
    if (data_ != nullptr) FreeLarge(data_, capacity_ + kPadding);
}

void ByteBuffer::Reserve(std::size_t capacity) {
    if (capacity <= capacity_) return;
    if (capacity > SIZE_MAX - kPadding) throw std::bad_alloc();
    ByteBuffer wider;
    wider.data_ = static_cast<std::uint8_t*>(AllocateLarge(capacity + kPadding));
    wider.capacity_ = capacity;
    wider.size_ = size_;
    if (size_ != 0) std::memcpy(wider.data_, data_, size_);
    swap(wider);
}

}  // namespace tavolin
