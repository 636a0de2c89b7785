// Text files as hosts of the platform expect them: code page 1252 as long as every character fits
// it, UTF-8 with a byte-order mark from the first that does not, so that nothing is lost.
#pragma once

#include <string_view>

namespace tavolin {

// Creates the file or replaces what is in it.
void WriteTextFile(std::string_view path, std::string_view text);

// Adds to the end of the file, which is created when it is missing. A file in code page 1252 that
// gets its first character from outside is rewritten whole, in one step. Raises the file errors of
// FileSystem.
void AppendTextFile(std::string_view path, std::string_view text);

}  // namespace tavolin
