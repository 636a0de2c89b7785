#include "cli/environment.h"

#ifdef _WIN32
#include <string_view>

#include "tavolin/base/utf16.h"

#ifndef NOMINMAX  // the compiler's library may have defined it
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>
#endif

namespace tavolin::cli {

#ifdef _WIN32

static std::string Utf8(std::wstring_view wide) {
    return FromUtf16(std::u16string(wide.begin(), wide.end()));
}

static std::wstring Wide(std::string_view utf8) {
    const std::u16string units = ToUtf16(utf8);
    return {units.begin(), units.end()};
}

std::vector<std::string> ProgramWords(int, const char* const*) {
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> result;
    for (int i = 1; i < count; ++i) result.push_back(Utf8(words[i]));
    ::LocalFree(words);
    return result;
}

std::string Environment(const char* name) {
    const std::wstring variable = Wide(name);
    std::wstring value(::GetEnvironmentVariableW(variable.c_str(), nullptr, 0), L'\0');
    const auto room = static_cast<DWORD>(value.size());
    const DWORD length = ::GetEnvironmentVariableW(variable.c_str(), value.data(), room);
    return length < room ? Utf8(value.substr(0, length)) : std::string();
}

void SetEnvironment(const char* name, const std::string& value) {
    ::SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
}

std::string SystemUserName() { return Environment("USERNAME"); }

#else

std::vector<std::string> ProgramWords(int argc, const char* const* argv) {
    return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::string Environment(const char* name) {
    const char* const value = ::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

void SetEnvironment(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}

std::string SystemUserName() {
    const passwd* const entry = ::getpwuid(::geteuid());
    return entry != nullptr ? std::string(entry->pw_name) : Environment("USER");
}

#endif

}  // namespace tavolin::cli
