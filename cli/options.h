// The program's own command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/host.h"

namespace tavolin::cli {

// The options that the words behind the program's name make, or nothing when everything that was
// asked for (help, the version) has been printed. What cannot be understood raises UsageError.
std::optional<HostOptions> ParseOptions(std::vector<std::string> words);

}  // namespace tavolin::cli
