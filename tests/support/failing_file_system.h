// The machine's file system with a fault in it: one that fails its nth request, and a body that is
// run with the 1st, the 2nd, the 3rd ... failing.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tests/support/forwarding_file_system.h"

namespace tavolin {

namespace fs = std::filesystem;

class FailingFileSystem final : public ForwardingFileSystem {
  public:
    using ForwardingFileSystem::ForwardingFileSystem;

    // From now on the nth call (from 1) fails with the code, a write after taking half its bytes.
    // With `for_good` all later ones fail as well. A mere look does not fail and does not count.
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

  private:
    bool NextFails() const {
        const std::size_t number = calls_.size() + 1;
        return nth_ != 0 && (number == nth_ || (for_good_ && number > nth_));
    }
    bool Asked(std::string_view call, std::string_view path, std::string_view) override {
        if (call.empty()) return true;
        const bool fails = NextFails();
        calls_.emplace_back(call);
        if (!fails) return call != "link" || links_;
        throw std::filesystem::filesystem_error(calls_.back(), NativePath(path),
                                                std::error_code(code_, std::generic_category()));
    }
    std::size_t Writing(std::string_view path, ByteView bytes,
                        const std::function<std::size_t(ByteView)>& write) override {
        if (NextFails()) write(bytes.first(bytes.size() / 2));
        return ForwardingFileSystem::Writing(
            path, bytes.first(std::min(bytes.size(), write_limit_)), write);
    }

    std::vector<std::string> calls_;
    std::size_t nth_ = 0;
    int code_ = EIO;
    bool for_good_ = false;
    bool links_ = true;
    std::size_t write_limit_ = static_cast<std::size_t>(-1);
};

// Until no failure is met any more. After each run check(call, threw) is asked, with the name of
// the call that failed. Gives the number of calls that were made to fail.
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
