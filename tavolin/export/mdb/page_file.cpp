#include "tavolin/export/mdb/page_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tavolin/errors/trap.h"
#include "tavolin/export/mdb/failure.h"
#include "tavolin/persist/checksum.h"

namespace tavolin::mdb {
namespace {

constexpr std::size_t kBufferSize = 256 * kPageSize;

// The seal. The mark and the layout are part of the file format: do not change.
constexpr std::size_t kSealOffset = 1024;
constexpr std::array<std::uint8_t, 16> kFileMark = {'T', 'a', 'v', 'o', 'l', 'i', 'n', ' ',
                                                    'e', 'x', 'p', 'o', 'r', 't', '1', 0};
constexpr std::size_t kCountOffset = kSealOffset + kFileMark.size();
constexpr std::size_t kSumOffset = kCountOffset + 8;
constexpr std::size_t kSealEnd = kSumOffset + 8;

// A page's share in the sum over all of them, whichever is written first.
std::uint64_t Share(PageNumber number, ByteView page) {
    return Checksum(page) * (2 * std::uint64_t{number} + 1);
}

void AddShares(PageNumber first, ByteView pages, std::uint64_t& sum) {
    for (std::size_t at = 0; at < pages.size(); at += kPageSize) {
        sum += Share(first++, pages.subspan(at, kPageSize));
    }
}

std::uint64_t Offset(PageNumber number) { return std::uint64_t{number} * kPageSize; }

template <class Body>
auto WithSpace(const std::string& path, Body&& body) {
    try {
        return body();
    } catch (const std::filesystem::filesystem_error& error) {
        const auto code = error.code();
        bool full = code == std::errc::no_space_on_device || code == std::errc::file_too_large;
#ifdef EDQUOT
        full = full || code == std::error_code(EDQUOT, std::generic_category());
#endif
        if (!full) throw;
        Fail(kNoSpace, Message("Not Enough Space On Disk!\r\nFile: ", path));
    }
}

}  // namespace

PageFile::PageFile(std::string_view path)
    : path_(path), files_(FileSystem::Current()), replacement_(files_, path) {
    if (!is_new()) CheckSeal();
}

void PageFile::CheckSeal() {
    const std::uint64_t size = replacement_.old()->Size();
    const bool fits =
        size % kPageSize == 0 && size >= Offset(kFirstFreePage) && size <= Offset(kMaxPages);
    if (!fits) throw Error(kFileExists, path_ + ": not of the size of a file of this library's");
    old_count_ = count_ = static_cast<PageNumber>(size / kPageSize);
    const Page map = Read(kPageMapPage);
    if (std::memcmp(&map.bytes()[kSealOffset], kFileMark.data(), kFileMark.size()) != 0 ||
        map.Get<std::uint64_t>(kCountOffset) != old_count_) {
        throw Error(kFileExists, path_ + ": not written by this library");
    }
    old_sum_ = map.Get<std::uint64_t>(kSumOffset);
    std::uint64_t sum = 0;
    ForEachOldChunk([&](PageNumber first, ByteView chunk) { AddShares(first, chunk, sum); });
    if (sum != old_sum_) RaiseChanged();
}

// Calls use(first page, bytes) for the old file from its beginning to its end.
template <class Use>
void PageFile::ForEachOldChunk(Use&& use) const {
    for (PageNumber number = 0; number < old_count_;) {
        auto chunk = ReadBytes(*replacement_.old(), Offset(number), kBufferSize);
        chunk.resize(chunk.size() / kPageSize * kPageSize);
        if (chunk.empty()) RaiseChanged();
        const PageNumber first = number;
        number += static_cast<PageNumber>(chunk.size() / kPageSize);
        if (first <= kPageMapPage && kPageMapPage < number) {
            const auto seal = chunk.begin() + static_cast<std::ptrdiff_t>(
                                                  Offset(kPageMapPage - first) + kSealOffset);
            std::fill(seal, seal + (kSealEnd - kSealOffset), std::uint8_t{0});
        }
        use(first, chunk);
    }
}

void PageFile::RaiseChanged() const {
    throw Error(kFileExists, path_ + ": changed since this library wrote it");
}

Page PageFile::Read(PageNumber number) const {
    Page page;
    const auto bytes = ReadBytes(*replacement_.old(), Offset(number), kPageSize);
    if (bytes.size() != kPageSize) {
        throw DamagedState(path_ + ": no page " + std::to_string(number));
    }
    std::memcpy(page.data(), bytes.data(), kPageSize);
    return page;
}

void PageFile::Recycle(std::vector<PageNumber> pages) {
    recycled_ = std::move(pages);
    std::sort(recycled_.begin(), recycled_.end());
    if (std::adjacent_find(recycled_.begin(), recycled_.end()) != recycled_.end()) {
        throw DamagedState("a page with two owners");
    }
}

PageNumber PageFile::Allocate() {
    if (taken_ < recycled_.size()) return recycled_[taken_++];
    if (count_ == kMaxPages) {
        Fail(kNoSpace, Message("The File Would Pass 2 GB!\r\nFile: ", path_));
    }
    return count_++;
}

bool PageFile::IsRewritten(PageNumber number) const {
    return number < kFirstFreePage ||
           std::binary_search(recycled_.begin(), recycled_.end(), number);
}

// Makes the sum of the old pages that stay while it is at it, and of all of them once more.
void PageFile::CopyOld(File& target) {
    std::uint64_t sum = 0;
    ForEachOldChunk([&](PageNumber first, ByteView chunk) {
        WriteAllAt(target, Offset(first), chunk);
        AddShares(first, chunk, sum);
        for (std::size_t at = 0; at < chunk.size(); at += kPageSize, ++first) {
            if (!IsRewritten(first)) sum_ += Share(first, chunk.subspan(at, kPageSize));
        }
    });
    if (sum != old_sum_) RaiseChanged();
}

void PageFile::Start() {
    if (file_ != nullptr) return;
    WithSpace(path_, [&] {
        File& target = replacement_.Begin();
        if (!is_new()) CopyOld(target);
        file_ = &target;
    });
    buffer_.reserve(kBufferSize);
}

void PageFile::Write(PageNumber number, const Page& page) {
    Start();
    const auto next = static_cast<PageNumber>(buffer_first_ + buffer_.size() / kPageSize);
    if (number != next || buffer_.size() == kBufferSize) FlushBuffer();
    if (buffer_.empty()) buffer_first_ = number;
    mdb::Append(buffer_, page.bytes());
    sum_ += Share(number, page.bytes());
}

void PageFile::FlushBuffer() {
    WithSpace(path_, [&] { WriteAllAt(*file_, Offset(buffer_first_), buffer_); });
    buffer_.clear();
}

// Whether another writer has come first. What it wrote must not get lost.
void PageFile::CheckNobodyElse() {
    if (is_new() && !files_.Exists(path_)) return;
#ifdef _WIN32
    if (!is_new()) return;  // nobody can write to it while it is open here
#endif
    const auto now = files_.Open(path_, FileMode::kRead);
    const auto map = ReadBytes(*now, Offset(kPageMapPage), kPageSize);
    const bool same =
        !is_new() && ReadBytes(*replacement_.old(), Offset(kPageMapPage), kPageSize) == map;
    if (!same) throw Error(kFileExists, path_ + ": written by somebody else in the meantime");
}

void PageFile::Commit(Page page_map) {
    Start();
    std::uint64_t sum = sum_ + Share(kPageMapPage, page_map.bytes());
    std::memcpy(page_map.data() + kSealOffset, kFileMark.data(), kFileMark.size());
    page_map.Put<std::uint64_t>(kCountOffset, count_);
    page_map.Put(kSumOffset, sum);
    Write(kPageMapPage, page_map);
    FlushBuffer();
    CheckNobodyElse();
    WithSpace(path_, [&] { replacement_.Commit(); });
}

}  // namespace tavolin::mdb
