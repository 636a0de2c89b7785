// The program as it is used at a terminal of 80 columns and 24 lines.
#pragma once

#include <poll.h>
#include <pty.h>

#include <csignal>
#include <vector>

#include "tests/cli/host_fixture.h"

namespace tavolin::cli {

// The program at work on a terminal of the test's.
class Terminal {
  public:
    // Without a password; with one its user is "ann", whose password is "secret".
    Terminal(const fs::path& folder, std::vector<const char*> words, bool password = false) {
        words.insert(words.begin(), TAVOLIN_HOST);
        words.push_back(nullptr);
        winsize size{};
        size.ws_row = 24;
        size.ws_col = 80;
        process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
        if (process_ != 0) return;
        if (!password) ::unsetenv("TAVOLIN_PASSWORD");
        ::unsetenv("PAGER");
        ::setenv("HOME", folder.c_str(), 1);
        ::setenv("TERM", "xterm", 1);
        fs::current_path(folder);
        ::execv(TAVOLIN_HOST, const_cast<char* const*>(words.data()));
        ::_exit(127);
    }
    ~Terminal() {
        if (process_ > 0) Status();
        ::close(terminal_);
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
    // One that does not end by itself is killed. `key` is pressed until it has ended.
    int Status(const std::string& key = {}) {
        for (int i = 0; i < 100 && !key.empty() && !ended_; ++i) {
            if (::write(terminal_, key.data(), key.size()) < 0) break;
            while (Read(100)) continue;  // or what is pressed twice may be heard once
        }
        while (Read()) continue;
        if (!ended_) ::kill(process_, SIGKILL);
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    // False at the end, and when nothing comes for very long.
    bool Read(int patience = 10'000) {
        pollfd ready{terminal_, POLLIN, 0};
        char bytes[4096];
        if (::poll(&ready, 1, patience) <= 0) return false;
        const ssize_t count = ::read(terminal_, bytes, sizeof bytes);
        if (count > 0) shown_.append(bytes, static_cast<std::size_t>(count));
        ended_ = count <= 0;
        return count > 0;
    }

    int terminal_ = -1;
    pid_t process_ = -1;
    bool ended_ = false;
    std::string shown_;
    std::size_t seen_ = 0;
};

}  // namespace tavolin::cli
