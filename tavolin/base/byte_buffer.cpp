#include "tavolin/base/byte_buffer.h"

#include <cstring>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tavolin {
namespace {

// From here on memory is asked for in large pages: what is written once from end to end spends more
// time on getting small pages than on the writing.
constexpr std::size_t kLargePage = std::size_t{2} << 20;

constexpr std::align_val_t AlignmentFor(std::size_t size) {
    return std::align_val_t{size < kLargePage ? alignof(std::max_align_t) : kLargePage};
}

std::uint8_t* Allocate(std::size_t size) {
    void* const memory = ::operator new(size, AlignmentFor(size));
#if defined(__linux__)
    // A hint; the outcome is the same without it.
    if (size >= kLargePage) madvise(memory, size, MADV_HUGEPAGE);
#endif
    return static_cast<std::uint8_t*>(memory);
}

}  // namespace

ByteBuffer::~ByteBuffer() {
    if (data_ != nullptr) ::operator delete(data_, AlignmentFor(capacity_ + kPadding));
}

void ByteBuffer::Reserve(std::size_t capacity) {
    if (capacity <= capacity_) return;
    if (capacity > SIZE_MAX - kPadding) throw std::bad_alloc();
    ByteBuffer wider;
    wider.data_ = Allocate(capacity + kPadding);
    wider.capacity_ = capacity;
    wider.size_ = size_;
    if (size_ != 0) std::memcpy(wider.data_, data_, size_);
    swap(wider);
}

}  // namespace tavolin
