#include "cli/terminal.h"

#include <atomic>
#include <iostream>

#include "cli/display_text.h"
#include "cli/failure.h"

namespace tavolin::cli {
namespace {

// Set by a signal's handler, or on a thread of the system's.
std::atomic<bool> interrupted = false;
std::atomic<bool> busy = false;
std::atomic<bool> ends_at_once = false;
static_assert(std::atomic<bool>::is_always_lock_free);

}  // namespace

bool Interrupted() { return interrupted; }
bool RememberInterrupt() {
    const bool again = interrupted.exchange(true);
    return ends_at_once || (again && busy);
}
bool EndsAtOnce(bool ends) { return ends_at_once.exchange(ends); }

BusyScope::BusyScope() {
    ForgetInterrupt();
    busy = true;
}
BusyScope::~BusyScope() { busy = false; }

void ForgetInterrupt() { interrupted = false; }

std::string ReadSecret(const std::string& prompt) {
    const InterruptCatcher catcher;  // the echo comes back before the program ends
    ForgetInterrupt();
    const std::optional<std::string> answer = ReadTypedLine(prompt, Echo::kOff);
    std::cerr << '\n';
    if (answer) return *answer;
    if (Interrupted()) throw Cancelled();
    throw CommandFailure("no password was given");
}

Answer Ask(const std::string& question) {
    while (true) {
        ForgetInterrupt();
        const auto answer = ReadTypedLine(Printable(question) + " [yes/no] ");
        if (!answer) {
            std::cerr << '\n';
            return Interrupted() ? Answer::kInterrupted : Answer::kEndOfInput;
        }
        if (*answer == "no" || *answer == "n") return Answer::kNo;
        if (*answer == "yes" || *answer == "y") return Answer::kYes;
    }
}

}  // namespace tavolin::cli
