#include "tavolin/model/record_sort.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "tavolin/base/text.h"
#include "tavolin/base/words.h"
#include "tavolin/model/rank_set.h"
#include "tavolin/model/text_ranking.h"

namespace tavolin {
namespace {

constexpr int kIrregularField = 1;

// The sort texts of records: text number i is that of record i. For the irregular field text number
// 2i is that of record i while it is still to be placed, and 2i + 1 when it has been.
class SortTexts {
  public:
    SortTexts(const RecordArena& arena, std::span<const RecordHandle> records, int field)
        : arena_(arena), records_(records), field_(field), paired_(field == kIrregularField) {}

    std::uint32_t count() const { return static_cast<std::uint32_t>(records_.size() << paired_); }

    // See TextRanking.
    std::uint64_t Word(std::uint32_t text, std::size_t offset) {
        const Pieces pieces = PiecesOf(text);
        return MakeWord(BytesAt(pieces, offset), SizeOf(pieces) - offset);
    }
    TextWords FirstWords(std::uint32_t text) {
        const Pieces pieces = PiecesOf(text);
        const std::size_t size = SizeOf(pieces);
        // The field and what follows it side by side, if that is enough. Behind the texts of
        // records is memory that may be read.
        const std::size_t next = pieces[1].empty() ? 2 : 1;
        if (pieces[0].size() + pieces[next].size() >= 2 * TextWord::kBytes) {
            std::array<char, 4 * kWordBytes> bytes;
            const std::size_t taken = std::min(pieces[0].size(), 2 * kWordBytes);
            std::memcpy(bytes.data(), pieces[0].data(), 2 * kWordBytes);
            std::memcpy(bytes.data() + taken, pieces[next].data(), 2 * kWordBytes);
            return {MakeWord(LoadWord(bytes.data()), size),
                    MakeWord(LoadWord(bytes.data() + TextWord::kBytes), size - TextWord::kBytes)};
        }
        const std::uint64_t first = MakeWord(BytesAt(pieces, 0), size);
        if (!TextWord::MoreLeft(first)) return {first, 0};
        return {first, MakeWord(BytesAt(pieces, TextWord::kBytes), size - TextWord::kBytes)};
    }
    void Prefetch(std::uint32_t text) const { arena_.Prefetch(records_[text >> paired_], 3); }
    // Nobody asks which of a record's own two texts is greater.
    bool NeverCompared(std::uint32_t a, std::uint32_t b) const { return paired_ && (a ^ b) == 1; }

  private:
    // A record's fields in bytes that sort as the text does, and where one of them is.
    struct Kept {
        std::size_t at;  // in kept_text_
        std::size_t size;
        std::size_t begin;
        std::size_t end;
    };
    static constexpr std::uint32_t kNotKept = 0xFFFFFFFFu;

    // What a text is joined of: the field, and what stands before and behind it.
    using Pieces = std::array<std::string_view, 3>;

    Pieces PiecesOf(std::uint32_t text) {
        const RecordArena::FieldPlace place = PlaceOf(text >> paired_);
        const bool placed = paired_ && (text & 1) != 0;
        const std::size_t rest = placed ? place.begin : place.end;
        return {place.all.substr(place.begin, place.end - place.begin),
                place.all.substr(0, place.begin), place.all.substr(rest)};
    }
    static std::size_t SizeOf(const Pieces& pieces) {
        return pieces[0].size() + pieces[1].size() + pieces[2].size();
    }
    static std::uint64_t MakeWord(std::uint64_t bytes, std::size_t left) {
        return TextWord::Make(SwapBytes(LowerAscii(bytes)), left);
    }

    // The first bytes behind an offset into the joined pieces, seven or more if there are as many.
    static std::uint64_t BytesAt(std::span<const std::string_view> pieces, std::size_t offset) {
        std::uint64_t bytes = 0;
        std::size_t taken = 0;
        for (const std::string_view piece : pieces) {
            if (offset >= piece.size()) {
                offset -= piece.size();
                continue;
            }
            const char* const at = piece.data() + offset;
            const std::size_t size = piece.size() - offset;
            if (taken == 0 && size >= kWordBytes) return LoadWord(at);
            const std::size_t count = std::min(size, TextWord::kBytes - taken);
            bytes |= LoadPartialWord(at, count) << 8 * taken;
            taken += count;
            if (taken == TextWord::kBytes) break;
            offset = 0;
        }
        return bytes;
    }

    RecordArena::FieldPlace PlaceOf(std::uint32_t record) {
        if (arena_.IsAscii(records_[record])) return arena_.PlaceOf(records_[record], field_);
        if (kept_of_.empty()) kept_of_.resize(records_.size(), kNotKept);
        if (kept_of_[record] == kNotKept) Keep(record);
        const Kept& kept = kept_[kept_of_[record]];
        return {std::string_view(kept_text_).substr(kept.at, kept.size), kept.begin, kept.end};
    }

    void Keep(std::uint32_t record) {
        Kept kept{.at = kept_text_.size(), .size = 0, .begin = 0, .end = 0};
        for (int i = 0; i < kFieldCount; ++i) {
            if (i == field_) kept.begin = kept_text_.size() - kept.at;
            const std::string_view text = arena_.Field(records_[record], i);
            if (IsAscii(text)) {
                kept_text_ += text;
            } else {
                AppendSortBytes(text, kept_text_);
            }
            if (i == field_) kept.end = kept_text_.size() - kept.at;
        }
        kept.size = kept_text_.size() - kept.at;
        kept_text_.append(2 * kWordBytes, '\0');  // may be read like what is behind other texts
        kept_of_[record] = static_cast<std::uint32_t>(kept_.size());
        kept_.push_back(kept);
    }

    const RecordArena& arena_;
    std::span<const RecordHandle> records_;
    int field_;
    bool paired_;
    // For the records that are not ASCII, each when it is first asked for.
    std::vector<std::uint32_t> kept_of_;
    std::vector<Kept> kept_;
    std::string kept_text_;
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
    SortTexts texts(arena, records, field);
    TextRanking ranking(texts, texts.count());
    ranking.Sort();

    std::vector<RecordHandle> sorted;
    sorted.reserve(records.size());
    if (field != kIrregularField) {
        ranking.ForEach(
            [&](std::uint32_t text, std::uint32_t) { sorted.push_back(records[text]); });
        return sorted;
    }
    std::vector<std::uint32_t> ranks(texts.count());
    ranking.ForEach([&](std::uint32_t text, std::uint32_t rank) { ranks[text] = rank; });
    const auto count = static_cast<std::uint32_t>(records.size());
    Placing placing(count, texts.count());
    for (std::uint32_t i = 0; i < count; ++i) placing.Place(i, ranks[2 * i], ranks[2 * i + 1]);
    placing.ForEach([&](std::uint32_t record) { sorted.push_back(records[record]); });
    return sorted;
}

}  // namespace tavolin
