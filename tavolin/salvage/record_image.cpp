#include "tavolin/salvage/record_image.h"

#include <algorithm>
#include <cstring>

#include "tavolin/base/text.h"
#include "tavolin/persist/little_endian.h"

namespace tavolin {
namespace {

constexpr std::size_t kImageUnit = 8;
constexpr std::size_t kHeader = 20;
constexpr std::uint8_t kImageWidthMask = 3;
constexpr std::uint8_t kImageNotAscii = 4;

std::size_t Units(std::size_t bytes) { return (bytes + kImageUnit - 1) / kImageUnit; }

std::size_t OffsetWidth(std::size_t text) { return text <= 0xFF ? 0 : text <= 0xFFFF ? 1 : 2; }

std::uint32_t End(const std::uint8_t* ends, std::size_t width, int field) {
    const auto at = static_cast<std::size_t>(field);
    if (width == 0) return ends[at];
    return width == 1 ? LoadLittle<std::uint16_t>(ends + 2 * at)
                      : LoadLittle<std::uint32_t>(ends + 4 * at);
}

// Where the text ends, from the image's start; nothing when the ends make no sense.
std::optional<std::size_t> ReadFields(std::span<const std::uint8_t> bytes, std::size_t ends_at,
                                      std::size_t width, RecordImage& image) {
    const std::size_t text_at = ends_at + (std::size_t{kFieldCount} << width);
    if (width > 2 || text_at > bytes.size()) return {};
    const auto* text = reinterpret_cast<const char*>(bytes.data() + text_at);
    std::uint32_t begin = 0;
    for (int i = 0; i < kFieldCount; ++i) {
        const std::uint32_t end = End(bytes.data() + ends_at, width, i);
        if (end < begin || end > bytes.size() - text_at) return {};
        image.fields[i] = {text + begin, end - begin};
        begin = end;
    }
    if (OffsetWidth(begin) != width) return {};
    return text_at + begin;
}

}  // namespace

std::string RecordImage::Key() const {
    std::string key;
    for (int shift = 0; shift < 16; shift += 4) {
        const int field = (parts >> shift) & 15;
        if (field < kFieldCount) key += fields[field];
    }
    return key;
}

std::optional<RecordImage> RecordImage::Read(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 4 * kImageUnit) return {};
    const std::uint8_t* at = bytes.data();
    RecordImage image;
    int doubts = 0;
    const auto expect = [&](bool right, const char* what) {
        if (right) return;
        image.doubt = what;
        ++doubts;
    };
    const auto units = LoadLittle<std::uint16_t>(at + 14);
    const std::uint8_t flags = at[18];
    const std::size_t width = flags & kImageWidthMask;
    const std::size_t prefix = units == 0 ? 4 : 0;
    auto end = ReadFields(bytes, kHeader + prefix, width, image);
    if (!end && prefix != 0) end = ReadFields(bytes, kHeader, width, image);
    if (!end) return {};
    const std::size_t size = Units(*end) * kImageUnit;
    if (size > bytes.size()) return {};
    image.size = std::max(size, 4 * kImageUnit);
    const std::size_t stated = units == 0 ? LoadLittle<std::uint32_t>(at + kHeader) : units;
    image.stated_size = stated * kImageUnit;
    expect(image.stated_size == image.size, "its size is damaged");
    expect(LoadLittle<std::uint32_t>(at) == 0 && at[19] == 0, "a zero in its header is damaged");
    expect(LoadLittle<std::uint16_t>(at + 12) == 1, "the mark in its header is damaged");
    image.number_key = static_cast<std::int32_t>(LoadLittle<std::uint32_t>(at + 8));
    image.parts = LoadLittle<std::uint16_t>(at + 16);
    bool parts_known = true;
    for (int shift = 0; shift < 16; shift += 4) {
        const int field = (image.parts >> shift) & 15;
        parts_known = parts_known && (field < kFieldCount || field == 15);
    }
    expect(parts_known, "which fields are its key is damaged");
    bool ascii = true;
    for (const std::string_view field : image.fields) ascii = ascii && IsAscii(field);
    expect((flags & ~kImageWidthMask) == (ascii ? 0 : kImageNotAscii),
           "a character or a flag in it is damaged");
    expect(std::all_of(at + *end, at + image.size, [](std::uint8_t byte) { return byte == 0; }),
           "the zeros behind it are damaged");
    image.key_in_doubt = LoadLittle<std::uint32_t>(at + 4) != HashFold(image.Key());
    if (doubts + (image.key_in_doubt ? 1 : 0) > 2 || doubts > 1) return {};
    return image;
}

void RecordImage::AppendTo(std::vector<std::uint8_t>& images) const {
    std::size_t text = 0;
    bool ascii = true;
    for (const std::string_view field : fields) {
        text += field.size();
        ascii = ascii && IsAscii(field);
    }
    const std::size_t width = OffsetWidth(text);
    const std::size_t payload = (std::size_t{kFieldCount} << width) + text;
    std::size_t units = Units(kHeader + payload);
    const std::size_t prefix = units > 0xFFFF ? 4 : 0;
    units = std::max<std::size_t>(Units(kHeader + prefix + payload), 4);
    const std::size_t start = images.size();
    images.resize(start + units * kImageUnit);
    std::uint8_t* at = images.data() + start;
    StoreLittle(at + 4, HashFold(Key()));
    StoreLittle(at + 8, static_cast<std::uint32_t>(number_key));
    StoreLittle(at + 12, std::uint16_t{1});
    StoreLittle(at + 14, static_cast<std::uint16_t>(prefix != 0 ? 0 : units));
    StoreLittle(at + 16, parts);
    at[18] = static_cast<std::uint8_t>(width | (ascii ? 0 : kImageNotAscii));
    if (prefix != 0) StoreLittle(at + kHeader, static_cast<std::uint32_t>(units));
    std::uint8_t* ends = at + kHeader + prefix;
    std::uint8_t* to = ends + (std::size_t{kFieldCount} << width);
    std::size_t end = 0;
    for (std::size_t i = 0; i < kFieldCount; ++i) {
        const std::string_view field = fields[i];
        if (!field.empty()) std::memcpy(to + end, field.data(), field.size());
        end += field.size();
        if (width == 0) ends[i] = static_cast<std::uint8_t>(end);
        if (width == 1) StoreLittle(ends + 2 * i, static_cast<std::uint16_t>(end));
        if (width == 2) StoreLittle(ends + 4 * i, static_cast<std::uint32_t>(end));
    }
}

}  // namespace tavolin
