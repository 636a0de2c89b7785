// Sorting many texts that are read seven bytes at a time from wherever they lie.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace tavolin {

// Up to seven bytes of a text in an order of their own: the bytes from the high end down, and in
// the low byte how many are left, 8 meaning more than the seven. Words of two texts that agree up
// to there compare as the texts do, unless they are equal and more is left.
struct TextWord {
    static constexpr std::size_t kBytes = 7;
    static constexpr std::uint64_t kMoreLeft = 8;

    static std::uint64_t Make(std::uint64_t big_endian_bytes, std::size_t left) {
        return (big_endian_bytes & ~std::uint64_t{0xFF}) | std::min<std::size_t>(left, kMoreLeft);
    }
    static bool MoreLeft(std::uint64_t word) { return (word & 0xFF) == kMoreLeft; }
};

// The first two; the second means nothing unless the first says that more is left.
struct TextWords {
    std::uint64_t first;
    std::uint64_t second;
};

// Texts are known by their numbers, from 0 on. `Texts` tells about them:
//
//     std::uint64_t Word(std::uint32_t text, std::size_t offset);  // the TextWord at a byte offset
//     TextWords FirstWords(std::uint32_t text);                    // those at 0 and at kBytes
//     void Prefetch(std::uint32_t text);                           // Word will be asked for soon
//     bool NeverCompared(std::uint32_t a, std::uint32_t b);        // may count as equal
template <class Texts>
class TextRanking {
  public:
    TextRanking(Texts& texts, std::uint32_t count)
        : texts_(texts), entries_(count), second_(count), differs_(count) {}

    // Brings the texts into their order, equal ones by their numbers.
    //
    // All that is undecided is read one word further in one walk before any of it is sorted: the
    // texts lie anywhere, and waiting for one at a time would take most of the time. For the same
    // reason the first walk, where texts may still follow each other in memory, reads two words.
    void Sort() {
        std::vector<Range> undecided;
        if (!entries_.empty())
            undecided.push_back({0, static_cast<std::uint32_t>(entries_.size())});
        std::vector<Range> next;
        for (std::size_t offset = 0; !undecided.empty(); offset += TextWord::kBytes) {
            if (offset == 0) {
                ReadFirstWords();
            } else if (offset == TextWord::kBytes) {
                TakeSecondWords(undecided);
            } else {
                ReadWords(undecided, offset);
            }
            next.clear();
            for (const Range& range : undecided) {
                SortWords(std::span(entries_).subspan(range.begin, range.end - range.begin));
                FindUndecided(range, next);
            }
            undecided.swap(next);
        }
    }

    // Calls body(text, rank) in the order of the texts; equal texts have one rank, the first is 0.
    template <class Body>
    void ForEach(Body&& body) const {
        std::uint32_t rank = 0;
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            if (i > 0 && differs_[i]) ++rank;
            body(entries_[i].text, rank);
        }
    }

  private:
    struct Entry {
        std::uint64_t word;
        std::uint32_t text;
        bool operator<(const Entry& other) const {
            return word != other.word ? word < other.word : text < other.text;
        }
    };
    // Entries that agree so far.
    struct Range {
        std::uint32_t begin;
        std::uint32_t end;
    };

    static constexpr std::uint32_t kAhead = 32;

    void ReadFirstWords() {
        const auto count = static_cast<std::uint32_t>(entries_.size());
        for (std::uint32_t text = 0; text < count; ++text) {
            if (count - text > kAhead) texts_.Prefetch(text + kAhead);
            const TextWords words = texts_.FirstWords(text);
            entries_[text] = {words.first, text};
            second_[text] = words.second;
        }
    }

    void TakeSecondWords(std::span<const Range> ranges) {
        for (const Range& range : ranges) {
            for (std::uint32_t i = range.begin; i < range.end; ++i) {
                entries_[i].word = second_[entries_[i].text];
            }
        }
    }

    void ReadWords(std::span<const Range> ranges, std::size_t offset) {
        // Runs ahead of the reading, over the same entries.
        std::size_t range_ahead = 0;
        std::uint32_t ahead = ranges[0].begin;
        auto prefetch_next = [&] {
            if (range_ahead == ranges.size()) return;
            texts_.Prefetch(entries_[ahead].text);
            if (++ahead < ranges[range_ahead].end) return;
            if (++range_ahead < ranges.size()) ahead = ranges[range_ahead].begin;
        };
        for (std::uint32_t i = 0; i < kAhead; ++i) prefetch_next();
        for (const Range& range : ranges) {
            for (std::uint32_t i = range.begin; i < range.end; ++i) {
                prefetch_next();
                entries_[i].word = texts_.Word(entries_[i].text, offset);
            }
        }
    }

    // Entries come here in the order of their texts' numbers, which those of equal words keep.
    void SortWords(std::span<Entry> entries) {
        constexpr std::size_t kWorthDistributing = 1024;
        if (entries.size() < kWorthDistributing) {
            std::sort(entries.begin(), entries.end());
        } else {
            Distribute(entries);
        }
    }

    // Sorts by one byte of the words after another, the lowest first.
    void Distribute(std::span<Entry> entries) {
        std::array<std::array<std::uint32_t, 256>, 8> places{};
        for (const Entry& entry : entries) {
            for (unsigned byte = 0; byte < 8; ++byte) ++places[byte][ByteOf(entry.word, byte)];
        }
        scratch_.resize(std::max(scratch_.size(), entries.size()));
        std::span<Entry> from = entries;
        std::span<Entry> to = std::span(scratch_).first(entries.size());
        for (unsigned byte = 0; byte < 8; ++byte) {
            auto& place = places[byte];
            if (place[ByteOf(entries[0].word, byte)] == entries.size()) continue;
            std::uint32_t sum = 0;
            for (std::uint32_t& count : place) sum += std::exchange(count, sum);
            for (const Entry& entry : from) to[place[ByteOf(entry.word, byte)]++] = entry;
            std::swap(from, to);
        }
        if (from.data() != entries.data()) std::copy(from.begin(), from.end(), entries.begin());
    }
    static std::size_t ByteOf(std::uint64_t word, unsigned byte) { return word >> 8 * byte & 0xFF; }

    // Notes where runs of equal words begin, and those that a further word has to tell apart.
    void FindUndecided(const Range& range, std::vector<Range>& undecided) {
        for (std::uint32_t begin = range.begin; begin < range.end;) {
            const std::uint64_t word = entries_[begin].word;
            std::uint32_t end = begin + 1;
            while (end < range.end && entries_[end].word == word) ++end;
            differs_[begin] = true;
            const bool settled =
                end - begin == 1 || !TextWord::MoreLeft(word) ||
                (end - begin == 2 &&
                 texts_.NeverCompared(entries_[begin].text, entries_[begin + 1].text));
            if (!settled) undecided.push_back({begin, end});
            begin = end;
        }
    }

    Texts& texts_;
    std::vector<Entry> entries_;
    std::vector<std::uint64_t> second_;  // the second word of each text, where it has one
    std::vector<Entry> scratch_;
    std::vector<bool> differs_;  // from the text before it
};

}  // namespace tavolin
