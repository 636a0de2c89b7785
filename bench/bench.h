// Timing and reporting, the same for every program of the benchmark.
//
//     Bench bench(argc, argv, "SQLite");
//     bench.Each("get-key", keys.size(), [&](std::size_t i) { return store.Get(keys[i]); });
//     bench.Whole("save", [&] { store.Save(); });
//
// A program prints lines of an operation, a unit and a value with tabs between them. Told to check,
// it runs every operation on the same small number of records as the other programs and prints
// what it was answered instead of what it took.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/data.h"

namespace tavolin::bench {

using Clock = std::chrono::steady_clock;

inline double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

class Bench {
  public:
    // Reads the command line, and makes the data and an empty folder.
    Bench(int argc, char** argv, const std::string& version);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    const Data& data() const { return *data_; }
    std::size_t size() const { return data_->size(); }
    const std::string& folder() const { return folder_; }
    bool checks() const { return checks_; }
    // Whether the operation was asked for; all are unless some are named.
    bool Wants(const std::string& operation) const;

    // Calls body(i) from 0 on, up to `count` times or until the time is up: nanoseconds for one
    // call. What it returns is the answer. Returns the number of calls.
    template <class Body>
    std::size_t Each(const std::string& operation, std::size_t count, Body&& body);

    // Calls prepare, which is not timed, and body several times: milliseconds for one body.
    template <class Body>
    void Whole(const std::string& operation, Body&& body,
               const std::function<void()>& prepare = {});

    void Value(const std::string& operation, const char* unit, double value);
    // Compared with the other programs', if checks are wanted.
    void Answer(const std::string& operation, std::uint64_t value);

  private:
    static constexpr double kSecondsForEach = 0.5;
    static constexpr double kSecondsForWhole = 0.3;
    static constexpr std::size_t kCheckedCalls = 100;
    static constexpr std::size_t kBytesForEach = 320;  // as much as anyone takes at once

    bool checks_ = false;
    std::string folder_;
    std::vector<std::string> only_;
    std::unique_ptr<Data> data_;
};

// Memory of the process that is in use now, in bytes.
double ResidentBytes();
// Gives freed memory back, so that what follows pays for its own.
void ReleaseFreedMemory();
// Has so much memory at hand for whoever asks next: a virtual machine may have to get it from its
// host first, which takes longer than most of what is measured and hits whoever comes first.
void ReadyMemory(std::size_t bytes);

// Keeps the compiler from dropping what made a value.
inline void Keep(std::uint64_t value) { asm volatile("" : : "r"(value) : "memory"); }

template <class Body>
std::size_t Bench::Each(const std::string& operation, std::size_t count, Body&& body) {
    if (!Wants(operation)) return 0;
    if (checks_) count = std::min(count, kCheckedCalls);
    std::uint64_t answer = 0;
    std::size_t done = 0;
    const auto start = Clock::now();
    double seconds = 0;
    for (std::size_t batch = 1; done < count; batch *= 2) {
        const std::size_t end = std::min(count, done + batch);
        for (; done < end; ++done) answer += body(done);
        seconds = Seconds(start);
        if (seconds > kSecondsForEach && !checks_) break;
    }
    Keep(answer);
    if (checks_) {
        Answer(operation, answer);
    } else if (done > 0) {
        Value(operation, "ns", seconds * 1e9 / static_cast<double>(done));
    }
    return done;
}

template <class Body>
void Bench::Whole(const std::string& operation, Body&& body, const std::function<void()>& prepare) {
    if (!Wants(operation)) return;
    std::vector<double> times;
    const std::size_t most = checks_ ? 1 : 25;
    double total = 0;
    while (times.size() < most && (times.empty() || total < kSecondsForWhole)) {
        if (prepare) prepare();
        ReadyMemory(size() * kBytesForEach);
        const auto start = Clock::now();
        body();
        times.push_back(Seconds(start));
        total += times.back();
    }
    if (checks_) return;
    std::ranges::sort(times);
    Value(operation, "ms", times[times.size() / 2] * 1e3);
}

}  // namespace tavolin::bench
