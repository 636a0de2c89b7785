// Passwords typed on a terminal: not shown, not in the history, not in any file.
#include "tests/cli/host_fixture.h"

#ifndef _WIN32
#include <poll.h>
#include <pty.h>

namespace tavolin::cli {
namespace {

// The program at work on a terminal of the test's.
class Terminal {
  public:
    Terminal(const fs::path& folder, const char* file) {
        process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (process_ != 0) return;
        ::unsetenv("TAVOLIN_PASSWORD");
        ::setenv("HOME", folder.c_str(), 1);
        ::setenv("TERM", "xterm", 1);
        fs::current_path(folder);
        ::execl(TAVOLIN_HOST, TAVOLIN_HOST, file, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ~Terminal() {
        ::close(terminal_);
        ::waitpid(process_, nullptr, 0);
    }

    // Types a line once the program has asked for it.
    void Answer(const std::string& prompt, const std::string& line) {
        while (shown_.find(prompt, seen_) == std::string::npos) {
            ASSERT_TRUE(Read()) << prompt << " never comes after " << shown_;
        }
        seen_ = shown_.find(prompt, seen_) + prompt.size();
        ASSERT_EQ(::write(terminal_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    }
    std::string All() {
        while (Read()) continue;
        return shown_;
    }

  private:
    // False at the end, and when nothing comes for very long.
    bool Read() {
        pollfd ready{terminal_, POLLIN, 0};
        char bytes[4096];
        if (::poll(&ready, 1, 10'000) <= 0) return false;
        const ssize_t count = ::read(terminal_, bytes, sizeof bytes);
        if (count > 0) shown_.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

    int terminal_ = -1;
    pid_t process_ = -1;
    std::string shown_;
    std::size_t seen_ = 0;
};

TEST_F(HostTest, TypedPasswordsStayUnseen) {
    if (ProgramIsForeign()) GTEST_SKIP() << "the terminal is this machine's";
    const std::string anns = "QzAnns7Word", bobs = "QzBobs8Word";
    const fs::path folder = Path("here");
    fs::create_directory(folder);
    std::string shown;
    {
        Terminal terminal(folder, "shop");
        terminal.Answer("> ", "create\n");
        terminal.Answer("owner, ann: ", anns + "\n");
        terminal.Answer("Again: ", anns + "\n");
        terminal.Answer("> ", "add-user bob --read\n");
        terminal.Answer("of bob: ", bobs + "\n");
        terminal.Answer("Again: ", bobs + "\n");
        std::string back;
        for (int i = 0; i < 9; ++i) back += "\x1B[A";
        terminal.Answer("> ", back + "\n");  // the oldest line, after all others
        terminal.Answer("Exists", "");
        terminal.Answer("> ", "quit\n");
        terminal.Answer("Save", "y\n");
        shown = terminal.All();
    }
    EXPECT_NE(shown.find("add-user bob"), shown.rfind("add-user bob")) << shown;  // there is one
    for (const std::string& password : {anns, bobs}) {
        EXPECT_EQ(shown.find(password), std::string::npos) << shown;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            EXPECT_EQ(bytes.find(password), std::string::npos) << entry.path();
        }
    }
    EXPECT_TRUE(fs::exists(folder / "shop.cdb"));
}

}  // namespace
}  // namespace tavolin::cli

#endif
