// A file as it was when it was last looked at, so that what others wrote since is not written over.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavolin::cli {

class FileWatch {
  public:
    // Remembers the file as it is now; nothing of a file that is not there.
    void Look(const std::string& path);

    // Whether that path, by whatever name, leads to the file and it is no longer the one that was
    // seen. A file that has gone can lose nothing and has not changed.
    bool Changed(const std::string& path) const;

  private:
    struct Stamp {
        std::uint64_t size = 0;
        std::int64_t modified = 0;
        std::uint64_t inode = 0;  // 0 where files have none
        bool operator==(const Stamp&) const = default;
    };
    static std::optional<Stamp> StampOf(const std::string& path);

    std::string path_;
    std::optional<Stamp> seen_;
};

}  // namespace tavolin::cli
