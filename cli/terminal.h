// The terminal, if there is one: what the streams are, questions, passwords, Ctrl-C.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace tavolin::cli {

bool InputIsTerminal();
bool OutputIsTerminal();
bool ErrorIsTerminal();

// While one lives, the standard streams carry UTF-8, and to and from files every byte as it is,
// whatever the machine makes of them otherwise.
class Utf8Streams {
  public:
    Utf8Streams();
    ~Utf8Streams();
    Utf8Streams(const Utf8Streams&) = delete;
    Utf8Streams& operator=(const Utf8Streams&) = delete;

  private:
    struct Redirected {
        std::ostream* stream;
        std::streambuf* previous;
        std::unique_ptr<std::streambuf> own;
    };
    std::vector<Redirected> redirected_;
};

// The columns of the terminal that output goes to; 0 when it goes elsewhere.
std::size_t TerminalWidth();
// Its lines, likewise.
std::size_t TerminalHeight();

// The next line without its line break; nothing at the end of input or after Ctrl-C. Input must be
// a terminal. Without echo, what was typed before the prompt shows is dropped.
enum class Echo { kOn, kOff };
std::optional<std::string> ReadTypedLine(const std::string& prompt, Echo echo = Echo::kOn);

// A line that the user types without seeing it. Raises Cancelled after Ctrl-C, and CommandFailure
// at the end of input.
std::string ReadSecret(const std::string& prompt);

// Asks until the user answers yes or no, or neither. Input must be a terminal.
enum class Answer { kYes, kNo, kInterrupted, kEndOfInput };
Answer Ask(const std::string& question);

#ifndef _WIN32
// While one lives, writing to a pipe that nobody reads fails, and does not end the program.
class QuietPipes {
  public:
    QuietPipes();
    ~QuietPipes();
    QuietPipes(const QuietPipes&) = delete;
    QuietPipes& operator=(const QuietPipes&) = delete;

  private:
    void (*previous_)(int);
};
#endif

// While one lives, Ctrl-C does not end the program but is remembered, and ends a wait for input.
class InterruptCatcher {
  public:
    // kOnce: the program has nothing to lose, and is ended by the first one with status 130.
    enum class At { kLeisure, kOnce };
    explicit InterruptCatcher(At at = At::kLeisure);
    ~InterruptCatcher();
    InterruptCatcher(const InterruptCatcher&) = delete;
    InterruptCatcher& operator=(const InterruptCatcher&) = delete;

  private:
    using Handler = void (*)(int);
    Handler previous_ = nullptr;
    bool was_at_once_ = false;
};
bool Interrupted();
void ForgetInterrupt();

// While one lives, a command runs, and a second Ctrl-C that was not asked for meanwhile ends the
// program at once.
class BusyScope {
  public:
    BusyScope();
    ~BusyScope();
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;
};

// For the machine's part of the above: remembers a Ctrl-C, and says whether the program ends.
bool RememberInterrupt();
bool EndsAtOnce(bool ends);  // returns what was set before

}  // namespace tavolin::cli
