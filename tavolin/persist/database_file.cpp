#include "tavolin/persist/database_file.h"

#include <algorithm>
#include <array>
#include <string>

#include "tavolin/errors/error.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag_layout.h"

namespace tavolin {
namespace {

// The descriptor: an array (0x2000) of bytes (0x11) in one dimension, its element count and its
// lower bound. Part of the file format: do not change.
constexpr std::uint16_t kByteArray = 0x2011;
constexpr std::uint16_t kDimensions = 1;
constexpr std::size_t kDescriptorSize = 12;
constexpr std::uint64_t kTooLarge = std::uint64_t{1} << 31;

[[noreturn]] void Refuse(std::string_view path, const std::string& what) {
    throw DamagedState(std::string(path) + ": " + what);
}

// The number of bytes in the array.
std::uint32_t ReadDescriptor(File& file, std::string_view path) {
    const auto descriptor = ReadBytes(file, 0, kDescriptorSize);
    if (descriptor.size() < kDescriptorSize) Refuse(path, "too short to hold an array");
    const auto type = LoadLittle<std::uint16_t>(descriptor.data());
    if (type != kByteArray) Refuse(path, "holds a value of type " + std::to_string(type));
    const auto dimensions = LoadLittle<std::uint16_t>(descriptor.data() + 2);
    if (dimensions != kDimensions) {
        Refuse(path, "holds an array of " + std::to_string(dimensions) + " dimensions");
    }
    if (LoadLittle<std::uint32_t>(descriptor.data() + 8) != 0) {
        Refuse(path, "holds an array that does not begin at 0");
    }
    return LoadLittle<std::uint32_t>(descriptor.data() + 4);
}

}  // namespace

ByteBuffer ReadDatabaseFile(std::string_view path) {
    const auto file = FileSystem::Current().Open(path, FileMode::kRead);
    const std::uint32_t count = ReadDescriptor(*file, path);
    if (count >= kTooLarge) Refuse(path, "the size of its array is negative");
    // No memory is asked for that the file does not fill.
    const std::uint64_t size = file->Size();
    const std::uint64_t there = size > kDescriptorSize ? size - kDescriptorSize : 0;
    ByteBuffer bytes(static_cast<std::size_t>(std::min<std::uint64_t>(there, count)));
    bytes.Resize(ReadInto(*file, kDescriptorSize, bytes.bytes()));
    if (bytes.size() != count) {
        Refuse(path, "cut off after " + std::to_string(bytes.size()) + " of " +
                         std::to_string(count) + " bytes");
    }
    return bytes;
}

bool IsDatabaseFile(std::string_view path) {
    FileSystem& files = FileSystem::Current();
    if (!files.Exists(path)) return false;
    const auto file = files.Open(path, FileMode::kRead);
    try {
        ReadDescriptor(*file, path);
        return true;
    } catch (const DamagedState&) {
        return false;
    }
}

void WriteDatabaseFile(std::string_view path, std::span<const std::uint8_t> bytes, bool cut_tail,
                       const std::function<void()>& last_look) {
    if (bytes.size() >= kTooLarge) throw Error(kOverflow);
    std::array<std::uint8_t, kDescriptorSize> descriptor{};
    StoreLittle(descriptor.data(), kByteArray);
    StoreLittle(descriptor.data() + 2, kDimensions);
    StoreLittle(descriptor.data() + 4, static_cast<std::uint32_t>(bytes.size()));
    const ByteView chunks[] = {descriptor, bytes};
    std::optional<std::uint64_t> keep_tail_from;
    if (!cut_tail) keep_tail_from = kDescriptorSize + bytes.size();
    FileSystem::Current().Replace(path, chunks, keep_tail_from, last_look);
}

StateMark MarkOf(std::span<const std::uint8_t> state) {
    using namespace bag_layout;
    if (state.size() < kItemsAt || !std::equal(std::begin(kMagic), std::end(kMagic), state.data()))
        return {};
    return {LoadLittle<std::uint64_t>(state.data() + kLengthAt),
            LoadLittle<std::uint64_t>(state.data() + kChecksumAt)};
}

std::optional<StateMark> ReadMark(std::string_view path) {
    FileSystem& files = FileSystem::Current();
    if (!IsThere(files.Kind(path))) return std::nullopt;
    const auto head = files.ReadFile(path, kDescriptorSize + bag_layout::kItemsAt);
    if (head.size() < kDescriptorSize) return StateMark();
    return MarkOf(std::span(head).subspan(kDescriptorSize));
}

}  // namespace tavolin
