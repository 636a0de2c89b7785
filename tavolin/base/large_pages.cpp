#include "tavolin/base/large_pages.h"

#include <mutex>
#include <utility>

#include "tavolin/base/reuse.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tavolin {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

constexpr std::align_val_t AlignmentFor(std::size_t bytes) {
    return std::align_val_t{bytes < kLargePage ? alignof(std::max_align_t) : kLargePage};
}

struct Kept {
    void* memory = nullptr;
    std::size_t bytes = 0;
};
// For the whole process, whose end frees it.
std::mutex mutex;
constinit Kept kept;

Kept Exchange(Kept next) {
    const std::lock_guard lock(mutex);
    return std::exchange(kept, next);
}

void Free(Kept last) noexcept {
    if (last.memory != nullptr) FreeLarge(last.memory, last.bytes);
}

// Whether the system may have the pages from now on, until they are written to. Not the last one,
// in which something else may begin.
bool LeaveToSystem([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) {
#if defined(MADV_FREE)
    const std::size_t whole = bytes / kLargePage * kLargePage;
    return kReusesMemory && whole != 0 && madvise(memory, whole, MADV_FREE) == 0;
#else
    return false;
#endif
}

}  // namespace

void* AllocateLarge(std::size_t bytes) {
    void* memory = ::operator new(bytes, AlignmentFor(bytes), std::nothrow);
    if (memory == nullptr) {
        const Kept last = Exchange({});
        if (last.memory == nullptr) throw std::bad_alloc();
        Free(last);
        memory = ::operator new(bytes, AlignmentFor(bytes));
    }
#if defined(__linux__)
    // A hint; the outcome is the same without it.
    if (bytes >= kLargePage) madvise(memory, bytes, MADV_HUGEPAGE);
#endif
    return memory;
}

void FreeLarge(void* memory, std::size_t bytes) noexcept {
    ::operator delete(memory, AlignmentFor(bytes));
}

void* AllocateAgain(std::size_t bytes) {
    const Kept last = Exchange({});
    if (last.bytes == bytes) return last.memory;
    Free(last);
    return AllocateLarge(bytes);
}

void KeepLarge(void* memory, std::size_t bytes) noexcept {
    if (LeaveToSystem(memory, bytes)) {
        Free(Exchange({memory, bytes}));
    } else {
        FreeLarge(memory, bytes);
    }
}

void FreeKept() noexcept { Free(Exchange({})); }

}  // namespace tavolin
