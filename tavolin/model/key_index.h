// A hash table from the 32-bit hash of a key to a 32-bit handle. It knows no keys: the caller
// compares. The whole hash stands beside each handle, so growing and removing never touch an
// element, and a lookup touches hardly ever a wrong one.
//
//     index.Insert(hash, handle);
//     index.Find(hash, [&](std::uint32_t h) { return KeyOf(h) == key; });   // handle or kNoHandle
//     index.Remove(hash, handle);
//
// Eight bytes a slot, at most 85 of 100 slots used, growth by half: 9.4 to 14.1 bytes an entry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tavolin/base/large_pages.h"
#include "tavolin/base/prefetch.h"
#include "tavolin/model/order_list.h"

namespace tavolin {

class KeyIndex {
  public:
    struct Entry {
        std::uint32_t hash = 0;
        std::uint32_t handle = kNoHandle;
    };

    std::size_t size() const { return size_; }
    std::size_t memory() const { return slots_.capacity() * sizeof(Slot); }

    // The handle with this hash for which equals(handle) is true, or kNoHandle.
    template <class Equals>
    std::uint32_t Find(std::uint32_t hash, Equals&& equals) const {
        if (size_ == 0) return kNoHandle;
        for (std::size_t at = Home(hash);; at = After(at)) {
            const Slot& slot = slots_[at];
            if (slot.handle == kNoHandle) return kNoHandle;
            if (slot.hash == hash && equals(slot.handle)) return slot.handle;
        }
    }

    // Has the place where a hash is looked for fetched from memory, for later.
    void Prefetch(std::uint32_t hash) const {
        if (!slots_.empty()) PrefetchLine(&slots_[Home(hash)]);
    }

    // Adds an entry without looking for an equal one. Does not throw when Reserve has made room.
    void Insert(std::uint32_t hash, std::uint32_t handle);

    // Takes the entry of exactly this handle out; false when there is none. Never throws.
    bool Remove(std::uint32_t hash, std::uint32_t handle);

    // Makes room for `count` entries in all. A failure to get memory changes nothing.
    void Reserve(std::size_t count);

    // Makes room for one more entry, growing in steps that keep the mean cost constant.
    void ReserveOneMore();

    // Takes all entries out and gives the memory back.
    void Clear();

  private:
    using Slot = Entry;

    // Spreads the low bits upwards first, because the reduction to a slot number uses the high
    // ones.
    std::size_t Home(std::uint32_t hash) const {
        const std::uint32_t spread = hash * 0x9E3779B1u;
        return static_cast<std::size_t>((std::uint64_t{spread} * slots_.size()) >> 32);
    }
    std::size_t After(std::size_t at) const { return at + 1 == slots_.size() ? 0 : at + 1; }
    void Put(std::uint32_t hash, std::uint32_t handle);
    void Resize(std::size_t slots);
    void Close(std::size_t hole);

    std::vector<Slot, LargePages<Slot>> slots_;
    std::size_t size_ = 0;
};

}  // namespace tavolin
