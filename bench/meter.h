// What pieces of work cost: time or, under callgrind, instructions.
//
//     Meter meter;
//     meter.Measure("get 1000", [&] { for (...) Get(); });
//
// Prints the piece's name and the seconds, with a tab between them. Under callgrind, started with
// --instr-atstart=no, it writes a profile that bears the name instead.
#pragma once

#include <valgrind/callgrind.h>

#include <cstdio>
#include <string>

#include "bench/bench.h"

namespace tavolin::bench {

class Meter {
  public:
    template <class Body>
    void Measure(const std::string& name, Body&& body) {
        if (RUNNING_ON_VALGRIND) {
            CALLGRIND_START_INSTRUMENTATION;
            CALLGRIND_ZERO_STATS;
            body();
            CALLGRIND_DUMP_STATS_AT(name.c_str());
            CALLGRIND_STOP_INSTRUMENTATION;
        } else {
            const auto start = Clock::now();
            body();
            std::printf("%s\t%.9f\n", name.c_str(), Seconds(start));
            std::fflush(stdout);
        }
    }
};

}  // namespace tavolin::bench
