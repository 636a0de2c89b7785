#include "tavolin/persist/file_system.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "tavolin/persist/file_replacement.h"

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

}  // namespace

void WriteAll(File& file, ByteView bytes) {
    while (!bytes.empty()) bytes = bytes.subspan(file.Write(bytes));
}

void WriteAllAt(File& file, std::uint64_t offset, ByteView bytes) {
    while (!bytes.empty()) {
        const std::size_t taken = file.WriteAt(offset, bytes);
        bytes = bytes.subspan(taken);
        offset += taken;
    }
}

FileSystem& FileSystem::Current() { return *InUse(); }

ScopedFileSystem::ScopedFileSystem(FileSystem& file_system)
    : previous_(InUse().exchange(&file_system)) {}

ScopedFileSystem::~ScopedFileSystem() { InUse() = previous_; }

std::vector<std::uint8_t> ReadBytes(File& file, std::uint64_t offset, std::uint64_t limit) {
    const std::uint64_t size = file.Size();
    const std::uint64_t left = size > offset ? size - offset : 0;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::min(left, limit)));
    bytes.resize(ReadInto(file, offset, bytes));
    return bytes;
}

std::size_t ReadInto(File& file, std::uint64_t offset, std::span<std::uint8_t> target) {
    std::size_t done = 0;
    while (done < target.size()) {
        const std::size_t step = file.ReadAt(offset + done, target.subspan(done));
        if (step == 0) break;
        done += step;
    }
    return done;
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
                         std::optional<std::uint64_t> keep_tail_from,
                         const std::function<void()>& last_look) {
    FileReplacement replacement(*this, path);
    File& file = replacement.Begin();
    for (const ByteView chunk : chunks) WriteAll(file, chunk);
    if (replacement.old() && keep_tail_from) CopyTail(*replacement.old(), *keep_tail_from, file);
    replacement.Commit(last_look);
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
