// The terminal, if there is one: what the streams are, questions, passwords, Ctrl-C.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tavolin::cli {

bool InputIsTerminal();
bool OutputIsTerminal();
bool ErrorIsTerminal();

// The columns of the terminal that output goes to; 0 when it goes elsewhere.
std::size_t TerminalWidth();

// A line that the user types without seeing it; nothing at the end of input or after Ctrl-C. Input
// must be a terminal.
std::optional<std::string> ReadSecret(const std::string& prompt);

// Asks until the user answers yes or no, or neither. Input must be a terminal.
enum class Answer { kYes, kNo, kInterrupted, kEndOfInput };
Answer Ask(const std::string& question);

// While one lives, Ctrl-C does not end the program but is remembered, and ends a wait for input.
class InterruptCatcher {
  public:
    InterruptCatcher();
    ~InterruptCatcher();
    InterruptCatcher(const InterruptCatcher&) = delete;
    InterruptCatcher& operator=(const InterruptCatcher&) = delete;

  private:
    using Handler = void (*)(int);
    Handler previous_;
};
bool Interrupted();
void ForgetInterrupt();

// The name that the system knows the user by; empty when it knows none.
std::string SystemUserName();

}  // namespace tavolin::cli
