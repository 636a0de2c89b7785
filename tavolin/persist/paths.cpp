#include "tavolin/persist/paths.h"

#include <filesystem>
#include <system_error>

#include "tavolin/persist/file_system.h"

namespace tavolin {

std::string_view DefaultExtension() { return "cdb"; }

std::string WithTrailingSeparator(std::string_view path) {
    std::string result(path);
    if (!path.empty() && path.back() != '\\') result += '\\';
    return result;
}

std::string JoinPath(std::string_view dir, std::string_view name) {
    return WithTrailingSeparator(dir).append(name);
}

PathParts SplitPath(std::string_view path) {
    const std::size_t last = path.find_last_of("\\/");
    const std::size_t name = last == std::string_view::npos ? 0 : last + 1;
    return {std::string(path.substr(0, name)), std::string(path.substr(name))};
}

std::string RegistryPath() { return LibraryFolder() + "RDX.dat"; }

bool FileExists(std::string_view path) {
    if (path.empty()) return false;
    // Not a possible name, so nothing says that a file of that name is missing.
    if (path.find('\0') != std::string_view::npos) return true;
    return FileSystem::Current().Kind(path) != PathKind::kMissing;
}

std::string AbsolutePath(std::string_view path) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(NativePath(path), error);
    return error ? std::string(path) : PortablePath(absolute.lexically_normal());
}

bool IsOneFile(std::string_view a, std::string_view b) {
    try {
        return FileSystem::Current().IsSameFile(a, b);
    } catch (const std::filesystem::filesystem_error&) {
        return false;
    }
}

}  // namespace tavolin
