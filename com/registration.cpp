#include "com/registration.h"

#include <string>
#include <vector>

#include "com/classes.h"
#include "com/module.h"
#include "com/ref.h"

namespace tavolin::com {
namespace {

constexpr const wchar_t* kClasses = L"Software\\Classes\\";
constexpr const wchar_t* kVersion = L"1.0";
// The platform's marshallers by type library, for interfaces and for events.
constexpr const wchar_t* kTypeLibraryMarshaller = L"{00020424-0000-0000-C000-000000000046}";
constexpr const wchar_t* kDispatchMarshaller = L"{00020420-0000-0000-C000-000000000046}";
#ifdef _WIN64
constexpr const wchar_t* kWordSize = L"win64";
constexpr const wchar_t* kOtherWordSize = L"win32";
constexpr REGSAM kOtherView = KEY_WOW64_32KEY;
#else
constexpr const wchar_t* kWordSize = L"win32";
constexpr const wchar_t* kOtherWordSize = L"win64";
constexpr REGSAM kOtherView = KEY_WOW64_64KEY;
#endif

struct Entry {
    std::wstring key;
    std::wstring name;  // empty for the key's own value
    std::wstring value;
};

std::wstring Text(REFGUID guid) {
    wchar_t text[39];
    ::StringFromGUID2(guid, text, 39);
    return text;
}

GUID LibraryId() {
    TLIBATTR* attributes = nullptr;
    ITypeLib* const library = OwnTypeLibrary();
    if (FAILED(library->GetLibAttr(&attributes))) return GUID{};
    const GUID id = attributes->guid;
    library->ReleaseTLibAttr(attributes);
    return id;
}

std::wstring ClassKey(const ClassRow& row) { return L"CLSID\\" + Text(row.clsid); }
std::wstring InterfaceKey(REFIID iid) { return L"Interface\\" + Text(iid); }
std::wstring ProgId(const ClassRow& row) { return std::wstring(L"Tavolin.") + row.name; }
std::wstring LibraryKey() { return L"TypeLib\\" + Text(LibraryId()); }
std::wstring VersionKey() { return LibraryKey() + L"\\" + kVersion; }

void AddClass(const ClassRow& row, const std::wstring& path, std::vector<Entry>& entries) {
    const std::wstring title = std::wstring(L"Tavolin ") + row.name;
    const std::wstring prog_id = ProgId(row);
    const std::wstring key = ClassKey(row);
    entries.push_back({key, L"", title});
    entries.push_back({key + L"\\InprocServer32", L"", path});
    entries.push_back({key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"});
    entries.push_back({key + L"\\ProgID", L"", prog_id + L".1"});
    entries.push_back({key + L"\\VersionIndependentProgID", L"", prog_id});
    entries.push_back({key + L"\\TypeLib", L"", Text(LibraryId())});
    entries.push_back({key + L"\\Version", L"", kVersion});
    entries.push_back({key + L"\\Programmable", L"", L""});
    entries.push_back({prog_id, L"", title});
    entries.push_back({prog_id + L"\\CLSID", L"", Text(row.clsid)});
    entries.push_back({prog_id + L"\\CurVer", L"", prog_id + L".1"});
    entries.push_back({prog_id + L".1", L"", title});
    entries.push_back({prog_id + L".1\\CLSID", L"", Text(row.clsid)});
}

void AddInterface(const std::wstring& name, REFIID iid, const wchar_t* marshaller,
                  std::vector<Entry>& entries) {
    const std::wstring key = InterfaceKey(iid);
    entries.push_back({key, L"", name});
    entries.push_back({key + L"\\ProxyStubClsid32", L"", marshaller});
    entries.push_back({key + L"\\TypeLib", L"", Text(LibraryId())});
    entries.push_back({key + L"\\TypeLib", L"Version", kVersion});
}

std::vector<Entry> Entries() {
    const std::wstring path = ModulePath();
    std::vector<Entry> entries;
    for (const ClassRow* row : Classes()) {
        if (row->create) AddClass(*row, path, entries);
        AddInterface(std::wstring(L"_") + row->name, row->iid, kTypeLibraryMarshaller, entries);
        if (!row->events) continue;
        AddInterface(std::wstring(L"__") + row->name, *row->events, kDispatchMarshaller, entries);
    }
    entries.push_back({VersionKey(), L"", L"Tavolin 1.0 in-process database"});
    entries.push_back({VersionKey() + L"\\0\\" + kWordSize, L"", path});
    entries.push_back({VersionKey() + L"\\FLAGS", L"", L"0"});
    entries.push_back({VersionKey() + L"\\HELPDIR", L"", path.substr(0, path.rfind(L'\\') + 1)});
    return entries;
}

LSTATUS Write(HKEY root, const Entry& entry) {
    HKEY key = nullptr;
    const LSTATUS made = ::RegCreateKeyExW(root, (kClasses + entry.key).c_str(), 0, nullptr, 0,
                                           KEY_WRITE, nullptr, &key, nullptr);
    if (made != ERROR_SUCCESS) return made;
    const auto bytes = static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t));
    const LSTATUS written =
        ::RegSetValueExW(key, entry.name.empty() ? nullptr : entry.name.c_str(), 0, REG_SZ,
                         reinterpret_cast<const BYTE*>(entry.value.c_str()), bytes);
    ::RegCloseKey(key);
    return written;
}

bool Exists(HKEY root, const std::wstring& path, REGSAM view = 0) {
    HKEY key = nullptr;
    if (::RegOpenKeyExW(root, (kClasses + path).c_str(), 0, KEY_READ | view, &key) !=
        ERROR_SUCCESS) {
        return false;
    }
    ::RegCloseKey(key);
    return true;
}

// Deletes keys with all that is below them, and remembers the first real failure.
class Deletion {
  public:
    explicit Deletion(HKEY root) : root_(root) {}
    void Delete(const std::wstring& path) {
        const std::wstring full = kClasses + path;
        const LSTATUS deleted = ::RegDeleteTreeW(root_, full.c_str());
        if (deleted == ERROR_FILE_NOT_FOUND) return;
        if (status_ == ERROR_SUCCESS) status_ = deleted;
        ::RegDeleteKeyW(root_, full.c_str());  // where the tree's deletion leaves its root
    }
    HRESULT result() const { return HRESULT_FROM_WIN32(status_); }

  private:
    HKEY root_;
    LSTATUS status_ = ERROR_SUCCESS;
};

}  // namespace

HRESULT Register(HKEY root) {
    try {
        for (const Entry& entry : Entries()) {
            const LSTATUS written = Write(root, entry);
            if (written == ERROR_SUCCESS) continue;
            Unregister(root);
            return HRESULT_FROM_WIN32(written);
        }
        return S_OK;
    } catch (...) {
        return SELFREG_E_CLASS;
    }
}

HRESULT Unregister(HKEY root) {
    try {
        Deletion deletion(root);
        const std::wstring versions_here = VersionKey() + L"\\0\\";
        deletion.Delete(versions_here + kWordSize);
        if (!Exists(root, versions_here + kOtherWordSize)) deletion.Delete(LibraryKey());
        for (const ClassRow* row : Classes()) {
            deletion.Delete(InterfaceKey(row->iid));
            if (row->events) deletion.Delete(InterfaceKey(*row->events));
            if (!row->create) continue;
            deletion.Delete(ClassKey(*row));
            if (Exists(root, ClassKey(*row), kOtherView)) continue;
            deletion.Delete(ProgId(*row));
            deletion.Delete(ProgId(*row) + L".1");
        }
        return deletion.result();
    } catch (...) {
        return SELFREG_E_CLASS;
    }
}

}  // namespace tavolin::com
