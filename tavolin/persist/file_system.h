// Every touch of the machine's files goes through here: the library asks FileSystem::Current(), a
// test puts another one in its place.
//
//     FileSystem& files = FileSystem::Current();
//     if (files.Exists("C:\\Data\\Stock.log")) files.Delete("C:\\Data\\Stock.log");
//
// A path is UTF-8 and may hold `\` and `/` as separators. Elsewhere in the library paths keep their
// `\`; only here they become what the machine uses.
//
// Failures are std::filesystem::filesystem_error with the machine's code and the real path as
// path1(); a path with a zero byte in it is an invalid argument.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tavolin/base/export.h"

namespace tavolin {

using ByteView = std::span<const std::uint8_t>;

enum class PathKind {
    kFile,
    kFolder,
    kOther,     // a device, a pipe and the like
    kMissing,   // the folder is there, the name in it is not
    kNoFolder,  // the folder is missing as well
    kUnknown,   // the machine would not say
};

inline bool IsThere(PathKind kind) {
    return kind != PathKind::kMissing && kind != PathKind::kNoFolder;
}

enum class FileMode {
    kRead,    // an existing file; others may read it as well
    kUpdate,  // an existing file, to read and to write, contents kept
    kWrite,   // created, or emptied
    kAppend,  // created, or kept; every write goes to the end
};

// An open file. Closed at the latest when it is destroyed.
class TAVOLIN_API File {
  public:
    virtual ~File() = default;
    virtual std::uint64_t Size() = 0;
    // The number of bytes put into `target`: fewer than asked for near the end, 0 at the end.
    virtual std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) = 0;
    // Puts bytes behind those that the last Write took. The number of bytes taken, which may be
    // fewer than given; never 0 for a non-empty view.
    virtual std::size_t Write(ByteView bytes) = 0;
    // The same at any place, which may be behind the file's end; what is skipped reads as zeros
    // until it is written. Not for files opened to append, and not to be mixed with Write.
    virtual std::size_t WriteAt(std::uint64_t offset, ByteView bytes) = 0;
    // Returns when the bytes are on the disk.
    virtual void Flush() = 0;
    // Reports what a late write could not do. No other member may be called afterwards.
    virtual void Close() = 0;
};

// A lock that is held until it is destroyed, which is for the thread that has got it, or until its
// process ends in whatever way.
class TAVOLIN_API FolderLock {
  public:
    FolderLock() = default;
    virtual ~FolderLock() = default;
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
};

// At most `limit` bytes from `offset` on; fewer when the file ends before.
TAVOLIN_API std::vector<std::uint8_t> ReadBytes(File& file, std::uint64_t offset,
                                                std::uint64_t limit);

// Fills `target` with the bytes from `offset` on and says how many there were before the end.
TAVOLIN_API std::size_t ReadInto(File& file, std::uint64_t offset, std::span<std::uint8_t> target);

// All the bytes, in as many requests as it takes.
TAVOLIN_API void WriteAll(File& file, ByteView bytes);
TAVOLIN_API void WriteAllAt(File& file, std::uint64_t offset, ByteView bytes);

class TAVOLIN_API FileSystem {
  public:
    virtual ~FileSystem() = default;
    // The one in use: the machine's own unless a ScopedFileSystem says otherwise.
    static FileSystem& Current();

    static constexpr std::chrono::seconds kLockPatience{60};
    static constexpr std::uint64_t kToTheEnd = std::numeric_limits<std::uint64_t>::max();

    // At most `limit` bytes of the file's start.
    std::vector<std::uint8_t> ReadFile(std::string_view path, std::uint64_t limit = kToTheEnd);
    // True for a file, a folder or anything else of that name that can be asked about.
    bool Exists(std::string_view path);
    bool FolderExists(std::string_view path);
    std::uint64_t FileSize(std::string_view path);

    // Puts the bytes behind the file's last one; a missing file is created. After a failure a first
    // part of the bytes may have been written.
    void Append(std::string_view path, ByteView bytes);
    // Creates the file or replaces its contents, not in one step: after a failure the file may hold
    // a first part of the bytes. Replace() is the safe way.
    void Write(std::string_view path, ByteView bytes);
    // Makes the file hold the chunks one after another and, when `keep_tail_from` is given, behind
    // them the old file's bytes from that offset on. The bytes go to a sibling file in the same
    // folder, are flushed to disk and take the old file's place in one step, so that after a
    // failure, or a crash at any moment, the old file stands as it was; a failure leaves no sibling
    // behind. Only the last step of all, which makes the exchange itself safe from a power cut, can
    // fail with the new file already in place.
    // An old file must be an ordinary one that may be written; it hands on its permission bits, and
    // a link stays a link: the file that it leads to is replaced.
    // `last_look` is called right before the exchange, with the file's folder locked, and may raise
    // to prevent it: of all who look so, nobody can put a file there between look and exchange.
    void Replace(std::string_view path, std::span<const ByteView> chunks,
                 std::optional<std::uint64_t> keep_tail_from = {},
                 const std::function<void()>& last_look = {});

    // Gives a file a second name, so that both names lead to the same bytes: nothing is done where
    // they do already, as for names that differ in letter case alone where case does not count. A
    // file that has the second name is deleted. Where the machine has no links, the second name is
    // that of a copy, which does not follow later changes.
    void AddName(std::string_view path, std::string_view second);
    // Takes a name away from its file unless it is one of that other path's file. Neither need be
    // there.
    void RemoveOtherFile(std::string_view path, std::string_view keep);

    // The steps that the above are made of. Each is one request to the machine.
    virtual PathKind Kind(std::string_view path) = 0;  // raises nothing but invalid paths
    // False when either is missing.
    virtual bool IsSameFile(std::string_view a, std::string_view b) = 0;
    virtual std::unique_ptr<File> Open(std::string_view path, FileMode mode) = 0;
    // A new file to write; the name must be free. With the permission bits of `like`, a file's
    // path, unless that is empty; nobody who may not read that file can read the new one at any
    // moment.
    virtual std::unique_ptr<File> Create(std::string_view path, std::string_view like) = 0;
    // Where the path leads when it names a link, else the path itself.
    virtual std::string FollowLink(std::string_view path) = 0;
    // A missing file is an error, and so is a folder.
    virtual void Delete(std::string_view path) = 0;
    // A file named `to` is replaced in one step.
    virtual void Rename(std::string_view from, std::string_view to) = 0;
    // Returns when the names in that folder ("" is the current one) are on the disk.
    virtual void FlushFolder(std::string_view folder) = 0;
    // Makes a second name for a file. False when the machine does not, for whatever reason; nothing
    // has happened then.
    virtual bool Link(std::string_view path, std::string_view second) = 0;
    // The folder's lock ("" is the current one's), which one at a time can hold, in this process or
    // in another; it keeps away nobody who does not ask for it. Waits for its holder, but no longer
    // than kLockPatience: device_or_resource_busy. Nothing when the folder cannot be locked: it is
    // missing, may not be used so, or is on a disk that knows no locks.
    virtual std::unique_ptr<FolderLock> LockFolder(std::string_view folder) = 0;
    // An existing folder is not an error; a missing parent is.
    virtual void CreateFolder(std::string_view path) = 0;
};

// Puts a file system in the place of the current one until the end of the scope.
class TAVOLIN_API ScopedFileSystem {
  public:
    explicit ScopedFileSystem(FileSystem& file_system);
    ~ScopedFileSystem();
    ScopedFileSystem(const ScopedFileSystem&) = delete;
    ScopedFileSystem& operator=(const ScopedFileSystem&) = delete;

  private:
    FileSystem* previous_;
};

// What the machine calls that path.
TAVOLIN_API std::filesystem::path NativePath(std::string_view path);
// The reverse: UTF-8, with the separators as they are.
TAVOLIN_API std::string PortablePath(const std::filesystem::path& path);

// The machine's own file system; what FileSystem::Current() gives when nobody replaced it.
TAVOLIN_API FileSystem& MachineFileSystem();

}  // namespace tavolin
