// The file as pages: new pages are numbered, written once each in any order, and take the place of
// the old file all together or not at all.
//
//     PageFile file("C:\\Data\\Shop.mdb");
//     const PageNumber page = file.Allocate();
//     file.Write(page, contents);
//     file.Commit(page_map);
//
// A file that was written here bears a seal on the unused part of its page map: a mark, the number
// of pages, and a checksum over all of them. Programs of the format pay no heed to it. Only a file
// whose seal is unbroken is added to, so whatever another program changed is left alone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/export/mdb/page.h"
#include "tavolin/persist/file_replacement.h"

namespace tavolin::mdb {

inline constexpr PageNumber kPageMapPage = 1;

class PageFile {
  public:
    // Opens what is there of that name. What bears no seal of ours raises 58.
    explicit PageFile(std::string_view path);

    const std::string& path() const { return path_; }
    bool is_new() const { return replacement_.old() == nullptr; }

    // A page of the old file; DamagedState when it has no such page.
    Page Read(PageNumber number) const;

    // Hands out these pages of the old file again, lowest first, before new ones. Before anything
    // is allocated.
    void Recycle(std::vector<PageNumber> pages);
    // A page of the new file: above every one that was handed out before. kNoSpace when the file
    // would pass its limit.
    PageNumber Allocate();
    // The number of pages so far.
    PageNumber count() const { return count_; }
    // The recycled pages that nobody asked for.
    std::vector<PageNumber> Unused() const {
        return {recycled_.begin() + static_cast<std::ptrdiff_t>(taken_), recycled_.end()};
    }

    // Every allocated page, and every one below kFirstFreePage but the page map's, must be written,
    // once. kNoSpace when the disk is full; 58 when the old file turns out to be changed.
    void Write(PageNumber number, const Page& page);

    // Writes the page map, puts everything on the disk and in the old file's place.
    void Commit(Page page_map);

  private:
    void CheckSeal();
    void Start();
    void CopyOld(File& target);
    bool IsRewritten(PageNumber number) const;
    void FlushBuffer();

    std::string path_;
    FileSystem& files_;
    FileReplacement replacement_;
    File* file_ = nullptr;  // the new one, once something has been written
    PageNumber old_count_ = 0;
    std::uint64_t old_sum_ = 0;
    PageNumber count_ = kFirstFreePage;
    std::uint64_t sum_ = 0;
    std::vector<PageNumber> recycled_;
    std::size_t taken_ = 0;
    Bytes buffer_;  // neighbouring pages on their way to the file
    PageNumber buffer_first_ = 0;
};

}  // namespace tavolin::mdb
