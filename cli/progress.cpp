#include "cli/progress.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "cli/terminal.h"

namespace tavolin::cli {

Progress::Progress(std::uint64_t total, const char* unit)
    : enabled_(ErrorIsTerminal()), total_(total), unit_(unit) {}

void Progress::Clear() {
    if (drawn_ > 0) std::cerr << '\r' << std::string(drawn_, ' ') << '\r' << std::flush;
    drawn_ = 0;
}

void Progress::Show(std::uint64_t done, std::uint64_t count) {
    if (!enabled_ || Clock::now() < next_) return;
    next_ = Clock::now() + std::chrono::milliseconds(100);
    std::string line;
    if (total_ > 0) {
        constexpr std::size_t kCells = 30;
        const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
        const auto full = static_cast<std::size_t>(part * kCells);
        line = '[' + std::string(full, '#') + std::string(kCells - full, ' ') + "] " +
               std::to_string(static_cast<int>(part * 100)) + " %  ";
    }
    line += std::to_string(count) + ' ' + unit_;
    std::cerr << '\r' << line << std::flush;
    drawn_ = line.size();  // it only grows
}

}  // namespace tavolin::cli
