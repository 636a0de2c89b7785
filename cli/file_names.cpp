#include "cli/file_names.h"

#include <algorithm>
#include <filesystem>

#include "cli/paths.h"
#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr std::string_view kSeparators = "/\\";
#else
constexpr std::string_view kSeparators = "/";
#endif

bool EndsWithFold(std::string_view name, std::string_view end) {
    return name.size() >= end.size() && EqualFold(name.substr(name.size() - end.size()), end);
}

}  // namespace

bool EndsWithSeparator(std::string_view path) {
    return !path.empty() && kSeparators.find(path.back()) != kSeparators.npos;
}

std::vector<std::string> FileNames(std::string_view typed, FilesOf kind,
                                   std::string_view extension) {
    const std::size_t cut = typed.find_last_of(kSeparators) + 1;
    const std::string_view folder = typed.substr(0, cut);
    const std::string_view begin = typed.substr(cut);
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator entries(PathOf(folder.empty() ? "." : folder), error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        std::string name = TextOf(entries->path().filename());
        if (!name.starts_with(begin) || (begin.empty() && name.starts_with('.'))) continue;
        std::error_code unknown;
        const bool is_folder = entries->is_directory(unknown);
        if (!is_folder && (kind == FilesOf::kFoldersAlone || !EndsWithFold(name, extension))) {
            continue;
        }
        if (is_folder) name += '/';
        names.push_back(std::string(folder) + name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace tavolin::cli
