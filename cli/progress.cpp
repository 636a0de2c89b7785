#include "cli/progress.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "cli/terminal.h"

namespace tavolin::cli {

Progress::Progress(std::uint64_t total, const char* unit)
    : enabled_(ErrorIsTerminal()), total_(total), unit_(unit) {}

void Progress::Clear() {
    if (drawn_) std::cerr << "\r\x1B[K" << std::flush;
    drawn_ = false;
}

void Progress::Show(std::uint64_t done, std::uint64_t count) {
    if (!enabled_ || Clock::now() < next_) return;
    next_ = Clock::now() + std::chrono::milliseconds(100);
    drawn_ = true;
    std::cerr << '\r';
    if (total_ > 0) {
        constexpr std::size_t kCells = 30;
        const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
        const auto full = static_cast<std::size_t>(part * kCells);
        std::cerr << '[' << std::string(full, '#') << std::string(kCells - full, ' ') << "] "
                  << static_cast<int>(part * 100) << " %  ";
    }
    std::cerr << count << ' ' << unit_ << std::flush;
}

}  // namespace tavolin::cli
