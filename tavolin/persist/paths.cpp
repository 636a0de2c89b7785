#include "tavolin/persist/paths.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include "tavolin/base/text.h"
#include "tavolin/base/utf8.h"
#include "tavolin/persist/file_system.h"

namespace tavolin {
namespace {

// Blanks between the name and its extension do not count.
bool IsDevice(std::string_view name) {
    std::string_view stem = name.substr(0, name.find('.'));
    stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
    for (const char* device : {"con", "prn", "aux", "nul", "conin$", "conout$"}) {
        if (EqualFold(stem, device)) return true;
    }
    if (!EqualFold(stem.substr(0, 3), "com") && !EqualFold(stem.substr(0, 3), "lpt")) return false;
    // The raised digits count as digits.
    for (const char* number :
         {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"}) {
        if (stem.substr(3) == number) return true;
    }
    return false;
}

}  // namespace

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

bool IsFolderName(std::string_view name) {
    constexpr std::size_t kLongest = 255;
    if (name.empty() || name.size() > kLongest || name.back() == '.' || name.back() == ' ') {
        return false;
    }
    bool possible = true;
    ForEachUnit(name, [&](const Utf8Unit& unit) {
        const bool control = unit.value < ' ' || (unit.value >= 0x7F && unit.value < 0xA0);
        const bool forbidden =
            unit.value < 0x80 &&
            std::string_view("<>:\"/\\|?*").find(static_cast<char>(unit.value)) !=
                std::string_view::npos;
        possible =
            possible && unit.well_formed && !IsSurrogate(unit.value) && !control && !forbidden;
    });
    return possible && !IsDevice(name);
}

bool StaysInFolder(std::string_view name) {
    using namespace std::string_view_literals;
    return name.find_first_of("\\/:\0"sv) == std::string_view::npos &&
           name.find_first_not_of(". ") != std::string_view::npos && !IsDevice(name);
}

std::string RegistryPath() { return LibraryFolder() + "RDX.dat"; }

std::string LogFileName(std::string_view database) {
    const std::string name = ReplaceFold(database, DefaultExtension(), "log");
    return EqualFold(name, database) ? name + ".log" : name;
}

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
