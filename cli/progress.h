// A bar on the error stream that shows how far a long task has come; nothing without a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace tavolin::cli {

class Progress {
  public:
    // `total` is what Show counts up to; 0 when it is not known. `unit` is what it says it counts.
    explicit Progress(std::uint64_t total, const char* unit = "rows");
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Redraws the bar, ten times a second at most and not before it has taken a moment. `count`
    // stands beside it.
    void Show(std::uint64_t done, std::uint64_t count);
    // Takes the bar away.
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;

    bool enabled_;
    std::size_t drawn_ = 0;  // columns
    std::uint64_t total_;
    const char* unit_;
    Clock::time_point next_ = Clock::now() + std::chrono::milliseconds(500);
};

}  // namespace tavolin::cli
