#include "tavolin/model/value_counts.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tavolin/base/prefetch.h"

namespace tavolin {
namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kTextBlock = 64 * 1024;
constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;  // hashes that differ little end up far apart

}  // namespace

std::size_t ValueCounts::Home(std::uint32_t hash) const {
    return static_cast<std::size_t>(hash * kSpread >> 32) & (slots_.size() - 1);
}

// The slot of the value, or the free one where it belongs. There are slots.
std::size_t ValueCounts::Find(std::string_view value, std::uint32_t hash) const {
    std::size_t at = Home(hash);
    while (slots_[at].count != 0 &&
           (slots_[at].hash != hash || !EqualFold(slots_[at].value(), value))) {
        at = (at + 1) & (slots_.size() - 1);
    }
    return at;
}

void ValueCounts::Prefetch(std::uint32_t hash) const {
    if (!slots_.empty()) PrefetchLine(&slots_[Home(hash)]);
}

std::uint32_t ValueCounts::Of(std::string_view value) const {
    return slots_.empty() ? 0 : slots_[Find(value, HashFold(value))].count;
}

void ValueCounts::AddHashed(std::string_view value, std::uint32_t hash) {
    if (!slots_.empty()) {
        Slot& found = slots_[Find(value, hash)];
        if (found.count != 0) {
            ++found.count;
            return;
        }
    }
    MakeRoom(value.size());
    if (!value.empty()) std::memcpy(free_, value.data(), value.size());
    slots_[Find(value, hash)] = {free_, static_cast<std::uint32_t>(value.size()), hash, 1};
    free_ += value.size();
    room_ -= value.size();
    living_ += value.size();
    kept_ += value.size();
    ++used_;
}

void ValueCounts::Remove(std::string_view value) {
    std::size_t at = Find(value, HashFold(value));
    if (--slots_[at].count != 0) return;
    living_ -= slots_[at].size;
    --used_;
    // Those behind it move up unless that would put them in front of their homes.
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t next = (at + 1) & mask; slots_[next].count != 0; next = (next + 1) & mask) {
        if (((next - Home(slots_[next].hash)) & mask) < ((next - at) & mask)) continue;
        slots_[at] = slots_[next];
        slots_[next].count = 0;
        at = next;
    }
}

// Room for one value more and its text: three quarters of the slots are in use at most, and about
// half of the texts.
void ValueCounts::MakeRoom(std::size_t text_size) {
    if (kept_ > 2 * living_ + kTextBlock) {
        ValueCounts anew;
        anew.slots_.resize(slots_.size());
        for (const Slot& slot : slots_) {
            if (slot.count == 0) continue;
            anew.AddHashed(slot.value(), slot.hash);
            anew.slots_[anew.Find(slot.value(), slot.hash)].count = slot.count;
        }
        std::swap(*this, anew);
    }
    if (room_ < text_size || free_ == nullptr) {
        const std::size_t size = std::max(text_size, kTextBlock);
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
        free_ = blocks_.back().get();
        room_ = size;
    }
    if (4 * (used_ + 1) <= 3 * slots_.size()) return;
    std::vector<Slot> old(std::max(kFirstSlots, 2 * slots_.size()));
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (slot.count == 0) continue;
        std::size_t at = Home(slot.hash);
        while (slots_[at].count != 0) at = (at + 1) & (slots_.size() - 1);
        slots_[at] = slot;
    }
}

}  // namespace tavolin
