#include "tavolin/base/fold.h"

#include <bit>

#include "tavolin/base/text.h"
#include "tavolin/base/words.h"

namespace tavolin {

namespace {

constexpr std::uint64_t kHashStart = 0x9AE16A3B2F90404F;
constexpr std::uint64_t kHashStep = 0x9E3779B97F4A7C15;
constexpr std::uint64_t kHashMix1 = 0xD6E8FEB86659FD93;
constexpr std::uint64_t kHashMix2 = 0xBF58476D1CE4E5B9;

// Gives `take` the words of the text that make its hash.
template <typename Take>
void ForEachHashWord(std::string_view text, Take take) {
    const char* data = text.data();
    const std::size_t size = text.size();
    if (size == 0) return;
    if (size < kWordBytes) return take(LoadPartialWord(data, size));
    const std::size_t last = size - kWordBytes;
    for (std::size_t i = 0; i < last; i += kWordBytes) take(LoadWord(data + i));
    take(LoadWord(data + last));
}

std::uint64_t HashStep(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * kHashStep;
    return hash ^ hash >> 32;
}

std::uint32_t HashEnd(std::uint64_t hash) {
    hash *= kHashMix1;
    hash ^= hash >> 29;
    hash *= kHashMix2;
    return static_cast<std::uint32_t>(hash >> 32);
}

std::uint32_t HashFolded(std::string_view folded) {
    std::uint64_t hash = kHashStart ^ folded.size();
    ForEachHashWord(folded, [&](std::uint64_t word) { hash = HashStep(hash, word); });
    return HashEnd(hash);
}

}  // namespace

char* FoldTo(std::string_view text, char* out) {
    while (!text.empty()) {
        const bool whole = text.size() >= kWordBytes;
        const std::uint64_t word =
            whole ? LoadWord(text.data()) : LoadPartialWord(text.data(), text.size());
        StoreWord(LowerAscii(word), out);
        const std::uint64_t high = word & kHighBits;
        const std::size_t taken = high    ? static_cast<std::size_t>(std::countr_zero(high)) / 8
                                  : whole ? kWordBytes
                                          : text.size();
        out += taken;
        text.remove_prefix(taken);
        while (!text.empty() && static_cast<std::uint8_t>(text.front()) >= 0x80) {
            const Utf8Unit unit = FirstUnit(text);
            if (unit.well_formed) {
                out = PutUtf8(FoldCharacter(unit.value), out);
            } else {
                *out++ = text.front();
            }
            text.remove_prefix(unit.length);
        }
    }
    return out;
}

std::string Fold(std::string_view text) {
    return WithFolded(text, [](std::string_view folded) { return std::string(folded); });
}

void FoldInto(std::string_view text, std::string& out) {
    WithFolded(text, [&](std::string_view folded) { out.assign(folded); });
}

std::uint32_t HashFold(std::string_view text) {
    std::uint64_t hash = kHashStart ^ text.size();
    std::uint64_t seen = 0;
    ForEachHashWord(text, [&](std::uint64_t word) {
        seen |= word;
        hash = HashStep(hash, LowerAscii(word));
    });
    if ((seen & kHighBits) == 0) return HashEnd(hash);
    return WithFolded(text, HashFolded);
}

}  // namespace tavolin
