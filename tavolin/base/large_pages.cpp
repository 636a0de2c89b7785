#include "tavolin/base/large_pages.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tavolin {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

constexpr std::align_val_t AlignmentFor(std::size_t bytes) {
    return std::align_val_t{bytes < kLargePage ? alignof(std::max_align_t) : kLargePage};
}

}  // namespace

void* AllocateLarge(std::size_t bytes) {
    void* const memory = ::operator new(bytes, AlignmentFor(bytes));
#if defined(__linux__)
    // A hint; the outcome is the same without it.
    if (bytes >= kLargePage) madvise(memory, bytes, MADV_HUGEPAGE);
#endif
    return memory;
}

void FreeLarge(void* memory, std::size_t bytes) noexcept {
    ::operator delete(memory, AlignmentFor(bytes));
}

}  // namespace tavolin
