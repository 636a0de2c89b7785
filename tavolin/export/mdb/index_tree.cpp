#include "tavolin/export/mdb/index_tree.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

namespace tavolin::mdb {
namespace {

constexpr std::size_t kNodeFreeOffset = 2;
constexpr std::size_t kTableOffset = 4;
constexpr std::size_t kPreviousOffset = 12;
constexpr std::size_t kNextOffset = 16;
constexpr std::size_t kTailOffset = 20;
constexpr std::size_t kLevelOffset = 26;
constexpr std::size_t kMaskOffset = 27;  // a bit for each place where an entry ends
constexpr std::size_t kEntriesOffset = 480;
constexpr std::size_t kNodeRoom = kPageSize - kEntriesOffset;
constexpr std::size_t kChildSize = 4;
constexpr std::uint8_t kValueFollows = 0x7F;

// An entry of a leaf, or the last entry below a node's child and the child.
struct Item {
    Bytes entry;
    PageNumber child = 0;
};
using Group = std::span<const Item>;

// One level of the tree, cut into pages.
class Level {
  public:
    Level(std::uint8_t number, std::vector<Item> items)
        : number_(number), items_(std::move(items)) {
        while (taken_ < items_.size() || groups_.empty()) TakeGroup();
        // A node needs two children: its last one takes no room, so that one of the page before
        // can always go along.
        if (!IsLeaf() && groups_.size() > 1 && groups_.back().size() == 1) MoveOneToLast();
    }

    std::size_t pages() const { return groups_.size(); }

    // Writes the pages and gives what the level above is made of.
    std::vector<Item> Store(PageFile& file, PageNumber table,
                            const std::vector<PageNumber>& numbers) const {
        std::vector<Item> above;
        for (std::size_t i = 0; i < groups_.size(); ++i) {
            Page page = PageOf(groups_[i], table);
            if (i > 0) page.Put(kPreviousOffset, numbers[i - 1]);
            if (i + 1 < groups_.size()) page.Put(kNextOffset, numbers[i + 1]);
            file.Write(numbers[i], page);
            if (!groups_[i].empty()) above.push_back({groups_[i].back().entry, numbers[i]});
        }
        return above;
    }

  private:
    bool IsLeaf() const { return number_ == 0; }
    std::size_t SizeOf(const Item& item) const {
        return item.entry.size() + (IsLeaf() ? 0 : kChildSize);
    }

    void TakeGroup() {
        const std::size_t first = taken_;
        std::size_t used = 0;
        while (taken_ < items_.size() && used + SizeOf(items_[taken_]) <= kNodeRoom) {
            used += SizeOf(items_[taken_++]);
        }
        if (!IsLeaf() && taken_ < items_.size()) ++taken_;
        groups_.push_back(Group(items_).subspan(first, taken_ - first));
    }

    void MoveOneToLast() {
        Group& before = groups_[groups_.size() - 2];
        before = before.first(before.size() - 1);
        groups_.back() = Group(items_).last(2);
    }

    Page PageOf(Group group, PageNumber table) const {
        Page page;
        page.Put(0, IsLeaf() ? kIndexLeaf : kIndexNode);
        page.Put(kTableOffset, table);
        page.data()[kLevelOffset] = number_;
        std::size_t used = 0;
        const std::size_t listed = IsLeaf() ? group.size() : group.size() - 1;
        for (const Item& item : group.first(listed)) {
            Bytes entry = item.entry;
            if (!IsLeaf()) AppendBig(entry, item.child);
            std::memcpy(page.data() + kEntriesOffset + used, entry.data(), entry.size());
            used += entry.size();
            std::uint8_t& mask = page.data()[kMaskOffset + used / 8];
            mask = static_cast<std::uint8_t>(mask | 1u << used % 8);
        }
        if (!IsLeaf()) page.Put(kTailOffset, group.back().child);
        page.Put(kNodeFreeOffset, static_cast<std::uint16_t>(kNodeRoom - used));
        return page;
    }

    std::uint8_t number_;
    std::vector<Item> items_;
    std::size_t taken_ = 0;
    std::vector<Group> groups_;
};

}  // namespace

Bytes IndexEntry(Bytes key, RowId row) {
    AppendBig(key, row.page);
    key.erase(key.end() - 4);  // three bytes of the page's number
    key.push_back(row.row);
    return key;
}

void AppendLongKey(Bytes& key, std::uint32_t value) {
    key.push_back(kValueFollows);
    AppendBig(key, value ^ 0x80000000u);  // the order of signed numbers
}

void AppendTextKey(Bytes& key, ByteView sort_key) {
    key.push_back(kValueFollows);
    Append(key, sort_key);
}

PageSet StoreIndex(PageFile& file, PageNumber table, PageNumber root, std::vector<Bytes> entries) {
    // As texts, which compare byte by byte all the same: at -O3 gcc 12 takes fright at how vectors
    // do.
    const auto text = [](const Bytes& entry) {
        return std::string_view(reinterpret_cast<const char*>(entry.data()), entry.size());
    };
    std::sort(entries.begin(), entries.end(),
              [&](const Bytes& a, const Bytes& b) { return text(a) < text(b); });
    std::vector<Item> items;
    items.reserve(entries.size());
    for (Bytes& entry : entries) items.push_back({std::move(entry)});
    PageSet pages;
    pages.Add(root);
    for (std::uint8_t number = 0;; ++number) {
        const Level level(number, std::move(items));
        if (level.pages() == 1) {
            level.Store(file, table, {root});
            return pages;
        }
        std::vector<PageNumber> numbers(level.pages());
        for (PageNumber& each : numbers) pages.Add(each = file.Allocate());
        items = level.Store(file, table, numbers);
    }
}

}  // namespace tavolin::mdb
