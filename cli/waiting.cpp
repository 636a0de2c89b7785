#include "cli/waiting.h"

#include <chrono>
#include <iostream>
#include <system_error>
#include <utility>

#include "cli/terminal.h"

namespace tavolin::cli {

Waiting::Waiting(std::string what, std::string stopping)
    : what_(std::move(what)), stopping_(std::move(stopping)) {
    if (!ErrorIsTerminal()) return;
    try {
        thread_ = std::thread([this] { ShowUntilOver(); });
    } catch (const std::system_error&) {
        // What is waited for matters more.
    }
}

Waiting::~Waiting() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    over_changed_.notify_one();
    if (thread_.joinable()) thread_.join();
}

void Waiting::ShowUntilOver() {
    std::string line;
    std::unique_lock lock(mutex_);
    for (int seconds = 1;
         !over_changed_.wait_for(lock, std::chrono::seconds(1), [this] { return over_; });
         ++seconds) {
        line = what_ + ", " + std::to_string(seconds) + " s";
        if (Interrupted()) line += ", " + stopping_;
        std::cerr << '\r' << line << std::flush;
    }
    if (!line.empty()) std::cerr << '\r' << std::string(line.size(), ' ') << '\r' << std::flush;
}

}  // namespace tavolin::cli
