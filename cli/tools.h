// What works on a file that may be too damaged to be loaded.
#pragma once

#include <span>
#include <string_view>

#include "cli/command.h"
#include "cli/host.h"

namespace tavolin::cli {

// What is said about them, as about commands; RunTool runs them.
std::span<const Command> Tools();
const Command* ToolNamed(std::string_view word);  // nothing for another word
inline bool IsTool(std::string_view word) { return ToolNamed(word) != nullptr; }

// Runs the tool that the options name, and returns the exit status, which its help tells.
int RunTool(const HostOptions& options);

}  // namespace tavolin::cli
