// The file that holds one byte array: a database, or the owner registry. A descriptor of twelve
// bytes (the type of the value, its dimensions and bounds), then the bytes of the array. The file
// may be longer than its array: what is behind the array is the rest of an older, longer one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "tavolin/base/byte_buffer.h"
#include "tavolin/base/export.h"
#include "tavolin/persist/state_mark.h"

namespace tavolin {

// The array in the file. Raises DamagedState for a file that does not hold one whole array of
// bytes, and the file errors of FileSystem.
TAVOLIN_API ByteBuffer ReadDatabaseFile(std::string_view path);

// Whether the file is there and begins as one that holds an array. The file errors of FileSystem.
TAVOLIN_API bool IsDatabaseFile(std::string_view path);

// Makes the file hold the array, by FileSystem::Replace: after a failure the old file is as it was.
// The bytes of a longer old file stay behind the array unless `cut_tail` says to drop them. An
// array of 2^31 bytes or more is Error(kOverflow), raised before any file is touched.
// `last_look` is that of FileSystem::Replace.
TAVOLIN_API void WriteDatabaseFile(std::string_view path, std::span<const std::uint8_t> bytes,
                                   bool cut_tail = false,
                                   const std::function<void()>& last_look = {});

TAVOLIN_API StateMark MarkOf(std::span<const std::uint8_t> state);
// That of a file, from its first bytes. Nothing when the file or its folder is missing; a file that
// does not begin as a property bag has a mark that no property bag has. The file errors of
// FileSystem.
TAVOLIN_API std::optional<StateMark> ReadMark(std::string_view path);

}  // namespace tavolin
