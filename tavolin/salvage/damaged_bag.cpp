#include "tavolin/salvage/damaged_bag.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "tavolin/persist/checksum.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag_layout.h"

namespace tavolin {

using namespace bag_layout;

namespace {

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

bool IsSized(PropertyType type) {
    return type == PropertyType::kObject || type == PropertyType::kSeries ||
           type == PropertyType::kBlocks;
}

// Steps over a varint; nothing when it does not end in time.
std::optional<std::uint64_t> Varint(std::span<const std::uint8_t> bytes, std::size_t& at,
                                    std::size_t end) {
    std::uint64_t number = 0;
    for (int shift = 0; shift < 64 && at < end; shift += 7) {
        const std::uint8_t byte = bytes[at++];
        number |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if (byte < 0x80) return number;
    }
    return {};
}

std::string BytesText(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string Records(std::int64_t count) {
    return std::to_string(count) + (count == 1 ? " record" : " records");
}

}  // namespace

const StoredItem& StoredObject::operator[](std::string_view key) const {
    static const StoredItem kNone;
    if (layout == nullptr) return kNone;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (layout->slots[i].key == key) return items[i];
    }
    return kNone;
}

StoredItem& StoredObject::operator[](std::string_view key) {
    return const_cast<StoredItem&>(std::as_const(*this)[key]);
}

DamagedBag::DamagedBag(std::span<const std::uint8_t> bytes, std::uint64_t file_offset,
                       const Layout& layout)
    : bytes_(bytes), file_offset_(file_offset) {
    ReadHeader();
    titles_.push_back({&root_, 0});
    ReadObject(root_, layout, std::min(kItemsAt, items_end_), items_end_, items_end_known_);
}

void DamagedBag::Add(Finding::Kind kind, std::size_t at, std::string where, std::string what) {
    findings_.push_back({kind, file_offset_ + at, std::move(where), std::move(what)});
}

// --- header and key table

void DamagedBag::ReadHeader() {
    const auto damage = [&](std::size_t at, std::string what) {
        Add(Finding::Kind::kDamage, at, "header", std::move(what));
    };
    items_end_ = bytes_.size();
    if (bytes_.size() < kItemsAt) {
        Add(Finding::Kind::kLoss, 0, "header", "cut off");
        return;
    }
    const std::uint8_t* header = bytes_.data();
    if (!std::equal(std::begin(kMagic), std::end(kMagic), header)) {
        damage(0, "the magic number is damaged");
    }
    if (LoadLittle<std::uint32_t>(header + kVersionAt) != kPropertyBagVersion) {
        damage(kVersionAt, "the version of the format is damaged");
    }
    if (LoadLittle<std::uint32_t>(header + kZeroAt) != 0) damage(kZeroAt, "a zero is damaged");
    const auto length = LoadLittle<std::uint64_t>(header + kLengthAt);
    if (length != bytes_.size()) {
        damage(kLengthAt, "says that there are " + std::to_string(length) + " bytes; there are " +
                              std::to_string(bytes_.size()));
    }
    if (LoadLittle<std::uint64_t>(header + kChecksumAt) != Checksum(bytes_.subspan(kLengthAt))) {
        damage(kChecksumAt,
               "the checksum is not that of the bytes: at least one is not what it was");
    }
    const auto table = LoadLittle<std::uint64_t>(header + kKeyTableAt);
    if (table >= kItemsAt && table <= bytes_.size()) {
        const auto at = static_cast<std::size_t>(table);
        keys_known_ = ReadKeyTable(at, bytes_.size());
        // Where it is said to be there may be one that is damaged.
        items_end_ = at;
        items_end_known_ = keys_known_;
    }
    if (!keys_known_) {
        ids_.clear();
        if (items_end_ == bytes_.size()) {
            damage(kKeyTableAt,
                   "the table of the keys is not where it is said to be; the keys are "
                   "guessed by their order");
        } else {
            Add(Finding::Kind::kDamage, items_end_, "table of the keys",
                "damaged; the keys are guessed by their order");
            items_end_ = bytes_.size();
        }
    }
}

bool DamagedBag::ReadKeyTable(std::size_t at, std::size_t end) {
    const auto count = Varint(bytes_, at, end);
    if (!count || *count == 0 || *count > end - at) return false;
    for (std::uint64_t i = 0; i < *count; ++i) {
        const auto size = Varint(bytes_, at, end);
        if (!size || *size > end - at) return false;
        const std::string name(reinterpret_cast<const char*>(bytes_.data() + at),
                               static_cast<std::size_t>(*size));
        if (!ids_.emplace(name, i).second) return false;
        at += static_cast<std::size_t>(*size);
    }
    return at == end;
}

// --- items

// Without a key table the numbers that keys were seen to have count.
bool DamagedBag::KeyFits(const Slot& slot, std::uint64_t key) const {
    const auto known = ids_.find(slot.key);
    if (known != ids_.end()) return known->second == key;
    return !keys_known_ && learned_.count(key) == 0;
}

std::optional<DamagedBag::Head> DamagedBag::HeadAt(const Slot& slot, std::size_t at,
                                                   std::size_t end) const {
    const auto key = Varint(bytes_, at, end);
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
        const auto length = Varint(bytes_, at, end);
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
    const auto key = Varint(bytes_, key_at, end);
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
            const auto key = Varint(bytes_, key_at, end);
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
    const auto stated = Varint(bytes_, at, end);
    const std::uint64_t count = stated.value_or(0);
    const auto where = [&] { return Where(std::string(layout.name) + "s"); };
    if (!stated || count > (end - at) / kLengthBytes) {
        Add(Finding::Kind::kDamage, begin, where(), "their number is damaged");
        at = std::min(begin + 1, end);
    }
    while (end - at >= kLengthBytes) {
        const std::size_t start = at;
        const bool more_wanted = !stated || item.objects.size() < count;
        if (!ElementAt(layout, at, end, !more_wanted)) {
            if (!more_wanted) break;
            // One of which the length or the beginning alone is damaged can be read all the same.
            const bool begins =
                HeadAt(layout.slots[0], at + kLengthBytes, end).has_value() ||
                (LoadLittle<std::uint64_t>(bytes_.data() + at) <= end - at - kLengthBytes &&
                 LoadLittle<std::uint64_t>(bytes_.data() + at) > 0 &&
                 Resync(
                     layout, 1, at + kLengthBytes,
                     at + kLengthBytes +
                         static_cast<std::size_t>(LoadLittle<std::uint64_t>(bytes_.data() + at))));
            if (!begins) {
                while (at < end && !ElementAt(layout, at, end, true)) ++at;
                Add(Finding::Kind::kLoss, start, where(),
                    "at least one is lost: " + BytesText(std::min(at, end) - start) +
                        " make no sense");
                if (at >= end) return end;
                continue;
            }
        }
        const auto length = LoadLittle<std::uint64_t>(bytes_.data() + at);
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

std::string DamagedBag::Where(std::string_view words) const {
    std::string where;
    const auto add = [&](const std::string& step) {
        if (!where.empty()) where += ", ";
        where += step;
    };
    for (const Title& title : titles_) {
        const StoredObject& object = *title.object;
        if (title.number == 0 || object.layout == nullptr) continue;
        std::string step(object.layout->name);
        const auto name = Text(object[object.layout->title]);
        add(step + ' ' + (name.empty() ? std::to_string(title.number) : std::string(name)));
    }
    if (!words.empty()) add(std::string(words));
    return where;
}

std::string_view DamagedBag::Text(const StoredItem& item) const {
    if (item.instead) return *item.instead;
    if (!item.found) return {};
    return {reinterpret_cast<const char*>(bytes_.data() + item.at), item.size};
}

std::int32_t DamagedBag::Int(const StoredItem& item) const {
    if (!item.found) return 0;
    return static_cast<std::int32_t>(LoadLittle<std::uint32_t>(bytes_.data() + item.at));
}

std::uint8_t DamagedBag::Byte(const StoredItem& item, std::uint8_t otherwise) const {
    if (item.instead) return static_cast<std::uint8_t>(item.instead->front());
    return item.found ? bytes_[item.at] : otherwise;
}

std::int64_t DamagedBag::Date(const StoredItem& item) const {
    if (!item.found) return 0;
    return static_cast<std::int64_t>(LoadLittle<std::uint64_t>(bytes_.data() + item.at));
}

// --- records

std::vector<DamagedBag::Record> DamagedBag::Records(const StoredObject& set,
                                                    const std::string& title,
                                                    const std::vector<bool>& own_key) {
    std::vector<Record> records;
    struct Gap {
        std::size_t behind;  // how many records stand in front of it
        std::size_t at;
        std::size_t size;
    };
    std::vector<Gap> gaps;
    const StoredItem& blocks = set["Record"];
    const std::size_t end = blocks.at + blocks.size;
    for (std::size_t at = blocks.at; at < end;) {
        const std::size_t start = at;
        const auto sound = [&](std::size_t place) {
            const auto at_place = [&](std::size_t where) {
                return RecordImage::Read(bytes_.subspan(where, end - where));
            };
            auto image = at_place(place);
            if (image && image->size != image->stated_size && image->stated_size <= end - place) {
                // What stands behind it tells whether its size is wrong, or its fields' ends are.
                const auto next = at_place(place + image->stated_size);
                if (next && !next->doubt && !next->key_in_doubt) image.reset();
            }
            if (place == start || !image) return image;
            // What was searched for must be sound, or have a sound one behind it.
            if (!image->doubt && !image->key_in_doubt) return image;
            const auto other = at_place(place + image->size);
            return other && !other->doubt && !other->key_in_doubt ? image : std::nullopt;
        };
        auto image = sound(at);
        while (!image && at + 8 < end) image = sound(at += 8);
        if (!image) at = end;
        if (at != start) gaps.push_back({records.size(), start, at - start});
        if (!image) break;
        records.push_back({at, 0, *image});
        at += image->size;
    }

    const StoredItem& stated = set["RecordsCount"];
    const std::int64_t wanted = stated.found ? Int(stated) : -1;
    const auto there = static_cast<std::int64_t>(records.size());
    const bool count_good = wanted >= there && (wanted == there) == gaps.empty();
    // In front of the first gap positions are sure, and behind the last one with a good count.
    for (std::size_t i = 0; i < records.size(); ++i) {
        const auto number = static_cast<std::int64_t>(i) + 1;
        if (gaps.empty() || i < gaps.front().behind) {
            records[i].position = static_cast<std::int32_t>(number);
        } else if (count_good && i >= gaps.back().behind) {
            records[i].position = static_cast<std::int32_t>(wanted - there + number);
        }
    }
    const auto name = [&](std::size_t i) {
        const std::int32_t position = records[i].position;
        return "record " + (position != 0 ? std::to_string(position) + " " : std::string()) +
               "(key " + records[i].image.Key() + ")";
    };
    for (const Gap& gap : gaps) {
        std::string what = "the records that stood here are lost";
        if (count_good && gaps.size() == 1) what = ::tavolin::Records(wanted - there) + " lost";
        what += ": " + BytesText(gap.size) + " make no sense";
        if (gap.behind > 0) what += ", behind " + name(gap.behind - 1);
        if (gap.behind < records.size()) what += ", in front of " + name(gap.behind);
        Add(Finding::Kind::kLoss, gap.at, title, what);
    }
    if (stated.found && gaps.empty() && wanted != there) {
        Add(wanted > there ? Finding::Kind::kLoss : Finding::Kind::kDamage, stated.at, title,
            "there should be " + ::tavolin::Records(wanted) + "; there are " +
                std::to_string(there));
    } else if (gaps.size() > 1 && count_good) {
        Add(Finding::Kind::kLoss, blocks.at, title,
            ::tavolin::Records(wanted - there) + " of " + std::to_string(wanted) + " lost in all");
    }
    for (std::size_t i = 0; i < records.size(); ++i) {
        const RecordImage& image = records[i].image;
        const auto position = static_cast<std::size_t>(records[i].position);
        const bool named = position != 0 && position <= own_key.size() && own_key[position - 1];
        const char* doubt = image.doubt;
        if (doubt == nullptr && image.key_in_doubt && !named) {
            doubt = "a value of its key, or the hash of that, is damaged";
        }
        if (doubt == nullptr) continue;
        Add(Finding::Kind::kDamage, records[i].at, title + ", " + name(i),
            std::string(doubt) + "; the record can be read, but look at it");
    }
    return records;
}

}  // namespace tavolin
