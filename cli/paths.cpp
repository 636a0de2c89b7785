#include "cli/paths.h"

#include <algorithm>
#include <fstream>

#include "cli/failure.h"
#include "tavolin/persist/paths.h"

namespace tavolin::cli {

std::filesystem::path PathOf(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string TextOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::string FolderPath(std::string_view folder) {
    const auto path = std::filesystem::absolute(PathOf(folder)).lexically_normal();
    const bool ends_open = !path.has_filename() && path.has_relative_path();
    return TextOf(ends_open ? path.parent_path() : path);
}

std::string DatabasePath(std::string_view file) {
    const auto path = std::filesystem::absolute(PathOf(file)).lexically_normal();
    const auto [dir, name] = SplitPath(TextOf(path));
    if (name.empty()) throw UsageError("FILE must name a file: " + std::string(file));
    if (name.find('.') != name.npos) return dir + name;
    return dir + name + "." + std::string(DefaultExtension());
}

std::string WithoutExtension(std::string_view name) { return TextOf(PathOf(name).stem()); }

std::string MachinePath(std::string path) {
#ifndef _WIN32
    std::replace(path.begin(), path.end(), '\\', '/');
#endif
    return path;
}

std::string LibraryPath(std::string_view path) {
    auto [dir, name] = SplitPath(path);
    if (dir.ends_with('/')) dir.back() = '\\';
    return dir + name;
}

void RequireFolder(const std::filesystem::path& folder) {
    if (std::filesystem::is_directory(folder)) return;
    throw CommandFailure("the folder " + TextOf(folder) + " is not there");
}

std::string OutputPath(const std::string& given) {
    return given == "-" ? given : FolderPath(MachinePath(given));
}

std::string FirstLine(const std::string& path) {
    std::ifstream file(PathOf(path), std::ios::binary);
    std::string line;
    if (!file || (!std::getline(file, line) && file.bad())) {
        throw CommandFailure("the file " + path + " cannot be read");
    }
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

}  // namespace tavolin::cli
