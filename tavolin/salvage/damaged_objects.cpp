// Objects and series of a damaged state, read item by item.
#include <algorithm>
#include <limits>

#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag_layout.h"
#include "tavolin/salvage/damaged_bag.h"
#include "tavolin/salvage/damaged_bytes.h"

namespace tavolin {

using namespace bag_layout;

namespace {

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

}  // namespace

std::size_t DamagedBag::ReadObject(StoredObject& object, const Layout& layout, std::size_t at,
                                   std::size_t end, bool end_known) {
    object.layout = &layout;
    object.at = at;
    object.items.resize(layout.slots.size());
    std::size_t text_before = kNowhere;  // of which the length may be what is wrong
    std::size_t text_start = 0;
    for (std::size_t s = 0; s < layout.slots.size(); ++s) {
        const Slot& slot = layout.slots[s];
        auto head = HeadAt(slot, at, end);
        if (!head && slot.optional) continue;
        const bool mended = !head && (head = MendedHeadAt(layout, s, at, end)).has_value();
        if (!head) {
            const bool after_text = text_before != kNowhere;
            const std::size_t from = after_text ? text_start + 1 : at;
            const auto place = Resync(layout, s, from, end);
            if (!place) {
                const bool cut = at >= end;
                Add(Finding::Kind::kLoss, at, Where(slot.words),
                    cut ? "missing, with everything behind it"
                        : "cannot be read, and nothing behind it");
                return end_known ? end : at;
            }
            if (after_text && place->slot == s) {
                StoredItem& text = object.items[text_before];
                text.at = std::min(text.at, place->at);
                text.size = place->at - text.at;
                Add(Finding::Kind::kDamage, text.at, Where(layout.slots[text_before].words),
                    "its length is damaged; it was taken to end where the next value begins");
            } else {
                for (std::size_t lost = s; lost < place->slot; ++lost) {
                    if (layout.slots[lost].optional) continue;
                    Add(Finding::Kind::kLoss, at, Where(layout.slots[lost].words),
                        "cannot be read");
                }
                if (place->slot == s) {
                    Add(Finding::Kind::kDamage, at, Where(slot.words),
                        BytesText(place->at - at) + " in front of it make no sense");
                }
            }
            s = place->slot;
            at = place->at;
            head = HeadAt(layout.slots[s], at, end);
        }
        if (!mended && !keys_known_ && ids_.find(layout.slots[s].key) == ids_.end()) {
            std::size_t key_at = at;
            const auto key = SkipVarint(bytes_, key_at, end);
            ids_.emplace(layout.slots[s].key, *key);
            learned_.emplace(*key, layout.slots[s].key);
        }
        ++items_found_;
        text_start = at;
        at = ReadItem(object, s, *head, end, end_known);
        text_before = layout.slots[s].type == PropertyType::kText ? s : kNowhere;
    }
    return at;
}

std::size_t DamagedBag::ReadItem(StoredObject& object, std::size_t slot, const Head& head,
                                 std::size_t end, bool end_known) {
    const Slot& what = object.layout->slots[slot];
    StoredItem& item = object.items[slot];
    item.found = true;
    item.flag = head.flag;
    item.at = head.value;
    item.size = head.size;
    if (!IsSized(what.type)) return head.value + head.size;
    const std::size_t stated = head.value + head.size;
    const bool last = slot + 1 == object.layout->slots.size();
    const bool sure = head.length_fits && (last ? !end_known || stated == end
                                                : Follows(*object.layout, slot, stated, end));
    if (what.type == PropertyType::kBlocks) {
        if (sure) return stated;
        // They end where something else begins.
        const auto place = Resync(*object.layout, slot + 1, head.value, end);
        item.size = (place ? place->at : end) - head.value;
        return head.value + item.size;
    }
    const std::size_t limit = sure ? stated : end;
    std::size_t read = 0;
    if (what.type == PropertyType::kObject) {
        item.objects.resize(1);
        titles_.push_back({&item.objects[0], 0});
        read = ReadObject(item.objects[0], *what.inside, head.value, limit, sure);
        titles_.pop_back();
    } else {
        read = ReadSeries(item, *what.inside, head.value, limit, sure);
    }
    if (read != stated && head.length_fits && !sure) {
        Add(Finding::Kind::kDamage, head.value, Where(what.words), "its length is damaged");
    }
    return sure ? stated : read;
}

// Whether a numbered object begins here: its length, and its first item; with `chain`, for a place
// that was searched for, also what stands behind the first item.
bool DamagedBag::ElementAt(const Layout& layout, std::size_t at, std::size_t end,
                           bool chain) const {
    if (at > end || end - at < kLengthBytes) return false;
    const auto size = LoadLittle<std::uint64_t>(bytes_.data() + at);
    at += kLengthBytes;
    if (size > end - at) return false;
    const auto head = HeadAt(layout.slots[0], at, end);
    return head && (!chain || Follows(layout, 0, head->value + head->size, end));
}

std::size_t DamagedBag::ReadSeries(StoredItem& item, const Layout& layout, std::size_t at,
                                   std::size_t end, bool end_known) {
    const std::size_t begin = at;
    const auto stated = SkipVarint(bytes_, at, end);
    const std::uint64_t count = stated.value_or(0);
    const auto where = [&] { return Where(std::string(layout.name) + "s"); };
    if (!stated || count > (end - at) / kLengthBytes) {
        Add(Finding::Kind::kDamage, begin, where(), "their number is damaged");
        at = std::min(begin + 1, end);
    }
    while (end - at >= kLengthBytes) {
        const std::size_t start = at;
        const bool more_wanted = !stated || item.objects.size() < count;
        const auto length = LoadLittle<std::uint64_t>(bytes_.data() + at);
        if (!ElementAt(layout, at, end, !more_wanted)) {
            if (!more_wanted) break;
            // One of which the length or the beginning alone is damaged can be read all the same.
            const std::size_t inside = at + kLengthBytes;
            const bool begins =
                HeadAt(layout.slots[0], inside, end).has_value() ||
                (length <= end - inside && length > 0 &&
                 Resync(layout, 1, inside, inside + static_cast<std::size_t>(length)));
            if (!begins) {
                while (at < end && !ElementAt(layout, at, end, true)) ++at;
                Add(Finding::Kind::kLoss, start, where(),
                    "at least one is lost: " + BytesText(std::min(at, end) - start) +
                        " make no sense");
                if (at >= end) return end;
                continue;
            }
        }
        at += kLengthBytes;
        const std::size_t number = item.objects.size() + 1;
        const bool fits = length <= end - at;
        const std::size_t stop = fits ? at + static_cast<std::size_t>(length) : end;
        const bool last = number == count;
        const bool sure =
            fits && (stop == end || (last ? !end_known : ElementAt(layout, stop, end, false)));
        item.objects.emplace_back();
        titles_.push_back({&item.objects.back(), number});
        const std::size_t read =
            ReadObject(item.objects.back(), layout, at, sure ? stop : end, sure);
        if (!sure && read != stop) {
            Add(Finding::Kind::kDamage, start, Where({}), "its length is damaged");
        }
        titles_.pop_back();
        at = sure ? stop : read;
        if (at <= start) break;
    }
    if (stated && item.objects.size() < count && count <= bytes_.size()) {
        Add(Finding::Kind::kLoss, at, where(),
            std::to_string(item.objects.size()) + " of " + std::to_string(count) + " are there");
    }
    return at;
}

}  // namespace tavolin
