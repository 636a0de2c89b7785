#include "tavolin/salvage/damaged_bag.h"

#include <algorithm>
#include <utility>

#include "tavolin/persist/checksum.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag_layout.h"
#include "tavolin/salvage/damaged_bytes.h"

namespace tavolin {

using namespace bag_layout;

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
    const auto count = SkipVarint(bytes_, at, end);
    if (!count || *count == 0 || *count > end - at) return false;
    for (std::uint64_t i = 0; i < *count; ++i) {
        const auto size = SkipVarint(bytes_, at, end);
        if (!size || *size > end - at) return false;
        const std::string name(reinterpret_cast<const char*>(bytes_.data() + at),
                               static_cast<std::size_t>(*size));
        if (!ids_.emplace(name, i).second) return false;
        at += static_cast<std::size_t>(*size);
    }
    return at == end;
}

// --- what was found

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

}  // namespace tavolin
