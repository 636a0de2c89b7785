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

void Close(int file, const std::string& path) { Need(close(file) == 0, path); }

// A new file with these bytes, open.
int Written(const std::string& path, std::span<const char> bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    Need(file >= 0, path);
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        Need(written > 0, path);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return file;
}

}  // namespace

void Write(const std::string& path, std::span<const char> bytes) {
    Close(Written(path, bytes), path);
}

void WriteAndSync(const std::string& path, std::span<const char> bytes) {
    const std::string fresh = path + ".new";
    const int file = Written(fresh, bytes);
    Need(fsync(file) == 0, fresh);
    Close(file, fresh);
    std::filesystem::rename(fresh, path);
}

void SyncDisk(const std::string& folder) {
    const int place = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    Need(place >= 0 && syncfs(place) == 0, folder);
    Close(place, folder);
}

void ReadInto(const std::string& path, std::span<char> bytes) {
    const int file = open(path.c_str(), O_RDONLY);
    Need(file >= 0, path);
    while (!bytes.empty()) {
        const ssize_t got = read(file, bytes.data(), bytes.size());
        Need(got > 0, path);
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
    Close(file, path);
}

std::size_t FileSize(const std::string& path) { return std::filesystem::file_size(path); }

}  // namespace tavolin::bench
