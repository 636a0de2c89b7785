#include "cli/file_watch.h"

#include <filesystem>

#include "cli/paths.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace tavolin::cli {

std::optional<FileWatch::Stamp> FileWatch::StampOf(const std::string& path) {
    std::error_code error;
    Stamp stamp;
    stamp.size = std::filesystem::file_size(PathOf(path), error);
    if (error) return std::nullopt;
    const auto modified = std::filesystem::last_write_time(PathOf(path), error);
    if (error) return std::nullopt;
    stamp.modified = static_cast<std::int64_t>(modified.time_since_epoch().count());
#ifndef _WIN32
    struct stat status {};
    if (::stat(PathOf(path).c_str(), &status) == 0) stamp.inode = status.st_ino;
#endif
    return stamp;
}

void FileWatch::Look(const std::string& path) {
    path_ = path;
    seen_ = StampOf(path);
}

bool FileWatch::Changed(const std::string& path) const {
    std::error_code error;
    if (!seen_ || !std::filesystem::equivalent(PathOf(path), PathOf(path_), error)) return false;
    const auto now = StampOf(path_);
    return now && *now != *seen_;
}

}  // namespace tavolin::cli
