// For programs that put an exported Access database in another one's place.
#pragma once

#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin::mdb {

// Raises 58 for a file that this library did not write, or that somebody changed since, and the
// file errors of FileSystem. A file that is missing may be written.
TAVOLIN_API void AskToReplace(std::string_view path);

}  // namespace tavolin::mdb
