#include "bench/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace tavolin::bench {
namespace {

void Need(bool fine, const std::string& path) {
    if (fine) return;
    std::perror(path.c_str());
    std::exit(1);
}

}  // namespace

void WriteAndSync(const std::string& path, std::span<const char> bytes) {
    const std::string fresh = path + ".new";
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    Need(file >= 0, fresh);
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        Need(written > 0, fresh);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    Need(fsync(file) == 0 && close(file) == 0, fresh);
    std::filesystem::rename(fresh, path);
}

void ReadInto(const std::string& path, std::span<char> bytes) {
    const int file = open(path.c_str(), O_RDONLY);
    Need(file >= 0, path);
    while (!bytes.empty()) {
        const ssize_t got = read(file, bytes.data(), bytes.size());
        Need(got > 0, path);
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
    Need(close(file) == 0, path);
}

std::size_t FileSize(const std::string& path) { return std::filesystem::file_size(path); }

}  // namespace tavolin::bench
