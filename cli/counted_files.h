// The files in use, with a look at what is written to them: it moves a progress bar, and Ctrl-C
// ends it.
#pragma once

#include <cstdint>
#include <string>

#include "cli/failure.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "tavolin/persist/file_system.h"

namespace tavolin::cli {

class CountedFiles final : public FileSystem {
  public:
    CountedFiles() : progress_(0, "MB") {}

    // Whether a write was refused because of Ctrl-C.
    bool interrupted() const { return interrupted_; }

    PathKind Kind(std::string_view path) override { return real_.Kind(path); }
    bool IsSameFile(std::string_view a, std::string_view b) override {
        return real_.IsSameFile(a, b);
    }
    std::unique_ptr<File> Open(std::string_view path, FileMode mode) override;
    std::unique_ptr<File> Create(std::string_view path, std::string_view like) override;
    std::string FollowLink(std::string_view path) override { return real_.FollowLink(path); }
    void Delete(std::string_view path) override { real_.Delete(path); }
    void Rename(std::string_view from, std::string_view to) override { real_.Rename(from, to); }
    bool Link(std::string_view path, std::string_view second) override {
        return real_.Link(path, second);
    }
    void FlushFolder(std::string_view folder) override { real_.FlushFolder(folder); }
    std::unique_ptr<FolderLock> LockFolder(std::string_view folder) override {
        return real_.LockFolder(folder);
    }
    void CreateFolder(std::string_view path) override { real_.CreateFolder(path); }

  private:
    class CountedFile;

    void Count(std::size_t bytes);

    FileSystem& real_ = FileSystem::Current();
    Progress progress_;
    std::uint64_t written_ = 0;
    bool interrupted_ = false;
};

// Calls `run`, which writes files; Ctrl-C ends it, and raises Cancelled with what is to be said
// about what was written until then.
template <class Run>
void WritingFiles(const std::string& left_behind, Run&& run) {
    const InterruptCatcher catcher;
    CountedFiles files;
    try {
        const ScopedFileSystem scope(files);
        run();
    } catch (const Error&) {
        if (!files.interrupted()) throw;
        throw Cancelled(left_behind);
    }
}

}  // namespace tavolin::cli
