#include "tavolin/model/record_search.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "tavolin/base/text_search.h"

namespace tavolin {
namespace {

// After a sort the records lie anywhere, so those to come are fetched while others are searched.
constexpr std::size_t kAhead = 32;

// Appends those of a run of records in which the searcher finds its needle. The texts lie in the
// first `lines` lines of memory of most records.
template <class TextOf>
void AppendMatches(const RecordArena& arena, std::span<const RecordHandle> run,
                   const TextSearcher& searcher, TextOf text_of, std::size_t lines,
                   std::vector<RecordHandle>& matches) {
    std::array<std::string_view, TextSearcher::kMostTexts> texts;
    for (std::size_t begin = 0; begin < run.size(); begin += texts.size()) {
        const std::size_t count = std::min(texts.size(), run.size() - begin);
        std::uint32_t not_ascii = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = begin + i;
            if (at + kAhead < run.size()) arena.Prefetch(run[at + kAhead], lines);
            texts[i] = text_of(run[at]);
            not_ascii |= std::uint32_t{!arena.IsAscii(run[at])} << i;
        }
        std::uint32_t found = searcher.FoundIn(std::span(texts).first(count), not_ascii);
        for (; found != 0; found &= found - 1) {
            matches.push_back(run[begin + static_cast<std::size_t>(std::countr_zero(found))]);
        }
    }
}

}  // namespace

std::vector<RecordHandle> RecordsWithText(const RecordCollection& records, std::string_view text,
                                          int field) {
    const RecordArena& arena = records.arena();
    const TextSearcher searcher(text);
    std::vector<RecordHandle> matches;
    records.ForEachRun([&](std::span<const RecordHandle> run) {
        if (field == kNoField) {
            AppendMatches(
                arena, run, searcher, [&](RecordHandle record) { return arena.AllFields(record); },
                3, matches);
        } else {
            AppendMatches(
                arena, run, searcher,
                [&](RecordHandle record) { return arena.Field(record, field); }, 2, matches);
        }
    });
    return matches;
}

}  // namespace tavolin
