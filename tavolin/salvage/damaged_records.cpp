// The records of a damaged state.
#include <utility>

#include "tavolin/salvage/damaged_bag.h"
#include "tavolin/salvage/damaged_bytes.h"

namespace tavolin {
namespace {

std::string RecordsText(std::int64_t count) {
    return std::to_string(count) + (count == 1 ? " record" : " records");
}

bool IsBeyondDoubt(const std::optional<RecordImage>& image) {
    return image && !image->doubt && !image->key_in_doubt;
}

// The images that can be read among the bytes of a set, and the stretches that make no sense.
class RecordSearch {
  public:
    RecordSearch(DamagedBag& bag, std::span<const std::uint8_t> bytes, const StoredObject& set,
                 const std::string& title)
        : bag_(bag),
          bytes_(bytes),
          blocks_(set["Record"]),
          stated_(set["RecordsCount"]),
          end_(blocks_.at + blocks_.size),
          title_(title) {
        Search();
        there_ = static_cast<std::int64_t>(records_.size());
        wanted_ = stated_.found ? bag_.Int(stated_) : -1;
        count_good_ = wanted_ >= there_ && (wanted_ == there_) == gaps_.empty();
        Number();
    }

    void TellLosses() const {
        for (const Gap& gap : gaps_) TellGap(gap);
        if (stated_.found && gaps_.empty() && wanted_ != there_) {
            bag_.Add(wanted_ > there_ ? Finding::Kind::kLoss : Finding::Kind::kDamage, stated_.at,
                     title_,
                     "there should be " + RecordsText(wanted_) + "; there are " +
                         std::to_string(there_));
        } else if (gaps_.size() > 1 && count_good_) {
            bag_.Add(
                Finding::Kind::kLoss, blocks_.at, title_,
                RecordsText(wanted_ - there_) + " of " + std::to_string(wanted_) + " lost in all");
        }
    }

    void TellDoubts(const std::vector<bool>& own_key) const {
        for (std::size_t i = 0; i < records_.size(); ++i) {
            const RecordImage& image = records_[i].image;
            const auto position = static_cast<std::size_t>(records_[i].position);
            const bool named = position != 0 && position <= own_key.size() && own_key[position - 1];
            const char* doubt = image.doubt;
            if (doubt == nullptr && image.key_in_doubt && !named) {
                doubt = "a value of its key, or the hash of that, is damaged";
            }
            if (doubt == nullptr) continue;
            bag_.Add(Finding::Kind::kDamage, records_[i].at, title_ + ", " + NameOf(i),
                     std::string(doubt) + "; the record can be read, but look at it");
        }
    }

    std::vector<DamagedBag::Record> Take() && { return std::move(records_); }

  private:
    struct Gap {
        std::size_t behind;  // how many records stand in front of it
        std::size_t at;
        std::size_t size;
    };

    void Search() {
        for (std::size_t at = blocks_.at; at < end_;) {
            const std::size_t start = at;
            auto image = ImageAt(at);
            while (!image && at + 8 < end_) image = SearchedImageAt(at += 8);
            if (!image) at = end_;
            if (at != start) gaps_.push_back({records_.size(), start, at - start});
            if (!image) break;
            records_.push_back({at, 0, *image});
            at += image->size;
        }
    }

    std::optional<RecordImage> Read(std::size_t at) const {
        return RecordImage::Read(bytes_.subspan(at, end_ - at));
    }

    std::optional<RecordImage> ImageAt(std::size_t at) const {
        auto image = Read(at);
        if (image && image->size != image->stated_size && image->stated_size <= end_ - at) {
            // What stands behind it tells whether its size is wrong, or its fields' ends are.
            if (IsBeyondDoubt(Read(at + image->stated_size))) image.reset();
        }
        return image;
    }

    // What was searched for must be sound, or have a sound one behind it.
    std::optional<RecordImage> SearchedImageAt(std::size_t at) const {
        const auto image = ImageAt(at);
        if (!image || IsBeyondDoubt(image) || IsBeyondDoubt(Read(at + image->size))) return image;
        return {};
    }

    // In front of the first gap positions are sure, and behind the last one with a good count.
    void Number() {
        for (std::size_t i = 0; i < records_.size(); ++i) {
            const auto number = static_cast<std::int64_t>(i) + 1;
            if (gaps_.empty() || i < gaps_.front().behind) {
                records_[i].position = static_cast<std::int32_t>(number);
            } else if (count_good_ && i >= gaps_.back().behind) {
                records_[i].position = static_cast<std::int32_t>(wanted_ - there_ + number);
            }
        }
    }

    std::string NameOf(std::size_t i) const {
        const std::int32_t position = records_[i].position;
        return "record " + (position != 0 ? std::to_string(position) + " " : std::string()) +
               "(key " + records_[i].image.Key() + ")";
    }

    void TellGap(const Gap& gap) const {
        std::string what = "the records that stood here are lost";
        if (count_good_ && gaps_.size() == 1) what = RecordsText(wanted_ - there_) + " lost";
        what += ": " + BytesText(gap.size) + " make no sense";
        if (gap.behind > 0) what += ", behind " + NameOf(gap.behind - 1);
        if (gap.behind < records_.size()) what += ", in front of " + NameOf(gap.behind);
        bag_.Add(Finding::Kind::kLoss, gap.at, title_, what);
    }

    DamagedBag& bag_;
    std::span<const std::uint8_t> bytes_;
    const StoredItem& blocks_;
    const StoredItem& stated_;
    std::size_t end_;
    const std::string& title_;
    std::vector<DamagedBag::Record> records_;
    std::vector<Gap> gaps_;
    std::int64_t there_ = 0;
    std::int64_t wanted_ = 0;  // as the set says itself, -1 where it does not
    bool count_good_ = false;
};

}  // namespace

std::vector<DamagedBag::Record> DamagedBag::Records(const StoredObject& set,
                                                    const std::string& title,
                                                    const std::vector<bool>& own_key) {
    RecordSearch search(*this, bytes_, set, title);
    search.TellLosses();
    search.TellDoubts(own_key);
    return std::move(search).Take();
}

}  // namespace tavolin
