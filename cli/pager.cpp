#include "cli/pager.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

#include "cli/environment.h"
#include "cli/paths.h"
#include "cli/terminal.h"

namespace tavolin::cli {

#ifdef _WIN32

// A console scrolls.
class PagedOutput::Buffer {};

PagedOutput::PagedOutput() = default;
PagedOutput::~PagedOutput() = default;

#else

namespace {

bool IsInstalled(const std::string& program) {
    std::istringstream folders(Environment("PATH"));
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code error;
        if (std::filesystem::exists(PathOf(folder + "/" + program), error)) return true;
    }
    return false;
}

// As a shell's words; empty for none.
std::string PagerCommand() {
    const std::string pager = Environment("PAGER");
    if (!pager.empty()) return pager == "cat" ? std::string() : pager;
    if (IsInstalled("less")) return "less -FRX";
    return IsInstalled("more") ? "more" : "";
}

}  // namespace

class PagedOutput::Buffer final : public std::streambuf {
  public:
    Buffer(std::streambuf& terminal, std::string command, std::size_t lines)
        : terminal_(terminal), command_(std::move(command)), lines_left_(lines) {}
    ~Buffer() override {
        if (pager_ == nullptr) {
            terminal_.sputn(waiting_.data(), static_cast<std::streamsize>(waiting_.size()));
            terminal_.pubsync();
        } else {
            ::pclose(pager_);
            ForgetInterrupt();  // which was the pager's
        }
    }

  protected:
    int_type overflow(int_type c) override {
        const char byte = static_cast<char>(c);
        if (c != traits_type::eof() && xsputn(&byte, 1) != 1) return traits_type::eof();
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override {
        const auto size = static_cast<std::size_t>(count);
        if (pager_ != nullptr) return Send(text, size) ? count : 0;
        waiting_.append(text, size);
        for (std::size_t i = 0; i < size; ++i) {
            if (text[i] == '\n' && lines_left_-- == 0) return StartPager() ? count : 0;
        }
        return count;
    }

    int sync() override { return pager_ == nullptr || std::fflush(pager_) == 0 ? 0 : -1; }

  private:
    bool StartPager() {
        // Less takes its texts for the environment's encoding, which may say nothing.
        if (Environment("LESSCHARSET").empty()) SetEnvironment("LESSCHARSET", "utf-8");
        pager_ = ::popen(command_.c_str(), "w");
        return pager_ != nullptr && Send(waiting_.data(), waiting_.size());
    }
    bool Send(const char* text, std::size_t size) {
        return std::fwrite(text, 1, size, pager_) == size;
    }

    const QuietPipes quiet_;
    const InterruptCatcher catcher_;
    std::streambuf& terminal_;
    std::string command_;
    std::string waiting_;
    std::size_t lines_left_;
    std::FILE* pager_ = nullptr;
};

PagedOutput::PagedOutput() {
    const std::size_t height = TerminalHeight();
    if (height < 3 || !InputIsTerminal() || Environment("TERM") == "dumb") return;
    std::string command = PagerCommand();
    if (command.empty()) return;
    std::cout.flush();
    previous_ = std::cout.rdbuf();
    // The prompt takes a line, and so does the note behind a table.
    buffer_ = std::make_unique<Buffer>(*previous_, std::move(command), height - 2);
    std::cout.rdbuf(buffer_.get());
}

PagedOutput::~PagedOutput() {
    if (!buffer_) return;
    std::cout.flush();
    std::cout.rdbuf(previous_);  // which forgets the failure as well
    buffer_.reset();
}

#endif

}  // namespace tavolin::cli
