// Files as a program writes and reads them without a library.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace tavolin::bench {

// Failures end the program.

void Write(const std::string& path, std::span<const char> bytes);
// Into a fresh file, which then takes the place of an old one.
void WriteAndSync(const std::string& path, std::span<const char> bytes);
void ReadInto(const std::string& path, std::span<char> bytes);
// Lets the disk finish what was written before.
void SyncDisk(const std::string& folder);
std::size_t FileSize(const std::string& path);

}  // namespace tavolin::bench
