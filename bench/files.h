// Files as a program writes and reads them without a library.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace tavolin::bench {

// Into a fresh file, which then takes the place of an old one. Failures end the program.
void WriteAndSync(const std::string& path, std::span<const char> bytes);
void ReadInto(const std::string& path, std::span<char> bytes);
std::size_t FileSize(const std::string& path);

}  // namespace tavolin::bench
