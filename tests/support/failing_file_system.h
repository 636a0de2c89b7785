// The machine's file system with a fault in it.
//
//     FailingFileSystem files;
//     ScopedFileSystem scope(files);
//     files.FailCall(3, ENOSPC);
//     EXPECT_THROW(engine.SaveDB(), Error);  // whatever its third request to the machine is
//
// "Fail the 1st, 2nd, 3rd ... call until it passes" is FailEachCall().
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "tavolin/persist/file_system.h"

namespace tavolin {

class FailingFileSystem final : public FileSystem {
  public:
    explicit FailingFileSystem(FileSystem& real = MachineFileSystem()) : real_(real) {}

    // From now on the nth call (from 1) fails with the code, a write after taking half its bytes.
    // With `for_good` all later ones fail as well.
    void FailCall(std::size_t nth, int code, bool for_good = false) {
        calls_.clear();
        nth_ = nth;
        code_ = code;
        for_good_ = for_good;
    }
    // Writes take no more than this at once.
    void LimitWrites(std::size_t bytes) { write_limit_ = bytes; }
    // As on a disk without links.
    void RefuseLinks() { links_ = false; }
    // The names of the calls since the last FailCall, as "open", "write", "rename".
    const std::vector<std::string>& calls() const { return calls_; }
    bool failed() const { return nth_ != 0 && calls_.size() >= nth_; }

    // Kind and IsSameFile do not fail and do not count.
    PathKind Kind(std::string_view path) override { return real_.Kind(path); }
    bool IsSameFile(std::string_view a, std::string_view b) override {
        return real_.IsSameFile(a, b);
    }
    std::unique_ptr<File> Open(std::string_view path, FileMode mode) override {
        Count("open", path);
        return std::make_unique<FailingFile>(*this, path, real_.Open(path, mode));
    }
    std::unique_ptr<File> Create(std::string_view path, std::string_view like) override {
        Count("create", path);
        return std::make_unique<FailingFile>(*this, path, real_.Create(path, like));
    }
    std::string FollowLink(std::string_view path) override {
        Count("follow link", path);
        return real_.FollowLink(path);
    }
    void Delete(std::string_view path) override {
        Count("delete", path);
        real_.Delete(path);
    }
    void Rename(std::string_view from, std::string_view to) override {
        Count("rename", from);
        real_.Rename(from, to);
    }
    void FlushFolder(std::string_view folder) override {
        Count("flush folder", folder);
        real_.FlushFolder(folder);
    }
    bool Link(std::string_view path, std::string_view second) override {
        Count("link", second);
        return links_ && real_.Link(path, second);
    }
    std::unique_ptr<FolderLock> LockFolder(std::string_view folder) override {
        Count("lock folder", folder);
        return real_.LockFolder(folder);
    }
    void CreateFolder(std::string_view path) override {
        Count("create folder", path);
        real_.CreateFolder(path);
    }

  private:
    class FailingFile final : public File {
      public:
        FailingFile(FailingFileSystem& files, std::string_view path, std::unique_ptr<File> real)
            : files_(files), path_(path), real_(std::move(real)) {}
        std::uint64_t Size() override {
            files_.Count("size", path_);
            return real_->Size();
        }
        std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) override {
            files_.Count("read", path_);
            return real_->ReadAt(offset, target);
        }
        std::size_t Write(ByteView bytes) override {
            if (files_.NextFails()) real_->Write(bytes.first(bytes.size() / 2));
            files_.Count("write", path_);
            return real_->Write(bytes.first(std::min(bytes.size(), files_.write_limit_)));
        }
        std::size_t WriteAt(std::uint64_t offset, ByteView bytes) override {
            if (files_.NextFails()) real_->WriteAt(offset, bytes.first(bytes.size() / 2));
            files_.Count("write", path_);
            return real_->WriteAt(offset, bytes.first(std::min(bytes.size(), files_.write_limit_)));
        }
        void Flush() override {
            files_.Count("flush", path_);
            real_->Flush();
        }
        void Close() override {
            files_.Count("close", path_);
            real_->Close();
        }

      private:
        FailingFileSystem& files_;
        std::string path_;
        std::unique_ptr<File> real_;
    };

    bool NextFails() const {
        const std::size_t number = calls_.size() + 1;
        return nth_ != 0 && (number == nth_ || (for_good_ && number > nth_));
    }
    void Count(const char* call, std::string_view path) {
        const bool fails = NextFails();
        calls_.push_back(call);
        if (!fails) return;
        throw std::filesystem::filesystem_error(call, NativePath(path),
                                                std::error_code(code_, std::generic_category()));
    }

    FileSystem& real_;
    std::vector<std::string> calls_;
    std::size_t nth_ = 0;
    int code_ = EIO;
    bool for_good_ = false;
    bool links_ = true;
    std::size_t write_limit_ = static_cast<std::size_t>(-1);
};

// Runs body() with the 1st, the 2nd, the 3rd ... call failing, until no failure is met any more.
// After each run check(call, threw) is asked, with the name of the call that failed. Gives the
// number of calls that were made to fail.
template <class Body, class Check>
std::size_t FailEachCall(Body&& body, Check&& check, int code = EIO, bool for_good = false) {
    for (std::size_t nth = 1;; ++nth) {
        FailingFileSystem files;
        files.FailCall(nth, code, for_good);
        bool threw = false;
        {
            const ScopedFileSystem scope(files);
            try {
                body();
            } catch (const std::exception&) {
                threw = true;
            }
        }
        if (!files.failed()) return nth - 1;
        check(files.calls()[nth - 1], threw);
    }
}

// A folder of its own for each test, gone with the test.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        static int count = 0;
        const auto root = std::filesystem::temp_directory_path();
        do {
            path_ =
                root / ("tavolin-test-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) +
                        "-" + std::to_string(++count));
        } while (!std::filesystem::create_directory(path_));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // As the library writes it.
    std::string operator/(std::string_view name) const {
        return PortablePath(path_) + "\\" + std::string(name);
    }

  private:
    std::filesystem::path path_;
};

}  // namespace tavolin
