// Sorting many texts that are read seven bytes at a time from wherever they lie.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
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

// Texts are known by their numbers, from 0 on. `Texts` tells the word of a text at a byte offset:
//
//     std::uint64_t Word(std::uint32_t text, std::size_t offset) const;
template <class Texts>
class TextRanking {
  public:
    TextRanking(const Texts& texts, std::uint32_t count)
        : texts_(texts), entries_(count), differs_(count) {
        for (std::uint32_t i = 0; i < count; ++i) entries_[i].text = i;
    }

    // Brings the texts into their order, equal ones by their numbers.
    void Sort() {
        if (entries_.empty()) return;
        std::vector<Range> waiting{{0, entries_.size(), 0}};
        while (!waiting.empty()) {
            const Range range = waiting.back();
            waiting.pop_back();
            SortRange(range);
            ForEachRun(range, [&](std::size_t begin, std::size_t end) {
                differs_[begin] = true;
                if (end - begin > 1 && TextWord::MoreLeft(entries_[begin].word)) {
                    waiting.push_back({begin, end, range.offset + TextWord::kBytes});
                }
            });
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
    struct Range {
        std::size_t begin;
        std::size_t end;
        std::size_t offset;
    };

    void SortRange(const Range& range) {
        const auto entries = std::span(entries_).subspan(range.begin, range.end - range.begin);
        for (Entry& entry : entries) entry.word = texts_.Word(entry.text, range.offset);
        std::sort(entries.begin(), entries.end());
    }

    template <class Body>
    void ForEachRun(const Range& range, Body&& body) {
        for (std::size_t begin = range.begin; begin < range.end;) {
            std::size_t end = begin + 1;
            while (end < range.end && entries_[end].word == entries_[begin].word) ++end;
            body(begin, end);
            begin = end;
        }
    }

    const Texts& texts_;
    std::vector<Entry> entries_;
    std::vector<bool> differs_;  // from the text before it
};

}  // namespace tavolin
