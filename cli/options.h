// The program's own command line.
#pragma once

#include <optional>

#include "cli/host.h"

namespace tavolin::cli {

// The options, or nothing when everything that was asked for (help, the version) has been printed.
// What cannot be understood raises UsageError.
std::optional<HostOptions> ParseOptions(int argc, const char* const* argv);

}  // namespace tavolin::cli
