// Runs a command on a host.
#pragma once

#include <chrono>
#include <span>
#include <string>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/host.h"

namespace tavolin::cli {

// Finds the command that the words begin with and runs it with the rest of them. Whatever goes
// wrong raises UsageError, CommandFailure, Cancelled or what the engine raises.
void RunWords(Host& host, std::span<const std::string> words);

// Runs the command of the host's options, saves what it changed, and returns the exit status.
int RunOneCommand(Host& host);

// The words behind a command's name; those that do not fit it raise UsageError with its usage.
Arguments ArgumentsOf(const Command& command, std::span<const std::string> words);

// Shows on the error stream, when it ends, how long it has lived, if it is wanted.
class Stopwatch {
  public:
    explicit Stopwatch(bool wanted) : wanted_(wanted) {}
    ~Stopwatch();
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

  private:
    using Clock = std::chrono::steady_clock;

    bool wanted_;
    Clock::time_point start_ = Clock::now();
};

[[noreturn]] void RaiseNoCommand(const std::string& name);

}  // namespace tavolin::cli
