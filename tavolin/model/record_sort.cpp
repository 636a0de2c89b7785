#include "tavolin/model/record_sort.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "tavolin/base/text.h"
#include "tavolin/base/words.h"
#include "tavolin/model/order_list.h"
#include "tavolin/model/rank_set.h"
#include "tavolin/model/text_ranking.h"

namespace tavolin {
namespace {

constexpr int kIrregularField = 1;

// The sort texts of records: text number i is that of record i while it is still to be placed,
// text number n + i, for the irregular field alone, that of record i when it has been.
class SortTexts {
  public:
    SortTexts(const RecordArena& arena, std::span<const RecordHandle> records, int field)
        : arena_(arena), records_(records), field_(field), kept_of_(records.size(), kNoHandle) {
        for (std::size_t i = 0; i < records.size(); ++i) {
            if (!arena.IsAscii(records[i])) Keep(i);
        }
    }

    // See TextRanking.
    std::uint64_t Word(std::uint32_t text, std::size_t offset) const {
        const bool placed = text >= records_.size();
        const Joined joined = JoinedOf(placed ? text - records_.size() : text);
        const std::string_view pieces[] = {
            joined.all.substr(joined.begin, joined.end - joined.begin),
            joined.all.substr(0, joined.begin),
            joined.all.substr(placed ? joined.begin : joined.end)};
        char bytes[kWordBytes] = {};
        std::size_t taken = 0;
        std::size_t left = 0;
        for (const std::string_view piece : pieces) {
            const std::size_t skipped = std::min(offset, piece.size());
            offset -= skipped;
            const std::size_t rest = piece.size() - skipped;
            const std::size_t room = std::min(rest, TextWord::kBytes - taken);
            if (room > 0) std::memcpy(bytes + taken, piece.data() + skipped, room);
            taken += room;
            left += rest;
        }
        return TextWord::Make(SwapBytes(LowerAscii(LoadWord(bytes))), left);
    }

  private:
    // All ten fields, and where in them the one to sort by is.
    struct Joined {
        std::string_view all;
        std::size_t begin;
        std::size_t end;
    };
    // The same in bytes that sort as the text does.
    struct Kept {
        std::string all;
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    void Keep(std::size_t record) {
        Kept kept;
        for (int i = 0; i < kFieldCount; ++i) {
            if (i == field_) kept.begin = kept.all.size();
            AppendSortBytes(arena_.Field(records_[record], i), kept.all);
            if (i == field_) kept.end = kept.all.size();
        }
        kept_of_[record] = static_cast<std::uint32_t>(kept_.size());
        kept_.push_back(std::move(kept));
    }

    Joined JoinedOf(std::size_t record) const {
        if (kept_of_[record] != kNoHandle) {
            const Kept& kept = kept_[kept_of_[record]];
            return {kept.all, kept.begin, kept.end};
        }
        const std::string_view all = arena_.AllFields(records_[record]);
        const std::string_view field = arena_.Field(records_[record], field_);
        const auto begin = static_cast<std::size_t>(field.data() - all.data());
        return {all, begin, begin + field.size()};
    }

    const RecordArena& arena_;
    std::span<const RecordHandle> records_;
    int field_;
    std::vector<std::uint32_t> kept_of_;  // kNoHandle for a text that is read where it lies
    std::vector<Kept> kept_;
};

// Places records one after another: each directly behind the right-most placed one whose placed
// text is not greater than its own text, or at the front.
//
// That right-most one is always a *low*: a placed record whose placed text is smaller than all
// those to its right. The lows have rising texts, so it is the low with the greatest text that is
// not greater. A record that is placed never comes to be a low later, because what is placed can
// only lower the smallest text to its right; so each enters and leaves the lows once at most.
class Placing {
  public:
    Placing(std::uint32_t records, std::uint32_t ranks)
        : lows_(ranks), low_of_rank_(ranks), next_(std::size_t{records} + 1, records) {}

    // `own` is the rank of the record's own text, `placed` that of its text once it is placed.
    void Place(std::uint32_t record, std::uint32_t own, std::uint32_t placed) {
        const auto before = lows_.AtOrBelow(own);
        const std::uint32_t left = before == RankSet::kNone ? Head() : low_of_rank_[before];
        next_[record] = next_[left];
        next_[left] = record;
        // The low above is the smallest text to the right of the new place.
        const std::uint32_t smallest_right = lows_.Above(own);
        if (smallest_right != RankSet::kNone && placed >= smallest_right) return;
        for (auto rank = before; rank != RankSet::kNone && rank >= placed;) {
            lows_.Erase(rank);
            rank = lows_.AtOrBelow(rank);
        }
        lows_.Insert(placed);
        low_of_rank_[placed] = record;
    }

    // Calls body(record) in the order that has come about.
    template <class Body>
    void ForEach(Body&& body) const {
        for (std::uint32_t at = next_[Head()]; at != Head(); at = next_[at]) body(at);
    }

  private:
    // The end of the list, which is its beginning too.
    std::uint32_t Head() const { return static_cast<std::uint32_t>(next_.size() - 1); }

    RankSet lows_;
    std::vector<std::uint32_t> low_of_rank_;
    std::vector<std::uint32_t> next_;
};

}  // namespace

std::vector<RecordHandle> SortedByField(const RecordArena& arena,
                                        std::span<const RecordHandle> records, int field) {
    const auto count = static_cast<std::uint32_t>(records.size());
    const std::uint32_t texts = field == kIrregularField ? 2 * count : count;
    const SortTexts sort_texts(arena, records, field);
    TextRanking ranking(sort_texts, texts);
    ranking.Sort();

    std::vector<RecordHandle> sorted;
    sorted.reserve(count);
    if (field != kIrregularField) {
        ranking.ForEach(
            [&](std::uint32_t text, std::uint32_t) { sorted.push_back(records[text]); });
        return sorted;
    }
    std::vector<std::uint32_t> ranks(texts);
    ranking.ForEach([&](std::uint32_t text, std::uint32_t rank) { ranks[text] = rank; });
    Placing placing(count, texts);
    for (std::uint32_t i = 0; i < count; ++i) placing.Place(i, ranks[i], ranks[count + i]);
    placing.ForEach([&](std::uint32_t record) { sorted.push_back(records[record]); });
    return sorted;
}

}  // namespace tavolin
