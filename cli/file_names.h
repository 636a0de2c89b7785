// Names of files for completion.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavolin::cli {

enum class FilesOf { kAnyKind, kFoldersAlone };

// The files and folders whose path begins with what was typed; of files only those that end with
// `extension`. Folders have a separator at their ends.
std::vector<std::string> FileNames(std::string_view typed, FilesOf kind = FilesOf::kAnyKind,
                                   std::string_view extension = {});

bool EndsWithSeparator(std::string_view path);

}  // namespace tavolin::cli
