#include "cli/memory_used.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX  // the compiler's library may have defined it
#define NOMINMAX
#endif
#include <windows.h>
// After it.
#include <psapi.h>
#else
#include <unistd.h>

#include <fstream>
#endif

namespace tavolin::cli {

#ifdef _WIN32

std::size_t MemoryUsed() {
    PROCESS_MEMORY_COUNTERS counters;
    const bool told =
        ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters) != 0;
    return told ? counters.WorkingSetSize : 0;
}

#else

std::size_t MemoryUsed() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    file >> all >> resident;
    return file ? resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

#endif

}  // namespace tavolin::cli
