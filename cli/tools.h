// What works on a file that may be too damaged to be loaded.
#pragma once

#include <string_view>

#include "cli/host.h"

namespace tavolin::cli {

bool IsTool(std::string_view word);

// Runs the tool that the options name, and returns the exit status. Of `check`: 0 for a whole file,
// 1 for a damaged one, 2 when it cannot be read. Of `salvage`: 0 when nothing is lost, 1 when
// something is, 2 when no new file was written.
int RunTool(const HostOptions& options);

}  // namespace tavolin::cli
