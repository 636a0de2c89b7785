#include <cassert>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tavolin/persist/checksum.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag.h"
#include "tavolin/persist/property_bag_layout.h"

namespace tavolin {

using namespace bag_layout;

namespace {

constexpr std::size_t kFirstRoom = 4096;

std::size_t VarintSize(std::uint64_t number) {
    std::size_t size = 1;
    while (number >= 0x80) {
        number >>= 7;
        ++size;
    }
    return size;
}

std::uint8_t* StoreVarint(std::uint8_t* to, std::uint64_t number) {
    while (number >= 0x80) {
        *to++ = static_cast<std::uint8_t>(number | 0x80);
        number >>= 7;
    }
    *to++ = static_cast<std::uint8_t>(number);
    return to;
}

}  // namespace

inline std::uint8_t* PropertyBagWriter::Grow(std::size_t count) {
    const std::size_t begin = out_.size();
    out_.Resize(begin + count);
    return out_.data() + begin;
}

PropertyBagWriter::PropertyBagWriter(BagSeal seal) : seal_(seal) {
    out_.Reserve(kFirstRoom);
    std::memset(Grow(kItemsAt), 0, kItemsAt);
}

void PropertyBagWriter::PutVarint(std::uint64_t number) {
    StoreVarint(Grow(VarintSize(number)), number);
}

std::uint32_t PropertyBagWriter::FindOrAddKey(std::string_view key) {
    const auto known = ids_.find(key);
    if (known != ids_.end()) return known->second;
    if (keys_.size() == kMaxPropertyKeys)
        throw std::length_error("too many keys in a property bag");
    const auto id = static_cast<std::uint32_t>(keys_.size());
    const auto added = ids_.emplace(key, id).first;
    keys_.push_back({added->first, id});
    return id;
}

std::uint32_t PropertyBagWriter::KeyId(std::string_view key) {
    if (!keys_.empty()) {
        const std::uint32_t expected = keys_[last_key_].next;
        if (SameKey(keys_[expected].name, key)) return last_key_ = expected;
    }
    const std::uint32_t id = FindOrAddKey(key);
    keys_[last_key_].next = id;
    return last_key_ = id;
}

std::uint8_t* PropertyBagWriter::BeginItem(std::string_view key, PropertyType type,
                                           std::size_t count) {
    const std::uint32_t id = KeyId(key);
    std::uint8_t* to = StoreVarint(Grow(VarintSize(id) + 1 + count), id);
    *to++ = static_cast<std::uint8_t>(type);
    return to;
}

void PropertyBagWriter::Write(std::string_view key, std::string_view text) {
    std::uint8_t* to = BeginItem(key, PropertyType::kText, VarintSize(text.size()) + text.size());
    to = StoreVarint(to, text.size());
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
}

void PropertyBagWriter::Write(std::string_view key, bool value) {
    BeginItem(key, value ? PropertyType::kTrue : PropertyType::kFalse, 0);
}

void PropertyBagWriter::Write(std::string_view key, std::int32_t value) {
    StoreLittle(BeginItem(key, PropertyType::kInt, 4), static_cast<std::uint32_t>(value));
}

void PropertyBagWriter::WriteByte(std::string_view key, std::uint8_t value) {
    *BeginItem(key, PropertyType::kByte, 1) = value;
}

void PropertyBagWriter::Write(std::string_view key, Date value) {
    StoreLittle(BeginItem(key, PropertyType::kDate, 8), static_cast<std::uint64_t>(value.seconds));
}

std::size_t PropertyBagWriter::BeginLength() {
    if (depth_ == kMaxPropertyDepth) throw std::length_error("a property bag nested too deep");
    ++depth_;
    Grow(kLengthBytes);
    return size();
}

std::size_t PropertyBagWriter::BeginSized(std::string_view key, PropertyType type) {
    BeginItem(key, type, 0);
    return BeginLength();
}

void PropertyBagWriter::EndSized(std::size_t start) {
    --depth_;
    StoreLittle<std::uint64_t>(out_.data() + start - kLengthBytes, size() - start);
}

void PropertyBagWriter::BeginBlocks(std::string_view key) {
    BeginItem(key, PropertyType::kBlocks, kLengthBytes);
    blocks_start_ = size();
    const std::size_t gap = AlignBlocks(size()) - size();
    std::memset(Grow(gap), 0, gap);
}

void PropertyBagWriter::Append(const void* bytes, std::size_t count) {
    if (count != 0) std::memcpy(Grow(count), bytes, count);
}

std::uint8_t* PropertyBagWriter::Extend(std::size_t count) { return Grow(count); }

void PropertyBagWriter::EndBlocks() {
    StoreLittle<std::uint64_t>(out_.data() + blocks_start_ - kLengthBytes,
                               size() - AlignBlocks(blocks_start_));
}

void PropertyBagWriter::WriteBlocks(std::string_view key, std::span<const std::uint8_t> bytes) {
    BeginBlocks(key);
    Append(bytes.data(), bytes.size());
    EndBlocks();
}

ByteBuffer PropertyBagWriter::Finish() && {
    assert(depth_ == 0);
    const std::size_t key_table = size();
    PutVarint(keys_.size());
    for (const Key& key : keys_) {
        PutVarint(key.name.size());
        Append(key.name.data(), key.name.size());
    }
    std::uint8_t* header = out_.data();
    std::memcpy(header, kMagic, sizeof kMagic);
    StoreLittle(header + kVersionAt, kPropertyBagVersion);
    StoreLittle<std::uint64_t>(header + kLengthAt, size());
    StoreLittle<std::uint64_t>(header + kKeyTableAt, key_table);
    if (seal_ == BagSeal::kChecksum) {
        StoreLittle(header + kChecksumAt, Checksum(out_.bytes().subspan(kLengthAt)));
    }
    return std::move(out_);
}

}  // namespace tavolin
