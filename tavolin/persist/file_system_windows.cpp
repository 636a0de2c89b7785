#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX  // the compiler's library may have defined it
#define NOMINMAX
#endif
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/base/utf16.h"
#include "tavolin/persist/file_system.h"

namespace tavolin {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxRequest = std::size_t{1} << 30;
constexpr std::size_t kLongestName = 255;  // code units

// The machine's codes in the numbers of <cerrno>, which the rest of the library knows.
int PortableCode(DWORD code) {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
            return ENOENT;
        case ERROR_ACCESS_DENIED:
            return EACCES;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_NOT_READY:
            return EBUSY;
        case ERROR_WRITE_PROTECT:
            return EROFS;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return EEXIST;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return ENOSPC;
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
            return EINVAL;
        case ERROR_FILENAME_EXCED_RANGE:
            return ENAMETOOLONG;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return ENOMEM;
        default:
            return EIO;
    }
}

[[noreturn]] void FailWith(const char* what, const fs::path& path, int code) {
    throw fs::filesystem_error(what, path, std::error_code(code, std::generic_category()));
}

[[noreturn]] void Fail(const char* what, const fs::path& path) {
    FailWith(what, path, PortableCode(::GetLastError()));
}

class WindowsFile final : public File {
  public:
    explicit WindowsFile(fs::path path) : path_(std::move(path)) {}
    ~WindowsFile() override {
        if (handle_ != INVALID_HANDLE_VALUE) ::CloseHandle(handle_);
    }
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;

    void Own(HANDLE handle) { handle_ = handle; }

    std::uint64_t Size() override {
        LARGE_INTEGER size{};
        if (!::GetFileSizeEx(handle_, &size)) Fail("cannot ask about the file", path_);
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) override {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(target.size(), kMaxRequest));
        if (!::ReadFile(handle_, target.data(), wanted, &count, &place) &&
            ::GetLastError() != ERROR_HANDLE_EOF) {
            Fail("cannot read", path_);
        }
        return count;
    }

    std::size_t Write(ByteView bytes) override { return Write(bytes, nullptr); }

    std::size_t WriteAt(std::uint64_t offset, ByteView bytes) override {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        return Write(bytes, &place);
    }

    void Flush() override {
        if (!::FlushFileBuffers(handle_)) Fail("cannot flush", path_);
    }

    void Close() override {
        if (!::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE))) {
            Fail("cannot close", path_);
        }
    }

  private:
    std::size_t Write(ByteView bytes, OVERLAPPED* place) {
        DWORD count = 0;
        const auto given = static_cast<DWORD>(std::min(bytes.size(), kMaxRequest));
        if (!::WriteFile(handle_, bytes.data(), given, &count, place)) Fail("cannot write", path_);
        if (count == 0 && given != 0) FailWith("cannot write", path_, ENOSPC);
        return count;
    }

    HANDLE handle_ = INVALID_HANDLE_VALUE;
    fs::path path_;
};

// Somebody else has the file open, for a moment as a rule.
bool IsInUse(DWORD code) {
    return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION ||
           code == ERROR_ACCESS_DENIED || code == ERROR_DELETE_PENDING;
}

// Calls call() until it succeeds, for a second at most while the file is in use: who reads a file,
// or puts another in its place, is done soon.
template <class Call>
bool Patiently(Call&& call) {
    for (int tries = 50; !call(); --tries) {
        if (tries == 0 || !IsInUse(::GetLastError())) return false;
        ::Sleep(20);
    }
    return true;
}

// The machine's versions differ in what they say of such a name.
bool IsTooLong(const fs::path& path) { return path.filename().native().size() > kLongestName; }

std::unique_ptr<File> OpenHandle(const fs::path& path, DWORD access, DWORD share, DWORD how) {
    if (IsTooLong(path)) FailWith("cannot open", path, ENAMETOOLONG);
    // Made first: once the machine has opened or created it, no memory is needed.
    auto file = std::make_unique<WindowsFile>(path);
    HANDLE handle = INVALID_HANDLE_VALUE;
    const auto open = [&] {
        handle = ::CreateFileW(path.c_str(), access, share, nullptr, how, FILE_ATTRIBUTE_NORMAL,
                               nullptr);
        // What may never be opened so is denied at once.
        return handle != INVALID_HANDLE_VALUE || ::GetLastError() == ERROR_ACCESS_DENIED;
    };
    if (!Patiently(open) || handle == INVALID_HANDLE_VALUE) Fail("cannot open", path);
    file->Own(handle);
    return file;
}

// A place in the queue of those of this log-on session who want a folder's lock. Without it whoever
// asks most often gets the lock, and somebody may wait until his patience ends. Two folders may
// have one queue; where there is none to be had, everybody is next.
class FolderQueue {
  public:
    explicit FolderQueue(const fs::path& folder) {
        std::error_code failed;
        const fs::path whole = fs::absolute(folder, failed);
        const std::uint32_t hash = HashFold(PortablePath(failed ? folder : whole));
        queue_ = ::CreateMutexW(nullptr, FALSE,
                                (L"Local\\tavolin-folder-" + std::to_wstring(hash)).c_str());
    }
    ~FolderQueue() {
        if (next_) ::ReleaseMutex(queue_);
        if (queue_ != nullptr) ::CloseHandle(queue_);
    }
    FolderQueue(const FolderQueue&) = delete;
    FolderQueue& operator=(const FolderQueue&) = delete;

    // Returns when it is this one's turn; false when the time was up before.
    bool Wait(std::chrono::milliseconds patience) {
        if (queue_ == nullptr) return true;
        const DWORD answer = ::WaitForSingleObject(queue_, static_cast<DWORD>(patience.count()));
        next_ = answer == WAIT_OBJECT_0 || answer == WAIT_ABANDONED;
        return answer != WAIT_TIMEOUT;
    }

  private:
    HANDLE queue_ = nullptr;
    bool next_ = false;
};

class WindowsFolderLock final : public FolderLock {
  public:
    explicit WindowsFolderLock(const fs::path& folder) : queue(folder) {}
    ~WindowsFolderLock() override {
        if (file != INVALID_HANDLE_VALUE) ::CloseHandle(file);
    }

    FolderQueue queue;
    HANDLE file = INVALID_HANDLE_VALUE;
};

// In a row.
constexpr int kMostDenials = 300;
constexpr int kMostDenialsOfNothing = 10;

class WindowsFileSystem final : public FileSystem {
  public:
    PathKind Kind(std::string_view path) override {
        const fs::path native = NativePath(path);
        if (IsTooLong(native)) return PathKind::kUnknown;  // it cannot be missing
        const DWORD attributes = ::GetFileAttributesW(native.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES) {
            if (attributes & FILE_ATTRIBUTE_DIRECTORY) return PathKind::kFolder;
            return attributes & FILE_ATTRIBUTE_DEVICE ? PathKind::kOther : PathKind::kFile;
        }
        switch (::GetLastError()) {
            case ERROR_FILE_NOT_FOUND:
                return PathKind::kMissing;
            case ERROR_PATH_NOT_FOUND:
            case ERROR_INVALID_DRIVE:
                return PathKind::kNoFolder;
            default:
                return PathKind::kUnknown;
        }
    }

    bool IsSameFile(std::string_view a, std::string_view b) override {
        std::error_code error;
        return fs::equivalent(NativePath(a), NativePath(b), error) && !error;
    }

    std::unique_ptr<File> Open(std::string_view path, FileMode mode) override {
        const fs::path native = NativePath(path);
        // Others may do anything but what they do not share: files are replaced, not changed.
        constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        switch (mode) {
            case FileMode::kRead:
                return OpenHandle(native, GENERIC_READ, kShareAll, OPEN_EXISTING);
            case FileMode::kUpdate:
                return OpenHandle(native, GENERIC_READ | GENERIC_WRITE, kShareAll, OPEN_EXISTING);
            case FileMode::kWrite:
                return OpenHandle(native, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
            case FileMode::kAppend:
                return OpenHandle(native, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  OPEN_ALWAYS);
        }
        FailWith("cannot open", native, EINVAL);
    }

    // The rights of a file come from its folder here, which is the same one.
    std::unique_ptr<File> Create(std::string_view path, std::string_view) override {
        return OpenHandle(NativePath(path), GENERIC_WRITE, 0, CREATE_NEW);
    }

    std::string FollowLink(std::string_view path) override {
        const fs::path native = NativePath(path);
        std::error_code error;
        if (!fs::is_symlink(native, error)) return std::string(path);
        return PortablePath(fs::weakly_canonical(native));
    }

    void Delete(std::string_view path) override {
        const fs::path native = NativePath(path);
        if (!::DeleteFileW(native.c_str())) Fail("cannot delete", native);
    }

    void Rename(std::string_view from, std::string_view to) override {
        const fs::path old_name = NativePath(from);
        const fs::path new_name = NativePath(to);
        if (IsTooLong(new_name)) FailWith("cannot rename", new_name, ENAMETOOLONG);
        const auto rename = [&] {
            return ::MoveFileExW(old_name.c_str(), new_name.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
        };
        if (!Patiently(rename)) Fail("cannot rename", old_name);
    }

    // Renaming writes the folder through.
    void FlushFolder(std::string_view) override {}

    bool Link(std::string_view path, std::string_view second) override {
        return ::CreateHardLinkW(NativePath(second).c_str(), NativePath(path).c_str(), nullptr) !=
               0;
    }

    // A file that nobody else can open while this handle lives, and that goes with the handle.
    std::unique_ptr<FolderLock> LockFolder(std::string_view folder) override {
        const fs::path path = NativePath(std::string(folder) + "tavolin.lock");
        const auto end = std::chrono::steady_clock::now() + kLockPatience;
        auto lock = std::make_unique<WindowsFolderLock>(path.parent_path());
        if (!lock->queue.Wait(kLockPatience)) FailWith("somebody else locks", path, EBUSY);
        int denied = 0;
        int denied_nothing = 0;
        for (;;) {
            lock->file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                       FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
            if (lock->file != INVALID_HANDLE_VALUE) return lock;
            const DWORD code = ::GetLastError();
            if (!IsInUse(code)) return nullptr;
            // A file that is just going is denied as well as one in a folder without rights, but
            // not time after time, and mostly it is still there. A clock would not do: on a busy
            // machine much of it passes between two tries.
            const bool refused = code == ERROR_ACCESS_DENIED;
            const bool nothing = refused && Kind(PortablePath(path)) == PathKind::kMissing;
            denied = refused ? denied + 1 : 0;
            denied_nothing = nothing ? denied_nothing + 1 : 0;
            if (denied > kMostDenials || denied_nothing > kMostDenialsOfNothing) return nullptr;
            if (std::chrono::steady_clock::now() > end) {
                FailWith("somebody else locks", path, EBUSY);
            }
            ::Sleep(2);
        }
    }

    void CreateFolder(std::string_view path) override {
        const fs::path native = NativePath(path);
        if (!::CreateDirectoryW(native.c_str(), nullptr) && !FolderExists(path)) {
            Fail("cannot create the folder", native);
        }
    }
};

}  // namespace

FileSystem& MachineFileSystem() {
    static WindowsFileSystem files;
    return files;
}

// Names may hold lone surrogates here. What is not UTF-8 becomes a replacement character, which
// names no file, rather than an exception.
fs::path NativePath(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) FailWith("not a path", fs::path(), EINVAL);
    const std::u16string units = ToUtf16(path);
    return std::wstring(units.begin(), units.end());
}

std::string PortablePath(const fs::path& path) {
    const std::wstring& wide = path.native();
    return FromUtf16(std::u16string(wide.begin(), wide.end()));
}

}  // namespace tavolin

#endif
