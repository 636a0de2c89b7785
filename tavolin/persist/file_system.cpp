#include "tavolin/persist/file_system.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <utility>

#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

constexpr std::size_t kCopyStep = std::size_t{1} << 20;

std::atomic<FileSystem*>& InUse() {
    static std::atomic<FileSystem*> in_use{&MachineFileSystem()};
    return in_use;
}

void CopyTail(File& from, std::uint64_t offset, File& to) {
    const std::uint64_t end = from.Size();
    while (offset < end) {
        const auto step = ReadBytes(from, offset, kCopyStep);
        if (step.empty()) return;
        WriteAll(to, step);
        offset += step.size();
    }
}

// A name that nobody else picks at the same time, short whatever the length of the file's own.
std::string SiblingOf(std::string_view path) {
    static std::atomic<std::uint32_t> counter{std::random_device{}()};
    const auto number = (std::uint64_t{std::random_device{}()} << 32) | ++counter;
    return SplitPath(path).dir + "tavolin-" + std::to_string(number) + ".tmp";
}

// A file that is deleted at the end of the scope if it is there. When that fails there is nothing
// to be done, and already an exception under way.
class Temporary {
  public:
    Temporary(FileSystem& files, std::string path) : files_(files), path_(std::move(path)) {}
    ~Temporary() {
        if (!there_) return;
        try {
            files_.Delete(path_);
        } catch (...) {
        }
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    std::unique_ptr<File> Create(std::string_view like) {
        auto file = files_.Create(path_, like);
        there_ = true;
        return file;
    }
    void RenameTo(std::string_view target) {
        files_.Rename(path_, target);
        there_ = false;
    }

  private:
    FileSystem& files_;
    std::string path_;
    bool there_ = false;
};

bool IsThere(PathKind kind) { return kind != PathKind::kMissing && kind != PathKind::kNoFolder; }

// The ordinary file that is about to be replaced; opened for writing to learn that it may be.
std::unique_ptr<File> OpenOld(FileSystem& files, std::string_view path, PathKind kind) {
    if (!IsThere(kind)) return nullptr;
    if (kind == PathKind::kOther) {
        throw std::filesystem::filesystem_error("not an ordinary file", NativePath(path),
                                                std::make_error_code(std::errc::invalid_argument));
    }
    return files.Open(path, FileMode::kUpdate);
}

}  // namespace

FileSystem& FileSystem::Current() { return *InUse(); }

ScopedFileSystem::ScopedFileSystem(FileSystem& file_system)
    : previous_(InUse().exchange(&file_system)) {}

ScopedFileSystem::~ScopedFileSystem() { InUse() = previous_; }

void WriteAll(File& file, ByteView bytes) {
    while (!bytes.empty()) bytes = bytes.subspan(file.Write(bytes));
}

std::vector<std::uint8_t> ReadBytes(File& file, std::uint64_t offset, std::uint64_t limit) {
    const std::uint64_t size = file.Size();
    const std::uint64_t left = size > offset ? size - offset : 0;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::min(left, limit)));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::size_t step = file.ReadAt(offset + done, std::span(bytes).subspan(done));
        if (step == 0) break;
        done += step;
    }
    bytes.resize(done);
    return bytes;
}

std::vector<std::uint8_t> FileSystem::ReadFile(std::string_view path, std::uint64_t limit) {
    return ReadBytes(*Open(path, FileMode::kRead), 0, limit);
}

bool FileSystem::Exists(std::string_view path) {
    const PathKind kind = Kind(path);
    return IsThere(kind) && kind != PathKind::kUnknown;
}

bool FileSystem::FolderExists(std::string_view path) { return Kind(path) == PathKind::kFolder; }

std::uint64_t FileSystem::FileSize(std::string_view path) {
    return Open(path, FileMode::kRead)->Size();
}

void FileSystem::Append(std::string_view path, ByteView bytes) {
    const auto file = Open(path, FileMode::kAppend);
    WriteAll(*file, bytes);
    file->Close();
}

void FileSystem::Write(std::string_view path, ByteView bytes) {
    const auto file = Open(path, FileMode::kWrite);
    WriteAll(*file, bytes);
    file->Close();
}

void FileSystem::Replace(std::string_view path, std::span<const ByteView> chunks,
                         std::optional<std::uint64_t> keep_tail_from) {
    const std::string target = FollowLink(path);
    auto old = OpenOld(*this, target, Kind(target));
    // Closed before it is deleted, which the machine may insist on: the file goes first.
    Temporary temporary(*this, SiblingOf(target));
    const auto file = temporary.Create(old ? target : std::string());
    for (const ByteView chunk : chunks) WriteAll(*file, chunk);
    if (old && keep_tail_from) CopyTail(*old, *keep_tail_from, *file);
    old.reset();
    file->Flush();
    file->Close();
    temporary.RenameTo(target);
    FlushFolder(SplitPath(target).dir);
}

void FileSystem::AddName(std::string_view path, std::string_view second) {
    if (IsSameFile(path, second)) return;
    RemoveOtherFile(second, path);
    if (Link(path, second)) return;
    const auto from = Open(path, FileMode::kRead);
    const auto to = Open(second, FileMode::kWrite);
    CopyTail(*from, 0, *to);
    to->Close();
}

void FileSystem::RemoveOtherFile(std::string_view path, std::string_view keep) {
    if (Exists(path) && !IsSameFile(path, keep)) Delete(path);
}

}  // namespace tavolin
