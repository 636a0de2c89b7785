#ifndef _WIN32

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

#include "cli/terminal.h"

namespace tavolin::cli {
namespace {

class EchoOff {
  public:
    EchoOff() {
        tcgetattr(STDIN_FILENO, &settings_);
        termios silent = settings_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~EchoOff() { tcsetattr(STDIN_FILENO, TCSAFLUSH, &settings_); }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

  private:
    termios settings_{};
};

// Without SA_RESTART: a waiting read must end.
void Handle(void (*handler)(int), struct sigaction* previous) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, previous);
}

}  // namespace

bool InputIsTerminal() { return isatty(STDIN_FILENO) != 0; }
bool OutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }
bool ErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

Utf8Streams::Utf8Streams() = default;
Utf8Streams::~Utf8Streams() = default;

static winsize TerminalSize() {
    winsize size{};
    if (!OutputIsTerminal() || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return {};
    return size;
}

std::size_t TerminalWidth() { return TerminalSize().ws_col; }
std::size_t TerminalHeight() { return TerminalSize().ws_row; }

QuietPipes::QuietPipes() : previous_(std::signal(SIGPIPE, SIG_IGN)) {}
QuietPipes::~QuietPipes() { std::signal(SIGPIPE, previous_); }

std::optional<std::string> ReadTypedLine(const std::string& prompt, Echo echo) {
    std::optional<EchoOff> silence;
    if (echo == Echo::kOff) silence.emplace();
    std::cerr << prompt << std::flush;
    std::string line;
    if (std::getline(std::cin, line)) return line;
    // The stream must serve the next question all the same.
    std::cin.clear();
    std::clearerr(stdin);
    return std::nullopt;
}

extern "C" {
static void HandleInterrupt(int) {
    if (RememberInterrupt()) _exit(130);
}
}

InterruptCatcher::InterruptCatcher(At at) : was_at_once_(EndsAtOnce(at == At::kOnce)) {
    struct sigaction previous {};
    Handle(HandleInterrupt, &previous);
    // Whoever runs it beside others wants it to go on.
    if (previous.sa_handler == SIG_IGN) Handle(SIG_IGN, nullptr);
    previous_ = previous.sa_handler;
}

InterruptCatcher::~InterruptCatcher() {
    Handle(previous_, nullptr);
    EndsAtOnce(was_at_once_);
}

}  // namespace tavolin::cli

#endif
