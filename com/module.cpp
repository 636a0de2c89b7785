#include "com/module.h"

#include <atomic>
#include <mutex>

#include "com/ref.h"
#include "tavolin/errors/error.h"

namespace tavolin::com {
namespace {

std::atomic<long> living{0};

}  // namespace

void CountObject(int change) { living += change; }

long LivingObjects() { return living; }

std::wstring ModulePath() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&living), &module);
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(path.size());
        const DWORD length = ::GetModuleFileNameW(module, path.data(), room);
        if (length < room) return path.substr(0, length);
        path.resize(path.size() * 2);
    }
}

ITypeLib* OwnTypeLibrary() {
    // Kept to the end of the process: a library that is being unloaded must not call out.
    static ITypeLib* const library = [] {
        ITypeLib* loaded = nullptr;
        const HRESULT result = ::LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, &loaded);
        if (FAILED(result)) {
            throw Error(result, "Tavolin", Message("The type library cannot be loaded"));
        }
        return loaded;
    }();
    return library;
}

}  // namespace tavolin::com
