// The machine's file system with somebody on the way to it, who hears of every call.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "tavolin/persist/file_system.h"

namespace tavolin {

class ForwardingFileSystem : public FileSystem {
  public:
    explicit ForwardingFileSystem(FileSystem& real = MachineFileSystem()) : real_(real) {}

    PathKind Kind(std::string_view path) override { return Asked("", path), real_.Kind(path); }
    bool IsSameFile(std::string_view a, std::string_view b) override {
        return Asked("", a, b), real_.IsSameFile(a, b);
    }
    std::unique_ptr<File> Open(std::string_view path, FileMode mode) override {
        Asked("open", path);
        auto file = std::make_unique<ForwardingFile>(*this, path);
        file->real = real_.Open(path, mode);
        return file;
    }
    std::unique_ptr<File> Create(std::string_view path, std::string_view like) override {
        Asked("create", path);
        auto file = std::make_unique<ForwardingFile>(*this, path);
        file->real = real_.Create(path, like);
        return file;
    }
    std::string FollowLink(std::string_view path) override {
        return Asked("follow link", path), real_.FollowLink(path);
    }
    void Delete(std::string_view path) override { Asked("delete", path), real_.Delete(path); }
    void Rename(std::string_view from, std::string_view to) override {
        Asked("rename", from, to), real_.Rename(from, to);
    }
    void FlushFolder(std::string_view folder) override {
        if (Asked("flush folder", folder)) real_.FlushFolder(folder);
    }
    bool Link(std::string_view path, std::string_view second) override {
        return Asked("link", second, path) && real_.Link(path, second);
    }
    std::unique_ptr<FolderLock> LockFolder(std::string_view folder) override {
        return Asked("lock folder", folder), real_.LockFolder(folder);
    }
    void CreateFolder(std::string_view path) override {
        Asked("create folder", path), real_.CreateFolder(path);
    }

  protected:
    // Before a call is passed on; "" is a mere look. Without a yes there is no flushing or linking.
    virtual bool Asked(std::string_view call, std::string_view path,
                       std::string_view other = {}) = 0;
    // write(bytes) passes a writing on.
    virtual std::size_t Writing(std::string_view path, ByteView bytes,
                                const std::function<std::size_t(ByteView)>& write) {
        return Asked("write", path), write(bytes);
    }

  private:
    class ForwardingFile final : public File {
      public:
        ForwardingFile(ForwardingFileSystem& files, std::string_view path)
            : files_(files), path_(path) {}
        std::uint64_t Size() override { return files_.Asked("size", path_), real->Size(); }
        std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) override {
            return files_.Asked("read", path_), real->ReadAt(offset, target);
        }
        std::size_t Write(ByteView bytes) override {
            return files_.Writing(path_, bytes, [&](ByteView part) { return real->Write(part); });
        }
        std::size_t WriteAt(std::uint64_t offset, ByteView bytes) override {
            return files_.Writing(path_, bytes,
                                  [&](ByteView part) { return real->WriteAt(offset, part); });
        }
        void Flush() override {
            if (files_.Asked("flush", path_)) real->Flush();
        }
        void Close() override { files_.Asked("close", path_), real->Close(); }

        std::unique_ptr<File> real;  // given last, when no memory is needed any more

      private:
        ForwardingFileSystem& files_;
        std::string path_;
    };

    FileSystem& real_;
};

}  // namespace tavolin
