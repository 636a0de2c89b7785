#include "tavolin/persist/file_replacement.h"

#include <atomic>
#include <cstdint>
#include <random>

#include "tavolin/persist/paths.h"

namespace tavolin {
namespace {

// A name that nobody else picks at the same time, short whatever the length of the file's own.
std::string SiblingOf(std::string_view path) {
    static std::atomic<std::uint32_t> counter{std::random_device{}()};
    const auto number = (std::uint64_t{std::random_device{}()} << 32) | ++counter;
    return SplitPath(path).dir + "tavolin-" + std::to_string(number) + ".tmp";
}

// The ordinary file that is about to be replaced; opened for writing to learn that it may be.
std::unique_ptr<File> OpenOld(FileSystem& files, std::string_view path) {
    const PathKind kind = files.Kind(path);
    if (!IsThere(kind)) return nullptr;
    if (kind == PathKind::kOther) {
        throw std::filesystem::filesystem_error("not an ordinary file", NativePath(path),
                                                std::make_error_code(std::errc::invalid_argument));
    }
    return files.Open(path, FileMode::kUpdate);
}

}  // namespace

FileReplacement::FileReplacement(FileSystem& files, std::string_view path)
    : files_(files),
      target_(files.FollowLink(path)),
      sibling_(SiblingOf(target_)),
      old_(OpenOld(files, target_)) {}

FileReplacement::~FileReplacement() {
    // Closed before it is deleted, which the machine may insist on.
    file_.reset();
    if (!sibling_there_) return;
    try {
        files_.Delete(sibling_);
    } catch (...) {
        // Nothing can be done, and an exception is already under way.
    }
}

File& FileReplacement::Begin() {
    file_ = files_.Create(sibling_, old_ ? std::string_view(target_) : std::string_view());
    sibling_there_ = true;
    return *file_;
}

void FileReplacement::Commit(const std::function<void()>& last_look) {
    old_.reset();
    file_->Flush();
    file_->Close();
    std::unique_ptr<FolderLock> lock;
    if (last_look) {
        lock = files_.LockFolder(SplitPath(target_).dir);
        last_look();
    }
    files_.Rename(sibling_, target_);
    sibling_there_ = false;
    files_.FlushFolder(SplitPath(target_).dir);
}

}  // namespace tavolin
