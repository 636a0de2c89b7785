#ifndef _WIN32

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <thread>
#include <utility>

#include "tavolin/persist/file_system.h"
#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

namespace fs = std::filesystem;

// One request moves no more than this; some machines refuse more.
constexpr std::size_t kMaxRequest = std::size_t{1} << 30;
// After so many bytes the disk is asked to begin with them.
constexpr std::size_t kBatch = std::size_t{8} << 20;
constexpr int kMaxLinks = 40;

[[noreturn]] void Fail(const char* what, const fs::path& path, int code = errno) {
    throw fs::filesystem_error(what, path, std::error_code(code, std::generic_category()));
}

template <class Call>
auto Retry(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

class PosixFile final : public File {
  public:
    explicit PosixFile(fs::path path) : path_(std::move(path)) {}
    ~PosixFile() override {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;

    void Open(int flags, mode_t rights) {
        descriptor_ = Retry([&] { return ::open(path_.c_str(), flags | O_CLOEXEC, rights); });
        if (descriptor_ < 0) Fail("cannot open", path_);
    }

    struct stat Status() const {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0) Fail("cannot ask about the file", path_);
        return status;
    }
    std::uint64_t Size() override { return static_cast<std::uint64_t>(Status().st_size); }

    std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) override {
        const auto count = Retry([&] {
            return ::pread(descriptor_, target.data(), std::min(target.size(), kMaxRequest),
                           static_cast<off_t>(offset));
        });
        if (count < 0) Fail("cannot read", path_);
        return static_cast<std::size_t>(count);
    }

    std::size_t Write(ByteView bytes) override {
        const std::size_t taken =
            Taken(bytes, Retry([&] {
                      return ::write(descriptor_, bytes.data(), std::min(bytes.size(), kBatch));
                  }));
        BeginWritingOut(taken);
        return taken;
    }

    std::size_t WriteAt(std::uint64_t offset, ByteView bytes) override {
        return Taken(bytes, Retry([&] {
                         return ::pwrite(descriptor_, bytes.data(),
                                         std::min(bytes.size(), kMaxRequest),
                                         static_cast<off_t>(offset));
                     }));
    }

    void Flush() override {
        if (Retry([&] { return ::fsync(descriptor_); }) != 0) Fail("cannot flush", path_);
    }

    void Close() override {
        // Closed even when it reports an interruption: a second try could hit another file.
        if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) {
            Fail("cannot close", path_);
        }
    }

    // The disk works on what it has been given of a large file while the rest is copied for it. How
    // that goes is for Flush to tell.
    void BeginWritingOut([[maybe_unused]] std::size_t count) {
#if defined(__linux__)
        waiting_ += count;
        if (waiting_ < kBatch) return;
        waiting_ = 0;
        ::sync_file_range(descriptor_, 0, 0, SYNC_FILE_RANGE_WRITE);
#endif
    }

    // Another owner's file stays theirs where that is allowed. The bits come last: a change of
    // owner may clear some of them.
    void TakeRightsFrom(const struct stat& like) {
        const auto own = Status();
        if (own.st_uid != like.st_uid || own.st_gid != like.st_gid) {
            [[maybe_unused]] const int ignored = ::fchown(descriptor_, like.st_uid, like.st_gid);
        }
        if (::fchmod(descriptor_, like.st_mode & 07777) != 0) Fail("cannot set the rights", path_);
    }

  private:
    std::size_t Taken(ByteView bytes, ssize_t count) const {
        if (count < 0) Fail("cannot write", path_);
        if (count == 0 && !bytes.empty()) Fail("cannot write", path_, ENOSPC);
        return static_cast<std::size_t>(count);
    }

    int descriptor_ = -1;
    fs::path path_;
    std::size_t waiting_ = 0;  // written since the disk was asked last
};

int Flags(FileMode mode) {
    switch (mode) {
        case FileMode::kRead:
            return O_RDONLY;
        case FileMode::kUpdate:
            return O_RDWR;
        case FileMode::kWrite:
            return O_WRONLY | O_CREAT | O_TRUNC;
        case FileMode::kAppend:
            return O_WRONLY | O_CREAT | O_APPEND;
    }
    return O_RDONLY;
}

std::unique_ptr<PosixFile> OpenDescriptor(const fs::path& path, int flags, mode_t rights) {
    // Made first: once the machine has opened or created it, no memory is needed.
    auto file = std::make_unique<PosixFile>(path);
    file->Open(flags, rights);
    if (S_ISDIR(file->Status().st_mode)) Fail("cannot open", path, EISDIR);
    return file;
}

class PosixFolderLock final : public FolderLock {
  public:
    PosixFolderLock() = default;
    ~PosixFolderLock() override {
        if (descriptor >= 0) ::close(descriptor);
    }
    int descriptor = -1;
};

class PosixFileSystem final : public FileSystem {
  public:
    PathKind Kind(std::string_view path) override {
        const fs::path native = NativePath(path);
        struct stat status {};
        if (::stat(native.c_str(), &status) == 0) {
            if (S_ISREG(status.st_mode)) return PathKind::kFile;
            return S_ISDIR(status.st_mode) ? PathKind::kFolder : PathKind::kOther;
        }
        if (errno == ENOTDIR) return PathKind::kNoFolder;
        if (errno != ENOENT) return PathKind::kUnknown;
        const fs::path folder = native.parent_path();
        if (folder.empty() || folder == native || ::stat(folder.c_str(), &status) == 0) {
            return PathKind::kMissing;
        }
        return errno == ENOENT || errno == ENOTDIR ? PathKind::kNoFolder : PathKind::kUnknown;
    }

    bool IsSameFile(std::string_view a, std::string_view b) override {
        struct stat first {
        }, second{};
        return ::stat(NativePath(a).c_str(), &first) == 0 &&
               ::stat(NativePath(b).c_str(), &second) == 0 && first.st_dev == second.st_dev &&
               first.st_ino == second.st_ino;
    }

    std::unique_ptr<File> Open(std::string_view path, FileMode mode) override {
        return OpenDescriptor(NativePath(path), Flags(mode), 0666);
    }

    std::unique_ptr<File> Create(std::string_view path, std::string_view like) override {
        struct stat rights {};
        const fs::path example = NativePath(like);
        if (!like.empty() && ::stat(example.c_str(), &rights) != 0) {
            Fail("cannot ask about the file", example);
        }
        const fs::path native = NativePath(path);
        auto file = OpenDescriptor(native, O_WRONLY | O_CREAT | O_EXCL, like.empty() ? 0666 : 0600);
        if (like.empty()) return file;
        try {
            file->TakeRightsFrom(rights);
        } catch (...) {
            ::unlink(native.c_str());
            throw;
        }
        return file;
    }

    std::string FollowLink(std::string_view path) override {
        fs::path at = NativePath(path);
        std::error_code ignored;
        if (!fs::is_symlink(at, ignored)) return std::string(path);
        for (int links = 0; fs::is_symlink(at, ignored); ++links) {
            if (links == kMaxLinks) Fail("cannot follow the link", at, ELOOP);
            at = at.parent_path() / fs::read_symlink(at);
        }
        return PortablePath(at);
    }

    void Delete(std::string_view path) override {
        const fs::path native = NativePath(path);
        if (::unlink(native.c_str()) != 0) Fail("cannot delete", native);
    }

    void Rename(std::string_view from, std::string_view to) override {
        fs::rename(NativePath(from), NativePath(to));
    }

    void FlushFolder(std::string_view folder) override {
        const fs::path native = folder.empty() ? fs::path(".") : NativePath(folder);
        const int descriptor =
            Retry([&] { return ::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
        // A folder that may be written to but not listed cannot be flushed by anybody.
        if (descriptor < 0 && errno == EACCES) return;
        if (descriptor < 0) Fail("cannot open the folder", native);
        const int failure = Retry([&] { return ::fsync(descriptor); }) == 0 ? 0 : errno;
        ::close(descriptor);
        // Some kinds of file system know no such request and keep names in order by themselves.
        const bool unknown = failure == EINVAL || failure == ENOTSUP || failure == ENOSYS;
        if (failure != 0 && !unknown) Fail("cannot flush the folder", native, failure);
    }

    bool Link(std::string_view path, std::string_view second) override {
        return ::link(NativePath(path).c_str(), NativePath(second).c_str()) == 0;
    }

    // The lock belongs to this opening of the folder, so that it excludes others in this process as
    // well, and leaves no file behind.
    std::unique_ptr<FolderLock> LockFolder(std::string_view folder) override {
        const fs::path native = folder.empty() ? fs::path(".") : NativePath(folder);
        auto lock = std::make_unique<PosixFolderLock>();
        lock->descriptor =
            Retry([&] { return ::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
        if (lock->descriptor < 0) return nullptr;
        const auto end = std::chrono::steady_clock::now() + kLockPatience;
        while (Retry([&] { return ::flock(lock->descriptor, LOCK_EX | LOCK_NB); }) != 0) {
            if (errno != EWOULDBLOCK) return nullptr;
            if (std::chrono::steady_clock::now() > end) Fail("somebody else locks", native, EBUSY);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return lock;
    }

    void CreateFolder(std::string_view path) override {
        fs::create_directory(NativePath(WithTrailingSeparator(path)).parent_path());
    }
};

}  // namespace

FileSystem& MachineFileSystem() {
    static PosixFileSystem files;
    return files;
}

fs::path NativePath(std::string_view path) {
    std::string native(path);
    if (native.find('\0') != std::string::npos) Fail("not a path", fs::path(), EINVAL);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

std::string PortablePath(const fs::path& path) { return path.string(); }

}  // namespace tavolin

#endif
