#include "cli/history.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include "cli/environment.h"
#include "cli/paths.h"

namespace tavolin::cli {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
// There the console itself keeps what was typed.
fs::path UsualPath() { return {}; }
#else
fs::path UsualPath() {
    // One that is not absolute means nothing.
    const std::string state = Environment("XDG_STATE_HOME");
    if (state.starts_with('/')) return fs::path(state) / "tavolin/history";
    const std::string home = Environment("HOME");
    return home.starts_with('/') ? fs::path(home) / ".local/state/tavolin/history" : fs::path();
}
#endif

// What is typed is nobody else's business.
void MakePrivate(const fs::path& path) {
    std::error_code error;
    if (!path.parent_path().empty() && fs::create_directories(path.parent_path(), error)) {
        fs::permissions(path.parent_path(), fs::perms::owner_all, error);
    }
    if (fs::exists(path, error)) return;
    std::ofstream(path, std::ios::app).flush();
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, error);
}

}  // namespace

History::History() {
    const char* const named = std::getenv("TAVOLIN_HISTORY");
    path_ = named != nullptr ? std::string(named) : TextOf(UsualPath());
}

std::vector<std::string> History::Lines() const {
    std::vector<std::string> lines;
    if (path_.empty()) return lines;
    std::ifstream file(PathOf(path_), std::ios::binary);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    if (lines.size() <= kMostLines) return lines;
    const auto too_many = static_cast<std::ptrdiff_t>(lines.size() - kMostLines);
    lines.erase(lines.begin(), lines.begin() + too_many);
    Shorten(lines);
    return lines;
}

// In one step, so that a session beside this one never finds half of it.
void History::Shorten(const std::vector<std::string>& lines) const {
    const fs::path beside = PathOf(path_ + ".new");
    std::error_code error;
    fs::remove(beside, error);
    MakePrivate(beside);
    std::ofstream file(beside, std::ios::binary);
    for (const std::string& line : lines) file << line << '\n';
    file.close();
    if (file) fs::rename(beside, PathOf(path_), error);
}

void History::Add(const std::string& line) {
    if (path_.empty() || line.empty() || line[0] == ' ' || line == last_) return;
    last_ = line;
    MakePrivate(PathOf(path_));
    std::ofstream(PathOf(path_), std::ios::binary | std::ios::app) << line + '\n';
}

}  // namespace tavolin::cli
