#include "tavolin/base/byte_buffer.h"

#include <bit>
#include <cstring>
#include <mutex>
#include <new>

#include "tavolin/base/large_pages.h"
#include "tavolin/base/reuse.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tavolin {
namespace {

// The room of a large buffer that is gone, for the next one of its size: to have the system clear
// pages takes longer than to fill them. The system may have these back whenever it is short.
#if defined(MADV_FREE)
constexpr std::size_t kLeastSpare = std::size_t{4} << 20;

struct Spare {
    std::mutex mutex;
    std::uint8_t* data = nullptr;
    std::size_t capacity = 0;

    constexpr Spare() = default;
    ~Spare() { Swap(nullptr, 0); }

    // Frees what was kept.
    void Swap(std::uint8_t* next, std::size_t next_capacity) {
        {
            const std::lock_guard lock(mutex);
            std::swap(data, next);
            std::swap(capacity, next_capacity);
        }
        if (next != nullptr) FreeLarge(next, next_capacity + ByteBuffer::kPadding);
    }
};
constinit Spare spare;

std::uint8_t* TakeSpare(std::size_t& capacity) {
    if (capacity < kLeastSpare) return nullptr;
    // Sizes that differ by little become one.
    const std::size_t step = std::bit_floor(capacity) / 8;
    if (capacity > SIZE_MAX - ByteBuffer::kPadding - step) return nullptr;
    capacity = (capacity + step - 1) / step * step;
    const std::lock_guard lock(spare.mutex);
    if (spare.capacity != capacity) return nullptr;
    spare.capacity = 0;
    return std::exchange(spare.data, nullptr);
}

bool KeepSpare(std::uint8_t* data, std::size_t capacity) {
    if (!kReusesMemory || capacity < kLeastSpare) return false;
    madvise(data, capacity, MADV_FREE);
    spare.Swap(data, capacity);
    return true;
}

void FreeSpare() { spare.Swap(nullptr, 0); }
#else
std::uint8_t* TakeSpare(std::size_t&) { return nullptr; }
bool KeepSpare(std::uint8_t*, std::size_t) { return false; }
void FreeSpare() {}
#endif

}  // namespace

ByteBuffer::~ByteBuffer() {
    if (data_ == nullptr || KeepSpare(data_, capacity_)) return;
    FreeLarge(data_, capacity_ + kPadding);
}

void ByteBuffer::Reserve(std::size_t capacity) {
    if (capacity <= capacity_) return;
    if (capacity > SIZE_MAX - kPadding) throw std::bad_alloc();
    ByteBuffer wider;
    wider.data_ = TakeSpare(capacity);
    if (wider.data_ == nullptr) {
        wider.data_ = static_cast<std::uint8_t*>(AllocateLarge(capacity + kPadding));
    }
    wider.capacity_ = capacity;
    wider.size_ = size_;
    if (size_ != 0) std::memcpy(wider.data_, data_, size_);
    swap(wider);
}

void ByteBuffer::FreeSpare() { tavolin::FreeSpare(); }

}  // namespace tavolin
