#include <cstring>
#include <string>

#include "tavolin/errors/error.h"
#include "tavolin/persist/checksum.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag.h"
#include "tavolin/persist/property_bag_layout.h"

namespace tavolin {

using namespace bag_layout;

namespace {

const char* Describe(PropertyType type) {
    switch (type) {
        case PropertyType::kText:
            return "a text";
        case PropertyType::kFalse:
        case PropertyType::kTrue:
            return "a Boolean";
        case PropertyType::kInt:
            return "an integer";
        case PropertyType::kByte:
            return "a byte";
        case PropertyType::kDate:
            return "a date";
        case PropertyType::kObject:
            return "an object";
        case PropertyType::kSeries:
            return "a series";
        case PropertyType::kBlocks:
            return "raw bytes";
    }
    return "nothing known";
}

bool SameType(PropertyType a, PropertyType b) {
    if (a == PropertyType::kTrue) a = PropertyType::kFalse;
    if (b == PropertyType::kTrue) b = PropertyType::kFalse;
    return a == b;
}

// Walks through a stretch of the array and never steps out of it. After a step that would have,
// ok() is false for good and every number read is 0.
class Walk {
  public:
    Walk(const std::uint8_t* bytes, std::size_t at, std::size_t end)
        : bytes_(bytes), at_(at), end_(end) {}

    bool ok() const { return ok_; }
    std::size_t at() const { return at_; }
    std::size_t left() const { return end_ - at_; }

    std::uint8_t Byte() { return Take(1) ? bytes_[at_ - 1] : std::uint8_t{0}; }
    std::uint64_t Length() {
        return Take(kLengthBytes) ? LoadLittle<std::uint64_t>(bytes_ + at_ - kLengthBytes) : 0;
    }
    std::uint64_t Varint() {
        if (ok_ && at_ < end_ && bytes_[at_] < 0x80) return bytes_[at_++];
        std::uint64_t number = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            const std::uint8_t byte = Byte();
            number |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
            if (byte < 0x80) return number;
        }
        ok_ = false;
        return 0;
    }
    bool Take(std::uint64_t count) {
        if (!ok_ || count > left()) return ok_ = false;
        at_ += static_cast<std::size_t>(count);
        return true;
    }

  private:
    const std::uint8_t* bytes_;
    std::size_t at_;
    std::size_t end_;
    bool ok_ = true;
};

// The size of the value that begins here; the walk is left where its own bytes begin.
std::uint64_t ValueSize(Walk& walk, PropertyType type) {
    switch (type) {
        case PropertyType::kText:
            return walk.Varint();
        case PropertyType::kFalse:
        case PropertyType::kTrue:
            return 0;
        case PropertyType::kInt:
            return 4;
        case PropertyType::kByte:
            return 1;
        case PropertyType::kDate:
            return 8;
        case PropertyType::kObject:
        case PropertyType::kSeries:
            return walk.Length();
        case PropertyType::kBlocks: {
            const std::uint64_t size = walk.Length();
            walk.Take(AlignBlocks(walk.at()) - walk.at());
            return size;
        }
    }
    return 0;
}

bool KnownType(std::uint8_t type) {
    return type >= static_cast<std::uint8_t>(PropertyType::kText) &&
           type <= static_cast<std::uint8_t>(PropertyType::kBlocks);
}

[[noreturn]] void RefuseHeader(const std::string& what) { throw DamagedState("header: " + what); }

}  // namespace

PropertyBagReader::PropertyBagReader(std::span<const std::uint8_t> bytes)
    : PropertyBagReader(bytes, BagSeal::kChecksum) {}

PropertyBagReader::PropertyBagReader(std::shared_ptr<ByteBuffer> bytes, BagSeal seal)
    : PropertyBagReader(std::span<const std::uint8_t>(*bytes), seal) {
    owner_ = std::move(bytes);
}

PropertyBagReader::PropertyBagReader(std::span<const std::uint8_t> bytes, BagSeal seal)
    : seal_(seal), bytes_(bytes) {
    CheckHeader();
    const auto key_table = LoadLittle<std::uint64_t>(bytes.data() + kKeyTableAt);
    if (key_table < kItemsAt || key_table > bytes.size()) {
        RefuseHeader("the key table is not where it is said to be");
    }
    ReadKeyTable(static_cast<std::size_t>(key_table));
    frames_.resize(kMaxPropertyDepth + 1);
    frames_[0] = {kItemsAt, kItemsAt, static_cast<std::size_t>(key_table), {}, 0};
}

void PropertyBagReader::CheckHeader() const {
    const std::uint8_t* header = bytes_.data();
    if (bytes_.size() < kVersionAt + 4 || std::memcmp(header, kMagic, sizeof kMagic) != 0) {
        RefuseHeader("this is not a property bag");
    }
    const auto version = LoadLittle<std::uint32_t>(header + kVersionAt);
    if (version > kPropertyBagVersion) {
        throw DamagedState("header: written in version " + std::to_string(version) +
                               " of the format, which is newer than version " +
                               std::to_string(kPropertyBagVersion) + ", the newest known here",
                           true);
    }
    if (version != kPropertyBagVersion) RefuseHeader("there is no version 0 of the format");
    if (bytes_.size() < kItemsAt) RefuseHeader("cut off");
    if (LoadLittle<std::uint32_t>(header + kZeroAt) != 0)
        RefuseHeader("a reserved field is in use");
    const auto length = LoadLittle<std::uint64_t>(header + kLengthAt);
    if (length != bytes_.size()) {
        RefuseHeader("says " + std::to_string(length) + " bytes, there are " +
                     std::to_string(bytes_.size()));
    }
    if (seal_ == BagSeal::kChecksum &&
        LoadLittle<std::uint64_t>(header + kChecksumAt) != Checksum(bytes_.subspan(kLengthAt))) {
        RefuseHeader("the checksum does not match the bytes");
    }
}

void PropertyBagReader::ReadKeyTable(std::size_t offset) {
    Walk walk(bytes_.data(), offset, bytes_.size());
    const std::uint64_t count = walk.Varint();
    if (!walk.ok() || count > kMaxPropertyKeys || count > walk.left()) {
        throw DamagedState("key table: an impossible number of keys");
    }
    keys_.reserve(static_cast<std::size_t>(count));
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t size = walk.Varint();
        const auto* name = reinterpret_cast<const char*>(bytes_.data() + walk.at());
        if (!walk.Take(size)) {
            throw DamagedState("key table: key " + std::to_string(i) + " is cut off");
        }
        keys_.emplace_back(name, static_cast<std::size_t>(size));
    }
    if (walk.left() != 0) throw DamagedState("key table: there are bytes behind it");
}

inline PropertyBagReader::Item PropertyBagReader::ItemAt(std::size_t at) const {
    Walk walk(bytes_.data(), at, frames_[depth_].end);
    const std::uint64_t id = walk.Varint();
    const std::uint8_t type = walk.Byte();
    if (!walk.ok() || id >= keys_.size() || !KnownType(type)) RefuseItem(at);
    Item item{keys_[static_cast<std::size_t>(id)], static_cast<PropertyType>(type)};
    const std::uint64_t size = ValueSize(walk, item.type);
    item.value = walk.at();
    item.size = static_cast<std::size_t>(size);
    if (!walk.Take(size)) RefuseItem(at);
    return item;
}

// Says what is wrong with an item that was found to be damaged.
void PropertyBagReader::RefuseItem(std::size_t at) const {
    Walk walk(bytes_.data(), at, frames_[depth_].end);
    const std::uint64_t id = walk.Varint();
    const std::uint8_t type = walk.Byte();
    const std::string offset = "byte " + std::to_string(at);
    if (!walk.ok()) Refuse(offset, "cut off");
    if (id >= keys_.size()) Refuse(offset, "there is no key " + std::to_string(id));
    const std::string_view key = keys_[static_cast<std::size_t>(id)];
    if (!KnownType(type)) Refuse(key, "there is no type " + std::to_string(type));
    Refuse(key, "longer than what holds it");
}

void PropertyBagReader::RefuseType(std::string_view key, PropertyType wanted) const {
    Refuse(key, std::string("holds ") + Describe(found_.type) + " in place of " + Describe(wanted));
}

bool PropertyBagReader::Search(std::string_view key, std::size_t at, std::size_t end) {
    while (at < end) {
        const Item item = ItemAt(at);
        if (SameKey(item.key, key)) {
            frames_[depth_].next = at;
            found_ = item;
            return true;
        }
        at = item.end();
    }
    return false;
}

bool PropertyBagReader::Find(std::string_view key) {
    const Frame& frame = frames_[depth_];
    return Search(key, frame.next, frame.end) || Search(key, frame.begin, frame.next);
}

bool PropertyBagReader::Find(std::string_view key, PropertyType type) {
    if (!Find(key)) return false;
    if (!SameType(found_.type, type)) {
        RefuseType(key, type);
    }
    frames_[depth_].next = found_.end();
    return true;
}

bool PropertyBagReader::Has(std::string_view key) { return Find(key); }

std::string_view PropertyBagReader::ReadText(std::string_view key, std::string_view default_text) {
    if (!Find(key, PropertyType::kText)) return default_text;
    return {reinterpret_cast<const char*>(bytes_.data() + found_.value), found_.size};
}

bool PropertyBagReader::ReadBool(std::string_view key, bool default_value) {
    if (!Find(key, PropertyType::kTrue)) return default_value;
    return found_.type == PropertyType::kTrue;
}

std::int32_t PropertyBagReader::ReadInt(std::string_view key, std::int32_t default_value) {
    if (!Find(key, PropertyType::kInt)) return default_value;
    return static_cast<std::int32_t>(LoadLittle<std::uint32_t>(bytes_.data() + found_.value));
}

std::uint8_t PropertyBagReader::ReadByte(std::string_view key, std::uint8_t default_value) {
    return Find(key, PropertyType::kByte) ? bytes_[found_.value] : default_value;
}

Date PropertyBagReader::ReadDate(std::string_view key, Date default_value) {
    if (!Find(key, PropertyType::kDate)) return default_value;
    return {static_cast<std::int64_t>(LoadLittle<std::uint64_t>(bytes_.data() + found_.value))};
}

std::span<const std::uint8_t> PropertyBagReader::ReadBlocks(std::string_view key) {
    if (!Find(key, PropertyType::kBlocks)) return {};
    return bytes_.subspan(found_.value, found_.size);
}

PropertyBagReader::Blocks PropertyBagReader::TakeBlocks(std::string_view key) {
    const auto blocks = ReadBlocks(key);
    if (owner_) {
        if (blocks.empty()) return {{}, owner_};
        const auto begin = static_cast<std::size_t>(blocks.data() - owner_->data());
        return {owner_->bytes().subspan(begin, blocks.size()), owner_};
    }
    auto copy = std::make_shared<ByteBuffer>(blocks.size());
    if (!blocks.empty()) std::memcpy(copy->data(), blocks.data(), blocks.size());
    return {copy->bytes(), copy};
}

void PropertyBagReader::Enter(std::string_view key, std::size_t number, std::size_t begin,
                              std::size_t end) {
    if (depth_ == kMaxPropertyDepth) Refuse(key, "nested too deep");
    frames_[++depth_] = {begin, begin, end, key, number};
}

void PropertyBagReader::EnterObject(std::string_view key) {
    Enter(key, 0, found_.value, found_.end());
}

std::size_t PropertyBagReader::EnterSeries(std::string_view prefix) {
    Walk walk(bytes_.data(), found_.value, found_.end());
    const std::uint64_t count = walk.Varint();
    if (!walk.ok() || count > walk.left() / kLengthBytes) {
        Refuse(prefix, "an impossible number of objects");
    }
    Enter(prefix, 0, walk.at(), found_.end());
    return static_cast<std::size_t>(count);
}

void PropertyBagReader::EnterNumbered(std::size_t i) {
    Frame& series = frames_[depth_];
    Walk walk(bytes_.data(), series.next, series.end);
    const std::uint64_t size = walk.Length();
    const std::size_t begin = walk.at();
    if (!walk.Take(size)) Refuse({}, "object " + std::to_string(i) + " is longer than its series");
    series.next = walk.at();
    Enter({}, i, begin, walk.at());
}

void PropertyBagReader::CheckSeriesEnd() const {
    const Frame& series = frames_[depth_];
    if (series.next != series.end) Refuse({}, "there are bytes behind its last object");
}

void PropertyBagReader::Refuse(std::string_view key, std::string_view what) const {
    std::string place;
    const auto step = [&](std::string_view name) {
        if (!place.empty() && !name.empty()) place += '/';
        place += name;
    };
    for (std::size_t i = 1; i <= depth_; ++i) {
        if (frames_[i].number != 0) {
            place += std::to_string(frames_[i].number);
        } else {
            step(frames_[i].key);
        }
    }
    step(key);
    throw DamagedState((place + ": ").append(what));
}

}  // namespace tavolin
