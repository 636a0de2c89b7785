// Runs a command on a host.
#pragma once

#include <span>
#include <string>

#include "cli/host.h"

namespace tavolin::cli {

// Finds the command that the words begin with and runs it with the rest of them. Whatever goes
// wrong raises UsageError, CommandFailure, Cancelled or what the engine raises.
void RunWords(Host& host, std::span<const std::string> words);

// Runs the command of the host's options, saves what it changed, and returns the exit status.
int RunOneCommand(Host& host);

[[noreturn]] void RaiseNoCommand(const std::string& name);

}  // namespace tavolin::cli
