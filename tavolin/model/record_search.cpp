#include "tavolin/model/record_search.h"

#include <algorithm>
#include <array>
#include <bit>
#include <future>
#include <span>
#include <system_error>
#include <thread>

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

// So many records are worth another processor's start, and so many of these get no more out of the
// machine's memory.
constexpr std::size_t kRecordsForAnother = 32768;
constexpr std::size_t kMostProcessors = 4;

std::size_t ProcessorsFor(std::size_t records) {
    const std::size_t wanted = std::min(records / kRecordsForAnother, kMostProcessors);
    if (wanted < 2) return 1;
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, wanted);
}

using Runs = std::vector<std::span<const RecordHandle>>;

// What search(run, matches) finds in each run, in their order. Parts of them are searched by
// threads that are gone when this returns; where none can be started the caller does it all.
template <class Search>
std::vector<RecordHandle> SearchRuns(const Runs& runs, std::size_t processors,
                                     const Search& search) {
    const auto search_part = [&](std::size_t part) {
        std::vector<RecordHandle> matches;
        const std::size_t end = runs.size() * (part + 1) / processors;
        for (std::size_t i = runs.size() * part / processors; i < end; ++i) {
            search(runs[i], matches);
        }
        return matches;
    };
    std::vector<std::future<std::vector<RecordHandle>>> others;
    for (std::size_t i = 1; i < processors; ++i) {
        try {
            others.push_back(std::async(std::launch::async, search_part, i));
        } catch (const std::system_error&) {
            others.push_back(std::async(std::launch::deferred, search_part, i));
        }
    }
    auto matches = search_part(0);
    for (auto& other : others) {
        const auto more = other.get();
        matches.insert(matches.end(), more.begin(), more.end());
    }
    return matches;
}

}  // namespace

std::vector<RecordHandle> RecordsWithText(const RecordCollection& records, std::string_view text,
                                          int field) {
    const RecordArena& arena = records.arena();
    const TextSearcher searcher(text);
    Runs runs;
    records.ForEachRun([&](std::span<const RecordHandle> run) { runs.push_back(run); });
    const std::size_t processors = ProcessorsFor(static_cast<std::size_t>(records.Count()));
    if (field == kNoField) {
        const auto text_of = [&](RecordHandle record) { return arena.AllFields(record); };
        return SearchRuns(runs, processors, [&](const auto& run, auto& matches) {
            AppendMatches(arena, run, searcher, text_of, 3, matches);
        });
    }
    const auto text_of = [&](RecordHandle record) { return arena.Field(record, field); };
    return SearchRuns(runs, processors, [&](const auto& run, auto& matches) {
        AppendMatches(arena, run, searcher, text_of, 2, matches);
    });
}

}  // namespace tavolin
