#include "bench/bench.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cinttypes>
#include <filesystem>
#include <fstream>

namespace tavolin::bench {

Bench::Bench(int argc, char** argv, const std::string& version) {
    CLI::App app("One program of Tavolin's benchmark; scripts/bench runs them all");
    std::size_t size = 100000;
    app.add_option("--size", size, "Records");
    app.add_option("--folder", folder_, "An empty folder for files; made and removed")->required();
    app.add_option("--only", only_, "Operations whose names begin so");
    app.add_flag("--check", checks_, "Print answers instead of times");
    app.set_version_flag("--version", version);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error));
    }
    std::filesystem::create_directories(folder_);
    data_ = std::make_unique<Data>(size);
}

Bench::~Bench() { std::filesystem::remove_all(folder_); }

bool Bench::Wants(const std::string& operation) const {
    return only_.empty() || std::ranges::any_of(only_, [&](const std::string& name) {
               return operation.starts_with(name);
           });
}

void Bench::Value(const std::string& operation, const char* unit, double value) {
    if (checks_ || !Wants(operation)) return;
    std::printf("%s\t%s\t%.6g\n", operation.c_str(), unit, value);
    std::fflush(stdout);
}

void Bench::Answer(const std::string& operation, std::uint64_t value) {
    if (!checks_ || !Wants(operation)) return;
    std::printf("%s\tanswer\t%" PRIu64 "\n", operation.c_str(), value);
    std::fflush(stdout);
}

double ResidentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void ReleaseFreedMemory() { malloc_trim(0); }

void ReadyMemory(std::size_t bytes) {
    constexpr std::size_t kPage = 4096;
    void* const memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    madvise(memory, bytes, MADV_HUGEPAGE);
    for (std::size_t at = 0; at < bytes; at += kPage) static_cast<volatile char*>(memory)[at] = 1;
    munmap(memory, bytes);
}

}  // namespace tavolin::bench
