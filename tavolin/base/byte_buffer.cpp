#include "tavolin/base/byte_buffer.h"

#include <bit>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

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

struct Room {
    std::uint8_t* data = nullptr;
    std::size_t capacity = 0;
};

class Spare {
  public:
    constexpr Spare() = default;
    ~Spare() { Replace({}); }

    // Puts another in the place of what was kept, or nothing.
    void Replace(Room next) { Free(Swap(next)); }
    // What was kept if it is of that capacity. Else it is freed: whoever needs more has first call
    // on the memory.
    std::uint8_t* Take(std::size_t capacity) {
        const Room last = Swap({});
        if (last.capacity == capacity) return last.data;
        Free(last);
        return nullptr;
    }

  private:
    static void Free(Room room) {
        if (room.data != nullptr) FreeLarge(room.data, room.capacity + ByteBuffer::kPadding);
    }
    Room Swap(Room next) {
        const std::lock_guard lock(mutex_);
        return std::exchange(room_, next);
    }

    std::mutex mutex_;
    Room room_;
};
constinit Spare spare;

std::uint8_t* TakeSpare(std::size_t& capacity) {
    if (capacity < kLeastSpare) return nullptr;
    // Sizes that differ by little become one.
    const std::size_t step = std::bit_floor(capacity) / 8;
    if (capacity > SIZE_MAX - ByteBuffer::kPadding - step) return nullptr;
    capacity = (capacity + step - 1) / step * step;
    return spare.Take(capacity);
}

bool KeepSpare(std::uint8_t* data, std::size_t capacity) {
    if (!kReusesMemory || capacity < kLeastSpare) return false;
    madvise(data, capacity, MADV_FREE);
    spare.Replace({data, capacity});
    return true;
}

void FreeSpare() { spare.Replace({}); }
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
