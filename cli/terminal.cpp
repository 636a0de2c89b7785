#include "cli/terminal.h"

#include <csignal>
#include <cstdio>
#include <iostream>

#include "cli/display_text.h"
#include "cli/paths.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <pwd.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace tavolin::cli {
namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void RememberInterrupt(int signal) {
    interrupted = 1;
#ifdef _WIN32
    std::signal(signal, RememberInterrupt);
#else
    (void)signal;
#endif
}

#ifdef _WIN32
class EchoOff {
  public:
    EchoOff() : input_(GetStdHandle(STD_INPUT_HANDLE)) {
        GetConsoleMode(input_, &mode_);
        SetConsoleMode(input_, mode_ & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    }
    ~EchoOff() { SetConsoleMode(input_, mode_); }

  private:
    HANDLE input_;
    DWORD mode_ = 0;
};
#else
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
#endif

// Ctrl-C ends the reading, and so does the end of input; the stream must serve the next question
// all the same.
std::optional<std::string> ReadAnswer() {
    ForgetInterrupt();
    std::string line;
    if (std::getline(std::cin, line)) return line;
    std::cin.clear();
    std::clearerr(stdin);
    return std::nullopt;
}

}  // namespace

#ifdef _WIN32
bool InputIsTerminal() { return _isatty(0) != 0; }
bool OutputIsTerminal() { return _isatty(1) != 0; }
bool ErrorIsTerminal() { return _isatty(2) != 0; }

std::size_t TerminalWidth() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 0;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

InterruptCatcher::InterruptCatcher() : previous_(std::signal(SIGINT, RememberInterrupt)) {}
InterruptCatcher::~InterruptCatcher() { std::signal(SIGINT, previous_); }

std::string SystemUserName() { return Environment("USERNAME"); }
#else
bool InputIsTerminal() { return isatty(STDIN_FILENO) != 0; }
bool OutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }
bool ErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

std::size_t TerminalWidth() {
    winsize size{};
    if (!OutputIsTerminal() || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
    return size.ws_col;
}

// Without SA_RESTART: a waiting read must end.
static void Handle(void (*handler)(int), struct sigaction* previous) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, previous);
}

InterruptCatcher::InterruptCatcher() {
    struct sigaction previous {};
    Handle(RememberInterrupt, &previous);
    previous_ = previous.sa_handler;
}

InterruptCatcher::~InterruptCatcher() { Handle(previous_, nullptr); }

std::string SystemUserName() {
    const passwd* const entry = getpwuid(geteuid());
    return entry != nullptr ? std::string(entry->pw_name) : Environment("USER");
}
#endif

bool Interrupted() { return interrupted != 0; }
void ForgetInterrupt() { interrupted = 0; }

std::optional<std::string> ReadSecret(const std::string& prompt) {
    std::cerr << prompt << std::flush;
    std::optional<std::string> answer;
    {
        const InterruptCatcher catcher;  // the echo comes back before the program ends
        const EchoOff silence;
        answer = ReadAnswer();
    }
    std::cerr << '\n';
    return answer;
}

Answer Ask(const std::string& question) {
    while (true) {
        std::cerr << Printable(question) << " [yes/no] " << std::flush;
        const std::optional<std::string> answer = ReadAnswer();
        if (!answer) {
            std::cerr << '\n';
            return Interrupted() ? Answer::kInterrupted : Answer::kEndOfInput;
        }
        if (*answer == "no" || *answer == "n") return Answer::kNo;
        if (*answer == "yes" || *answer == "y") return Answer::kYes;
    }
}

}  // namespace tavolin::cli
