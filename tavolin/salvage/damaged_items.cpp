// Where the items of a damaged state stand.
#include <algorithm>

#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag_layout.h"
#include "tavolin/salvage/damaged_bag.h"
#include "tavolin/salvage/damaged_bytes.h"

namespace tavolin {

using namespace bag_layout;

// Without a key table the numbers that keys were seen to have count.
bool DamagedBag::KeyFits(const Slot& slot, std::uint64_t key) const {
    const auto known = ids_.find(slot.key);
    if (known != ids_.end()) return known->second == key;
    return !keys_known_ && learned_.count(key) == 0;
}

std::optional<DamagedBag::Head> DamagedBag::HeadAt(const Slot& slot, std::size_t at,
                                                   std::size_t end) const {
    const auto key = SkipVarint(bytes_, at, end);
    if (!key || !KeyFits(slot, *key) || at >= end) return {};
    const auto type = static_cast<PropertyType>(bytes_[at++]);
    if (slot.type == PropertyType::kFalse) {
        if (type != PropertyType::kFalse && type != PropertyType::kTrue) return {};
    } else if (type != slot.type) {
        return {};
    }
    auto head = ValueAt(slot, at, end);
    if (head) head->flag = type == PropertyType::kTrue;
    return head;
}

// The value behind an item's key and type.
std::optional<DamagedBag::Head> DamagedBag::ValueAt(const Slot& slot, std::size_t at,
                                                    std::size_t end) const {
    const PropertyType type = slot.type;
    Head head;
    std::uint64_t size = type == PropertyType::kInt    ? 4
                         : type == PropertyType::kByte ? 1
                         : type == PropertyType::kDate ? 8
                                                       : 0;
    if (type == PropertyType::kText) {
        const auto length = SkipVarint(bytes_, at, end);
        if (!length) return {};
        size = *length;
    }
    if (IsSized(type)) {
        if (end - at < kLengthBytes) return {};
        size = LoadLittle<std::uint64_t>(bytes_.data() + at);
        at += kLengthBytes;
        if (type == PropertyType::kBlocks) at = std::min(AlignBlocks(at), end);
    }
    head.length_fits = size <= end - at;
    if (!head.length_fits && !IsSized(type)) return {};
    head.value = at;
    head.size = head.length_fits ? static_cast<std::size_t>(size) : end - at;
    return head;
}

// The item of which the key or the type alone is damaged: what should stand behind it does.
std::optional<DamagedBag::Head> DamagedBag::MendedHeadAt(const Layout& layout, std::size_t slot,
                                                         std::size_t at, std::size_t end) {
    const Slot& what = layout.slots[slot];
    if (what.optional || end < at || end - at < 2) return {};
    const auto known = ids_.find(what.key);
    const std::size_t type_at = at + (known != ids_.end() && known->second >= 0x80 ? 2 : 1);
    if (type_at >= end) return {};
    const auto type = static_cast<PropertyType>(bytes_[type_at]);
    const bool boolean = what.type == PropertyType::kFalse;
    const bool type_fits =
        boolean ? type == PropertyType::kFalse || type == PropertyType::kTrue : type == what.type;
    std::size_t key_at = at;
    const auto key = SkipVarint(bytes_, key_at, end);
    const bool key_fits = key && key_at == type_at && KeyFits(what, *key);
    if (boolean ? !type_fits : !type_fits && !key_fits) return {};
    auto head = ValueAt(what, type_at + 1, end);
    if (!head || !head->length_fits) return {};
    const std::size_t behind = head->value + head->size;
    const bool last = slot + 1 == layout.slots.size();
    if (last ? behind != end : !Follows(layout, slot, behind, end)) return {};
    head->flag = type == PropertyType::kTrue;
    Add(Finding::Kind::kDamage, at, Where(what.words), "its key or its type is damaged");
    return head;
}

// Whether what should come behind that slot's value begins here.
bool DamagedBag::Follows(const Layout& layout, std::size_t slot, std::size_t at,
                         std::size_t end) const {
    for (std::size_t next = slot + 1; next < layout.slots.size(); ++next) {
        if (HeadAt(layout.slots[next], at, end)) return true;
        if (!layout.slots[next].optional) return false;
    }
    return true;
}

// The next place where an item of that slot or a later one stands with its successor behind it.
std::optional<DamagedBag::Place> DamagedBag::Resync(const Layout& layout, std::size_t slot,
                                                    std::size_t from, std::size_t end) const {
    for (std::size_t at = from; at < end; ++at) {
        for (std::size_t s = slot; s < layout.slots.size(); ++s) {
            // What has no number yet could be anything.
            if (ids_.find(layout.slots[s].key) == ids_.end()) continue;
            const auto head = HeadAt(layout.slots[s], at, end);
            if (!head || !head->length_fits) continue;
            const std::size_t behind = head->value + head->size;
            const bool last = s + 1 == layout.slots.size();
            if (last ? behind == end : Follows(layout, s, behind, end)) return Place{at, s};
        }
    }
    return {};
}

}  // namespace tavolin
