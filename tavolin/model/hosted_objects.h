// The objects that hosts hold of an arena's records, found by the record.
//
//     objects.ReserveOneMore();
//     objects.Insert(record, &object);
//     objects.Find(record);     // &object
//     objects.Erase(record);
//
// Every record that is handed out passes through here twice, and mostly it is the only one at its
// time: that has a slot to itself. The others are in an open table that is half empty at least.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "tavolin/model/order_list.h"

namespace tavolin {

class CVLRecord;

class HostedObjects {
  public:
    // The record's object, or nullptr.
    CVLRecord* Find(std::uint32_t record) const {
        if (single_.record == record) return single_.object;
        if (size_ == 0) return nullptr;
        const Slot& slot = slots_[Place(record)];
        return slot.record == record ? slot.object : nullptr;
    }

    // After it, one Insert cannot fail. A failure to get memory changes nothing.
    void ReserveOneMore() {
        if (single_.record != kNoHandle && 2 * (size_ + 1) > slots_.size()) Grow();
    }

    // Of a record that has none yet.
    void Insert(std::uint32_t record, CVLRecord* object) noexcept {
        if (single_.record == kNoHandle) {
            single_ = {object, record, false};
            return;
        }
        slots_[Place(record)] = {object, record, false};
        ++size_;
    }

    // Notes that perhaps nothing but the object holds the record; false when there is no object.
    bool MarkLast(std::uint32_t record) noexcept {
        if (single_.record == record) return single_.last = true;
        if (size_ == 0) return false;
        Slot& slot = slots_[Place(record)];
        if (slot.record != record) return false;
        slot.last = true;
        return true;
    }

    // Whether there was an object with that mark.
    bool Erase(std::uint32_t record) noexcept {
        if (single_.record == record) return std::exchange(single_, Slot()).last;
        if (size_ == 0) return false;
        const std::size_t at = Place(record);
        if (slots_[at].record != record) return false;
        const bool last = slots_[at].last;
        Close(at);
        // What many objects needed is not kept for few.
        if (--size_ == 0 && slots_.size() > kKept) std::vector<Slot>().swap(slots_);
        return last;
    }

  private:
    struct Slot {
        CVLRecord* object = nullptr;
        std::uint32_t record = kNoHandle;
        bool last = false;
    };
    static constexpr std::size_t kSmallest = 8;
    static constexpr std::size_t kKept = 1024;

    std::size_t Home(std::uint32_t record) const {
        return (record * 0x9E3779B97F4A7C15u >> 32) & (slots_.size() - 1);
    }
    std::size_t After(std::size_t at) const { return (at + 1) & (slots_.size() - 1); }
    // The record's slot, or the empty one that it would get.
    std::size_t Place(std::uint32_t record) const {
        std::size_t at = Home(record);
        while (slots_[at].record != record && slots_[at].record != kNoHandle) at = After(at);
        return at;
    }

    void Grow() {
        std::vector<Slot> old(slots_.empty() ? kSmallest : 2 * slots_.size());
        old.swap(slots_);
        for (const Slot& slot : old) {
            if (slot.record != kNoHandle) slots_[Place(slot.record)] = slot;
        }
    }

    // Pulls entries back over a hole until none behind it could be searched for in vain.
    void Close(std::size_t hole) {
        for (std::size_t at = After(hole); slots_[at].record != kNoHandle; at = After(at)) {
            const std::size_t mask = slots_.size() - 1;
            const std::size_t from_home = (at - Home(slots_[at].record)) & mask;
            if (from_home < ((at - hole) & mask)) continue;
            slots_[hole] = slots_[at];
            hole = at;
        }
        slots_[hole] = Slot();
    }

    Slot single_;
    std::vector<Slot> slots_;  // none, or a power of two of them
    std::size_t size_ = 0;     // of them in use
};

}  // namespace tavolin
