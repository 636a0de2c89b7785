#include "tavolin/model/key_index.h"

#include <algorithm>

namespace tavolin {
namespace {

constexpr std::size_t kSmallest = 8;

// Written so that at least one slot of any table stays empty: a search ends there.
constexpr std::size_t Limit(std::size_t slots) { return slots * 17 / 20; }

}  // namespace

void KeyIndex::Insert(std::uint32_t hash, std::uint32_t handle) {
    ReserveOneMore();
    Put(hash, handle);
    ++size_;
}

bool KeyIndex::Remove(std::uint32_t hash, std::uint32_t handle) {
    if (size_ == 0) return false;
    std::size_t at = Home(hash);
    while (slots_[at].handle != handle) {
        if (slots_[at].handle == kNoHandle) return false;
        at = After(at);
    }
    Close(at);
    --size_;
    return true;
}

void KeyIndex::Reserve(std::size_t count) {
    if (count <= Limit(slots_.size())) return;
    Resize(std::max(kSmallest, count + (count * 3 + 16) / 17 + 1));
}

void KeyIndex::ReserveOneMore() {
    if (size_ < Limit(slots_.size())) return;
    Resize(std::max(kSmallest, slots_.size() + slots_.size() / 2));
}

void KeyIndex::Clear() {
    decltype(slots_)().swap(slots_);
    size_ = 0;
}

void KeyIndex::Put(std::uint32_t hash, std::uint32_t handle) {
    std::size_t at = Home(hash);
    while (slots_[at].handle != kNoHandle) at = After(at);
    slots_[at] = {hash, handle};
}

// Slot numbers rise with the spread hash, so a walk along the old slots fills the new ones nearly
// in sequence.
void KeyIndex::Resize(std::size_t slots) {
    decltype(slots_) old(slots);
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (slot.handle != kNoHandle) Put(slot.hash, slot.handle);
    }
}

// Pulls entries back over a hole until none behind it could be searched for in vain.
void KeyIndex::Close(std::size_t hole) {
    for (std::size_t at = After(hole); slots_[at].handle != kNoHandle; at = After(at)) {
        const std::size_t home = Home(slots_[at].hash);
        const bool stays = hole < at ? hole < home && home <= at : hole < home || home <= at;
        if (stays) continue;
        slots_[hole] = slots_[at];
        hole = at;
    }
    slots_[hole] = Slot();
}

}  // namespace tavolin
