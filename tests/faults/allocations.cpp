#include "tests/faults/allocations.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace tavolin {
namespace {

std::size_t left_until_failure = 0;  // 0: none is to fail
bool for_good_from_there = false;
bool one_failed = false;
std::size_t living = 0;

bool Fails() {
    if (left_until_failure == 0 || --left_until_failure > 0) return false;
    if (for_good_from_there) left_until_failure = 1;
    return one_failed = true;
}

void* Take(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    if (Fails()) return nullptr;
    const std::size_t whole = (std::max<std::size_t>(size, 1) + alignment - 1) & ~(alignment - 1);
    void* const memory = std::aligned_alloc(alignment, whole);
    if (memory != nullptr) ++living;
    return memory;
}

void* TakeOrThrow(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    void* const memory = Take(size, alignment);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void Give(void* memory) {
    if (memory != nullptr) --living;
    std::free(memory);
}

}  // namespace

void FailAllocation(std::size_t nth, bool for_good) {
    one_failed = false;
    for_good_from_there = for_good;
    left_until_failure = nth;
}

bool FailNoMore() {
    left_until_failure = 0;
    return one_failed;
}

std::size_t LivingAllocations() { return living; }

}  // namespace tavolin

using tavolin::Give;
using tavolin::Take;
using tavolin::TakeOrThrow;

void* operator new(std::size_t size) { return TakeOrThrow(size); }
void* operator new[](std::size_t size) { return TakeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return TakeOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return TakeOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Take(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { Give(memory); }
void operator delete[](void* memory) noexcept { Give(memory); }
void operator delete(void* memory, std::size_t) noexcept { Give(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Give(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Give(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { Give(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Give(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { Give(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Give(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Give(memory); }
