#include "cli/data_folder.h"

#include <filesystem>
#include <string>

#include "cli/environment.h"
#include "cli/paths.h"
#include "tavolin/persist/paths.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace tavolin::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kVariable = "TAVOLIN_FOLDER";

#ifdef _WIN32
// Rights there are no matter of a few bits: only trying tells.
bool MayWriteIn(const fs::path& folder) {
    const fs::path probe =
        folder / ("tavolin" + std::to_string(::GetCurrentProcessId()) + ".probe");
    const HANDLE file = ::CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    ::CloseHandle(file);
    return true;
}

fs::path FolderOfTheUser() {
    const std::string data = Environment("LOCALAPPDATA");
    return data.empty() ? fs::path() : PathOf(data) / "tavolin";
}
#else
bool MayWriteIn(const fs::path& folder) { return ::access(folder.c_str(), W_OK | X_OK) == 0; }

fs::path FolderOfTheUser() {
    // One that is not absolute means nothing.
    const std::string data = Environment("XDG_DATA_HOME");
    if (data.starts_with('/')) return fs::path(data) / "tavolin";
    const std::string home = Environment("HOME");
    return home.empty() ? fs::path() : fs::path(home) / ".local/share/tavolin";
}
#endif

}  // namespace

void ChooseDataFolder() {
    if (!Environment(kVariable).empty() || MayWriteIn(PathOf(MachinePath(LibraryFolder())))) return;
    const fs::path folder = FolderOfTheUser();
    if (folder.empty()) return;
    std::error_code error;
    fs::create_directories(folder, error);
    if (fs::is_directory(folder, error)) SetEnvironment(kVariable, TextOf(folder));
}

}  // namespace tavolin::cli
