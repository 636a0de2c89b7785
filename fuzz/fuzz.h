// What the fuzz targets share. A target is one LLVMFuzzerTestOneInput, which ends the process when
// a promise is broken; libFuzzer drives it, or replay.cpp for the ordinary tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tavolin/persist/checksum.h"
#include "tavolin/persist/file_system.h"
#include "tavolin/persist/little_endian.h"
#include "tavolin/persist/property_bag.h"
#include "tavolin/persist/property_bag_layout.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tavolin::fuzz {

using Bytes = std::vector<std::uint8_t>;

inline void Require(bool holds, std::string_view promise) {
    if (holds) return;
    std::fprintf(stderr, "BROKEN PROMISE: %.*s\n", static_cast<int>(promise.size()),
                 promise.data());
    std::abort();
}

// The bytes of an input as a row of small choices; zeros behind the end.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : left_(data, size) {}

    bool More() const { return !left_.empty(); }
    std::uint8_t Byte() {
        if (left_.empty()) return 0;
        const std::uint8_t byte = left_.front();
        left_ = left_.subspan(1);
        return byte;
    }
    int Below(int limit) { return Byte() % limit; }
    std::uint64_t Number() {
        std::uint64_t number = 0;
        for (int i = Below(9); i > 0; --i) number = number << 8 | Byte();
        return number;
    }
    // That many bytes, or as many as there are.
    std::span<const std::uint8_t> Take(std::size_t count) {
        const auto taken = left_.first(std::min(count, left_.size()));
        left_ = left_.subspan(taken.size());
        return taken;
    }
    std::string_view Text(std::size_t size) {
        const auto taken = Take(size);
        return {reinterpret_cast<const char*>(taken.data()), taken.size()};
    }
    std::string_view Text() { return Text(Byte()); }
    std::span<const std::uint8_t> Rest() { return Take(left_.size()); }

  private:
    std::span<const std::uint8_t> left_;
};

// A property bag whose header is made to fit what it holds, so that the reader believes it.
inline void Seal(std::span<std::uint8_t> bag) {
    using namespace bag_layout;
    if (bag.size() < kItemsAt) return;
    std::memcpy(bag.data(), kMagic, sizeof kMagic);
    StoreLittle<std::uint32_t>(bag.data() + kVersionAt, kPropertyBagVersion);
    StoreLittle<std::uint32_t>(bag.data() + kZeroAt, 0);
    StoreLittle<std::uint64_t>(bag.data() + kLengthAt, bag.size());
    StoreLittle<std::uint64_t>(bag.data() + kChecksumAt, Checksum(bag.subspan(kLengthAt)));
}

// The same for a file that holds a bag.
inline void SealFile(std::span<std::uint8_t> file) {
    constexpr std::size_t kDescriptor = 12;
    if (file.size() < kDescriptor) return;
    const std::uint8_t begin[] = {0x11, 0x20, 1, 0};
    std::memcpy(file.data(), begin, sizeof begin);
    StoreLittle(file.data() + 4, static_cast<std::uint32_t>(file.size() - kDescriptor));
    StoreLittle<std::uint32_t>(file.data() + 8, 0);
    Seal(file.subspan(kDescriptor));
}

// A file made of an input: its first byte says whether the others are the file as it is, or one
// whose header and checksum are made to fit.
inline Bytes FileOf(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return {};
    Bytes file(data + 1, data + size);
    if (data[0] % 3 == 1) SealFile(file);
    return file;
}

// Files in memory, in the one folder kFolder.
class MemoryFiles final : public FileSystem {
  public:
    static constexpr const char* kFolder = "/m";

    Bytes& operator[](std::string_view path) {
        auto& file = files_[Normal(path)];
        if (!file) file = std::make_shared<Bytes>();
        return *file;
    }

    PathKind Kind(std::string_view path) override {
        const std::string name = Normal(path);
        if (files_.contains(name)) return PathKind::kFile;
        if (name == kFolder) return PathKind::kFolder;
        return name.starts_with("/m/") ? PathKind::kMissing : PathKind::kNoFolder;
    }
    bool IsSameFile(std::string_view a, std::string_view b) override {
        return files_.contains(Normal(a)) && Normal(a) == Normal(b);
    }
    std::unique_ptr<File> Open(std::string_view path, FileMode mode) override {
        const bool makes = mode == FileMode::kWrite || mode == FileMode::kAppend;
        if (!makes) Find(path);
        if (Kind(path) == PathKind::kNoFolder || Kind(path) == PathKind::kFolder) Fail(path);
        Bytes& bytes = (*this)[path];
        if (mode == FileMode::kWrite) bytes.clear();
        return std::make_unique<MemoryFile>(Find(path),
                                            mode == FileMode::kAppend ? bytes.size() : 0);
    }
    std::unique_ptr<File> Create(std::string_view path, std::string_view) override {
        if (Kind(path) != PathKind::kMissing) Fail(path, std::errc::file_exists);
        return Open(path, FileMode::kWrite);
    }
    std::string FollowLink(std::string_view path) override { return std::string(path); }
    void Delete(std::string_view path) override {
        Find(path);
        files_.erase(Normal(path));
    }
    void Rename(std::string_view from, std::string_view to) override {
        auto file = Find(from);
        files_.erase(Normal(from));
        files_[Normal(to)] = std::move(file);
    }
    void FlushFolder(std::string_view) override {}
    bool Link(std::string_view path, std::string_view second) override {
        files_[Normal(second)] = Find(path);
        return true;
    }
    std::unique_ptr<FolderLock> LockFolder(std::string_view) override { return nullptr; }
    void CreateFolder(std::string_view) override {}

  private:
    class MemoryFile final : public File {
      public:
        MemoryFile(std::shared_ptr<Bytes> bytes, std::size_t at)
            : bytes_(std::move(bytes)), at_(at) {}
        std::uint64_t Size() override { return bytes_->size(); }
        std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> target) override {
            if (offset >= bytes_->size()) return 0;
            const auto at = static_cast<std::size_t>(offset);
            const std::size_t count = std::min(target.size(), bytes_->size() - at);
            if (count > 0) std::memcpy(target.data(), bytes_->data() + at, count);
            return count;
        }
        std::size_t Write(ByteView bytes) override {
            at_ += WriteAt(at_, bytes);
            return bytes.size();
        }
        std::size_t WriteAt(std::uint64_t offset, ByteView bytes) override {
            const auto at = static_cast<std::size_t>(offset);
            if (bytes_->size() < at + bytes.size()) bytes_->resize(at + bytes.size());
            if (!bytes.empty()) std::memcpy(bytes_->data() + at, bytes.data(), bytes.size());
            return bytes.size();
        }
        void Flush() override {}
        void Close() override {}

      private:
        std::shared_ptr<Bytes> bytes_;
        std::size_t at_;
    };

    static std::string Normal(std::string_view path) {
        std::string name;
        for (const char c : path) {
            const char step = c == '\\' ? '/' : c;
            if (step != '/' || !name.ends_with('/')) name += step;
        }
        if (name.ends_with('/')) name.pop_back();
        return name;
    }
    [[noreturn]] static void Fail(std::string_view path,
                                  std::errc error = std::errc::no_such_file_or_directory) {
        throw std::filesystem::filesystem_error("memory", std::string(path),
                                                std::make_error_code(error));
    }
    std::shared_ptr<Bytes> Find(std::string_view path) {
        const auto found = files_.find(Normal(path));
        if (found == files_.end()) Fail(path);
        return found->second;
    }

    std::map<std::string, std::shared_ptr<Bytes>> files_;
};

}  // namespace tavolin::fuzz
