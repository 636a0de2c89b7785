// A state that cannot be believed, read as far as it goes.
//
// The layout says what must stand where, so nothing that the bytes say about themselves is needed
// to go on: a missing key table is guessed from the order of the keys, a wrong length is noticed
// because what should stand behind it does not, and behind a stretch that makes no sense the
// reading goes on at the next place that does.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/salvage/findings.h"
#include "tavolin/salvage/layout.h"
#include "tavolin/salvage/record_image.h"

namespace tavolin {

struct StoredObject;

// What was found for one slot of a layout.
struct StoredItem {
    bool found = false;
    std::size_t at = 0;                  // where the value begins
    std::size_t size = 0;                // of the value, as far as it is there
    bool flag = false;                   // of a Boolean
    std::optional<std::string> instead;  // of a text or a byte: what to take in its place
    std::vector<StoredObject> objects;   // one of an object, any number of a series
};

struct StoredObject {
    const Layout* layout = nullptr;
    std::size_t at = 0;
    std::vector<StoredItem> items;  // one for each slot
    const StoredItem& operator[](std::string_view key) const;
    StoredItem& operator[](std::string_view key);
};

class DamagedBag {
  public:
    // Reads the array, which begins at that offset of its file. The bytes must outlive this.
    DamagedBag(std::span<const std::uint8_t> bytes, std::uint64_t file_offset,
               const Layout& layout);

    const StoredObject& root() const { return root_; }
    Findings& findings() { return findings_; }
    // Whether the table of the keys is there.
    bool keys_known() const { return keys_known_; }
    // How much of what must be there was found.
    std::size_t items_found() const { return items_found_; }

    std::string_view Text(const StoredItem& item) const;
    std::int32_t Int(const StoredItem& item) const;
    std::uint8_t Byte(const StoredItem& item, std::uint8_t otherwise) const;
    std::int64_t Date(const StoredItem& item) const;

    struct Record {
        std::size_t at;         // in the array
        std::int32_t position;  // in the set as it was saved, from 1; 0 when that cannot be told
        RecordImage image;
    };
    // Those that can be read of a record set; what cannot, or is in doubt, is added to the findings
    // under that title, without those in `own_key`, whose hash need not be that of their key.
    std::vector<Record> Records(const StoredObject& set, const std::string& title,
                                const std::vector<bool>& own_key);

    void Add(Finding::Kind kind, std::size_t at, std::string where, std::string what);

  private:
    struct Head {
        std::size_t value = 0;
        std::size_t size = 0;
        bool length_fits = true;
        bool flag = false;
    };
    struct Place {
        std::size_t at;
        std::size_t slot;
    };
    struct Title {
        const StoredObject* object;
        std::size_t number;  // within a series; 0 elsewhere
    };

    void ReadHeader();
    bool ReadKeyTable(std::size_t at, std::size_t end);
    bool KeyFits(const Slot& slot, std::uint64_t key) const;
    std::optional<Head> HeadAt(const Slot& slot, std::size_t at, std::size_t end) const;
    std::optional<Head> ValueAt(const Slot& slot, std::size_t at, std::size_t end) const;
    std::optional<Head> MendedHeadAt(const Layout& layout, std::size_t slot, std::size_t at,
                                     std::size_t end);
    bool Follows(const Layout& layout, std::size_t slot, std::size_t at, std::size_t end) const;
    std::optional<Place> Resync(const Layout& layout, std::size_t slot, std::size_t from,
                                std::size_t end) const;
    std::size_t ReadObject(StoredObject& object, const Layout& layout, std::size_t at,
                           std::size_t end, bool end_known);
    std::size_t ReadItem(StoredObject& object, std::size_t slot, const Head& head, std::size_t end,
                         bool end_known);
    std::size_t ReadSeries(StoredItem& item, const Layout& layout, std::size_t at, std::size_t end,
                           bool end_known);
    bool ElementAt(const Layout& layout, std::size_t at, std::size_t end, bool chain) const;
    std::string Where(std::string_view words) const;

    std::span<const std::uint8_t> bytes_;
    std::uint64_t file_offset_;
    std::vector<std::string> keys_;
    bool keys_known_ = false;
    std::map<std::string, std::uint64_t, std::less<>> ids_;
    std::map<std::uint64_t, std::string> learned_;
    std::size_t items_end_ = 0;
    bool items_end_known_ = false;
    std::size_t items_found_ = 0;
    std::vector<Title> titles_;
    StoredObject root_;
    Findings findings_;
};

}  // namespace tavolin
