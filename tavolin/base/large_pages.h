// Memory for large amounts: from 2 MiB on it lies in large pages where the machine has them, which
// are got sooner, and found sooner by those who look here and there.
//
//     std::vector<Slot, LargePages<Slot>> slots_;
#pragma once

#include <cstddef>
#include <new>

#include "tavolin/base/export.h"

namespace tavolin {

TAVOLIN_API void* AllocateLarge(std::size_t bytes);
// With the number of bytes that was asked for.
TAVOLIN_API void FreeLarge(void* memory, std::size_t bytes) noexcept;

// The same for amounts that come again soon. On Linux the last one that was given back so is kept
// for the next: to have the system clear pages takes longer than to fill them. It counts as the
// process's until the system, when it is short, takes it, or another amount is asked for so, or
// there is no memory for any large amount.
TAVOLIN_API void* AllocateAgain(std::size_t bytes);
TAVOLIN_API void KeepLarge(void* memory, std::size_t bytes) noexcept;
// Gives back what is kept.
TAVOLIN_API void FreeKept() noexcept;

// An allocator for the containers of the language.
template <class T>
struct LargePages {
    using value_type = T;

    LargePages() = default;
    template <class Other>
    LargePages(const LargePages<Other>&) {}  // NOLINT: allocators turn into one another

    T* allocate(std::size_t count) {
        if (count > std::size_t(-1) / sizeof(T)) throw std::bad_array_new_length();
        return static_cast<T*>(AllocateLarge(count * sizeof(T)));
    }
    void deallocate(T* memory, std::size_t count) noexcept { FreeLarge(memory, count * sizeof(T)); }
    friend bool operator==(const LargePages&, const LargePages&) { return true; }
};

}  // namespace tavolin
