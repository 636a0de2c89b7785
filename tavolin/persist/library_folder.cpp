#include <cstdlib>
#include <filesystem>

#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX  // the compiler's library may have defined it
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace tavolin {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32

constexpr const wchar_t* kFolderVariable = L"TAVOLIN_FOLDER";

fs::path NamedFolder() {
    const DWORD size = ::GetEnvironmentVariableW(kFolderVariable, nullptr, 0);
    std::wstring folder(size, L'\0');
    const DWORD length = ::GetEnvironmentVariableW(kFolderVariable, folder.data(), size);
    folder.resize(length < size ? length : 0);
    return folder;
}

fs::path OwnFile() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&kFolderVariable), &module);
    std::wstring file(MAX_PATH, L'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(file.size());
        const DWORD length = ::GetModuleFileNameW(module, file.data(), room);
        if (length < room) return file.substr(0, length);
        file.resize(file.size() * 2);
    }
}

#else

fs::path NamedFolder() {
    const char* folder = std::getenv("TAVOLIN_FOLDER");
    return folder != nullptr ? folder : "";
}

fs::path OwnFile() {
    static const char inside_this_component = 0;
    std::error_code error;
    Dl_info info{};
    // An executable is known by the name it was started with, which may be no path at all.
    if (::dladdr(&inside_this_component, &info) != 0 && info.dli_fname != nullptr) {
        const fs::path file = info.dli_fname;
        fs::path full = fs::canonical(file, error);
        if (file.has_parent_path() && !error) return full;
    }
    return fs::read_symlink("/proc/self/exe", error);
}

#endif

}  // namespace

std::string LibraryFolder() {
    const fs::path named = NamedFolder();
    if (!named.empty()) return WithTrailingSeparator(PortablePath(named));
    // Found once: a relative name would be looked for elsewhere after the current folder changed.
    static const std::string own = PortablePath(OwnFile().parent_path());
    return WithTrailingSeparator(own);
}

}  // namespace tavolin
