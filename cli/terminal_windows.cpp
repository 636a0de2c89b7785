#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX  // the compiler's library may have defined it
#define NOMINMAX
#endif
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <utility>

#include "cli/terminal.h"
#include "tavolin/base/utf16.h"

namespace tavolin::cli {
namespace {

// Whether the stream is a console; the system's empty device, which counts as a terminal for the
// C library, is not one.
bool IsConsole(DWORD stream) {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

// A console that edits the line, keeps its history and ends the program at Ctrl-C unless somebody
// catches it: as a program finds it, without what another program may have left behind.
class LineMode {
  public:
    LineMode(HANDLE input, Echo echo) : input_(input) {
        ::GetConsoleMode(input_, &previous_);
        DWORD mode = previous_ | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT | ENABLE_ECHO_INPUT;
        if (echo == Echo::kOff) mode &= ~static_cast<DWORD>(ENABLE_ECHO_INPUT);
        ::SetConsoleMode(input_, mode);
    }
    ~LineMode() { ::SetConsoleMode(input_, previous_); }
    LineMode(const LineMode&) = delete;
    LineMode& operator=(const LineMode&) = delete;

  private:
    HANDLE input_;
    DWORD previous_ = 0;
};

// The handler runs on a thread of its own.
BOOL WINAPI HandleInterrupt(DWORD event) {
    if (event != CTRL_C_EVENT) return FALSE;
    if (RememberInterrupt()) ::ExitProcess(130);
    return TRUE;
}

constexpr wchar_t kEndOfInput = 0x1A;  // Ctrl-Z

// A stream to the console. What the C library writes there goes byte by byte, which tears
// characters apart.
class ConsoleBuffer final : public std::streambuf {
  public:
    explicit ConsoleBuffer(DWORD stream) : console_(::GetStdHandle(stream)) {}
    ~ConsoleBuffer() override { WriteOut(); }

  protected:
    int_type overflow(int_type c) override {
        if (c != traits_type::eof()) text_ += static_cast<char>(c);
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        text_.append(text, static_cast<std::size_t>(count));
        const bool whole_lines = text_.size() > kPlenty && text_.ends_with('\n');
        return whole_lines && !WriteOut() ? 0 : count;
    }
    int sync() override { return WriteOut() ? 0 : -1; }

  private:
    static constexpr std::size_t kPlenty = 4096;
    static constexpr std::size_t kMaxRequest = 8192;

    bool WriteOut() {
        const std::u16string units = ToUtf16(text_);
        text_.clear();
        for (std::size_t at = 0; at < units.size();) {
            const auto left = static_cast<DWORD>(std::min(units.size() - at, kMaxRequest));
            DWORD count = 0;
            if (!::WriteConsoleW(console_, units.data() + at, left, &count, nullptr)) return false;
            at += count;
        }
        return true;
    }

    HANDLE console_;
    std::string text_;
};

}  // namespace

bool InputIsTerminal() { return IsConsole(STD_INPUT_HANDLE); }
bool OutputIsTerminal() { return IsConsole(STD_OUTPUT_HANDLE); }
bool ErrorIsTerminal() { return IsConsole(STD_ERROR_HANDLE); }

// Elsewhere than on a console no line break is changed.
Utf8Streams::Utf8Streams() {
    for (std::FILE* stream : {stdin, stdout, stderr}) ::_setmode(::_fileno(stream), _O_BINARY);
    for (const auto& [stream, handle] :
         {std::pair(&std::cout, STD_OUTPUT_HANDLE), std::pair(&std::cerr, STD_ERROR_HANDLE)}) {
        if (!IsConsole(handle)) continue;
        auto buffer = std::make_unique<ConsoleBuffer>(handle);
        std::streambuf* const previous = stream->rdbuf(buffer.get());
        redirected_.push_back({stream, previous, std::move(buffer)});
    }
}

Utf8Streams::~Utf8Streams() {
    for (const Redirected& each : redirected_) each.stream->rdbuf(each.previous);
}

// One less than there are: behind a line that fills the last one there would be an empty line.
std::size_t TerminalWidth() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 0;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left);
}

std::size_t TerminalHeight() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 0;
    return static_cast<std::size_t>(info.srWindow.Bottom - info.srWindow.Top) + 1;
}

// Not by way of the C library, which gives nothing beyond ASCII of what is typed.
std::optional<std::string> ReadTypedLine(const std::string& prompt, Echo echo) {
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    const LineMode mode(input, echo);
    std::cerr << prompt << std::flush;
    std::u16string line;
    while (!line.ends_with(u'\n')) {
        wchar_t part[256];
        DWORD count = 0;
        ::SetLastError(ERROR_SUCCESS);
        const bool read = ::ReadConsoleW(input, part, 256, &count, nullptr) != 0;
        // The handler may not have been called yet.
        if (::GetLastError() == ERROR_OPERATION_ABORTED) RememberInterrupt();
        if (!read || count == 0 || Interrupted()) return std::nullopt;
        if (line.empty() && part[0] == kEndOfInput) return std::nullopt;
        line.append(part, part + count);
    }
    line.erase(line.find_last_not_of(u"\r\n") + 1);
    return FromUtf16(line);
}

InterruptCatcher::InterruptCatcher(At at) : was_at_once_(EndsAtOnce(at == At::kOnce)) {
    ::SetConsoleCtrlHandler(HandleInterrupt, TRUE);
}

InterruptCatcher::~InterruptCatcher() {
    ::SetConsoleCtrlHandler(HandleInterrupt, FALSE);
    EndsAtOnce(was_at_once_);
}

}  // namespace tavolin::cli

#endif
