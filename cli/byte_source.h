// Where readers take their bytes from, and how they read them into a buffer of theirs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

// Puts up to `room` bytes into `into` and returns how many; 0 at the end.
using ByteSource = std::function<std::size_t(char* into, std::size_t room)>;

// The bytes of a file. A file that cannot be opened, or read later, raises CommandFailure.
ByteSource FileSource(const std::string& path);
// The bytes of a text, which must outlive the source; at most `step` at a time.
ByteSource TextSource(std::string_view text, std::size_t step = SIZE_MAX);

// Moves what is between `begin` and `end` to the front of the buffer and reads more behind it,
// which makes the buffer larger when it is full. Returns false at the end of the source.
bool ReadMore(const ByteSource& source, std::vector<char>& buffer, std::size_t& begin,
              std::size_t& end);

}  // namespace tavolin::cli
