#include "tavolin/base/text_search.h"

#include <algorithm>
#include <bit>
#include <utility>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tavolin/base/fold.h"
#include "tavolin/base/text.h"
#include "tavolin/base/words.h"

namespace tavolin {

namespace {

using Variant = std::pair<char32_t, char32_t>;  // a folded character, another that folds to it

std::vector<Variant> MakeVariants() {
    std::vector<Variant> variants;
    for (char32_t c = 0; c <= kLastBmpCharacter; ++c) {
        if (FoldCharacter(c) != c) variants.emplace_back(FoldCharacter(c), c);
    }
    std::sort(variants.begin(), variants.end());
    return variants;
}

// Calls visit(c) for each other character that folds to `folded`.
template <typename Visit>
void ForEachVariant(char32_t folded, Visit visit) {
    static const std::vector<Variant> variants = MakeVariants();
    auto at = std::lower_bound(variants.begin(), variants.end(), Variant{folded, 0});
    for (; at != variants.end() && at->first == folded; ++at) visit(at->second);
}

// How common a byte is in names and notes; a guess does, as it only decides the speed.
int Commonness(char byte) {
    constexpr std::string_view kRisingLetters = "qxjzvwkybfpgmucdhlsrotniae ";
    constexpr int kContinuation = 4, kPunctuation = 6, kDigit = 12, kLead = 18;
    if (IsContinuation(byte)) return kContinuation;
    if (static_cast<std::uint8_t>(byte) >= 0x80) return kLead;
    if (byte >= '0' && byte <= '9') return kDigit;
    const std::size_t place = kRisingLetters.find(byte);
    return place == std::string_view::npos ? kPunctuation : static_cast<int>(place);
}

// Whether `position` lies inside a well-formed character rather than where a unit begins.
bool IsInsideCharacter(std::string_view text, std::size_t position) {
    if (BeginsUnit(text, position)) return false;
    std::size_t start = position;
    while (start > 0 && position - start < 3 && !BeginsUnit(text, start)) --start;
    return BeginsUnit(text, start) && start + FirstUnit(text.substr(start)).length > position;
}

// The high bit of each byte of the word that passes the probe.
std::uint64_t Passing(std::uint64_t word, std::uint8_t mask, std::uint8_t value) {
    return ZeroBytes((word | kEveryByte * mask) ^ kEveryByte * value);
}

}  // namespace

TextSearcher::TextSearcher(std::string_view needle)
    : needle_(Fold(needle)), ascii_(IsAscii(needle_)) {
    if (!needle_.empty()) ChooseProbes(FindVariants());
}

// Notes the variants of another length, and gives for each byte of the needle the bits in which
// the variants of the same length differ from it.
std::string TextSearcher::FindVariants() {
    std::string masks(needle_.size(), '\0');
    std::size_t place = 0;
    ForEachUnit(needle_, [&](const Utf8Unit& unit) {
        well_formed_ = well_formed_ && unit.well_formed;
        if (!unit.well_formed) {
            ++place;
            return;
        }
        ForEachVariant(unit.value, [&](char32_t c) {
            std::string variant;
            AppendUtf8(c, variant);
            if (variant.size() == unit.length) {
                for (std::size_t i = 0; i < variant.size(); ++i) {
                    masks[place + i] |= static_cast<char>(variant[i] ^ needle_[place + i]);
                }
            } else if (std::find(odd_variants_.begin(), odd_variants_.end(), variant) ==
                       odd_variants_.end()) {
                odd_variants_.push_back(std::move(variant));
            }
        });
        place += unit.length;
    });
    return masks;
}

void TextSearcher::ChooseProbes(const std::string& masks) {
    std::size_t rarest = 0, second = needle_.size() - 1;
    const auto rarer = [&](std::size_t i, std::size_t j) {
        return Commonness(needle_[i]) < Commonness(needle_[j]);
    };
    if (rarer(second, rarest)) std::swap(rarest, second);
    for (std::size_t i = 1; i + 1 < needle_.size(); ++i) {
        if (rarer(i, rarest)) {
            second = std::exchange(rarest, i);
        } else if (rarer(i, second)) {
            second = i;
        }
    }
    for (const std::size_t place : {rarest, second}) {
        const auto mask = static_cast<std::uint8_t>(masks[place]);
        const auto value = static_cast<std::uint8_t>(needle_[place] | masks[place]);
        probes_[place == rarest ? 0 : 1] = Probe{place, mask, value};
    }
    if (rarest == second) probes_[1] = probes_[0];
}

bool TextSearcher::FoundIn(std::string_view text) const {
    return Found(text, &TextSearcher::FoundByBytes);
}

bool TextSearcher::FoundInPadded(std::string_view text, bool is_ascii) const {
    if (!is_ascii) return Found(text, &TextSearcher::FoundByPaddedBytes);
    return needle_.empty() || (ascii_ && FoundByPaddedBytes(text));
}

bool TextSearcher::FoundInPortable(std::string_view text) const {
    return Found(text, &TextSearcher::FoundByWords);
}

// The search by bytes sees only occurrences without odd variants. It says no to some texts that
// have one, but never yes to a text that has none.
bool TextSearcher::Found(std::string_view text, ByteSearch by_bytes) const {
    if (needle_.empty()) return true;
    if (!well_formed_) return FoundInFolded(text);
    return (this->*by_bytes)(text) || (HasOddVariant(text) && FoundInFolded(text));
}

bool TextSearcher::HasOddVariant(std::string_view text) const {
    if (odd_variants_.empty() || IsAscii(text)) return false;
    return std::any_of(odd_variants_.begin(), odd_variants_.end(), [&](const std::string& variant) {
        return text.find(variant) != std::string_view::npos;
    });
}

bool TextSearcher::FoundInFolded(std::string_view text) const {
    return WithFolded(text, [&](std::string_view folded) {
        std::size_t found = folded.find(needle_);
        while (found != std::string_view::npos && IsInsideCharacter(folded, found)) {
            found = folded.find(needle_, found + 1);
        }
        return found != std::string_view::npos;
    });
}

// Each candidate bit group stands for the needle beginning at that byte of the block.
template <unsigned kBitsPerByte>
bool TextSearcher::MatchesAny(const char* block, std::uint64_t candidates) const {
    for (; candidates != 0; candidates &= candidates - 1) {
        const unsigned place = static_cast<unsigned>(std::countr_zero(candidates)) / kBitsPerByte;
        if (EqualFold(std::string_view(block + place, needle_.size()), needle_)) return true;
    }
    return false;
}

// A block covers eight places where the needle may begin; the last block overlaps the one before.
bool TextSearcher::FoundByWords(std::string_view text) const {
    if (text.size() < needle_.size()) return false;
    const char* const begin = text.data();
    const auto candidates = [&](const char* block, auto load) {
        const auto& [first, second] = probes_;
        return Passing(load(block + first.offset), first.mask, first.value) &
               Passing(load(block + second.offset), second.mask, second.value);
    };
    const std::size_t places = text.size() - needle_.size() + 1;
    if (places < kWordBytes) {
        const auto load = [&](const char* bytes) { return LoadPartialWord(bytes, places); };
        const std::uint64_t covered = (std::uint64_t{1} << 8 * places) - 1;
        return MatchesAny<8>(begin, candidates(begin, load) & covered);
    }
    const char* const last = begin + places - kWordBytes;
    for (const char* block = begin; block < last; block += kWordBytes) {
        if (MatchesAny<8>(block, candidates(block, LoadWord))) return true;
    }
    return MatchesAny<8>(last, candidates(last, LoadWord));
}

#if defined(__SSE2__)

namespace {

// The probes in registers: sixteen places to a block, a bit for each that passes both.
class WideProbes {
  public:
    template <typename Probes>
    explicit WideProbes(const Probes& probes)
        : first_offset_(probes[0].offset),
          second_offset_(probes[1].offset),
          masks_{Fill(probes[0].mask), Fill(probes[1].mask)},
          values_{Fill(probes[0].value), Fill(probes[1].value)} {}

    std::uint32_t Passing(const char* block) const {
        const __m128i both =
            _mm_and_si128(Test(block + first_offset_, 0), Test(block + second_offset_, 1));
        return static_cast<std::uint32_t>(_mm_movemask_epi8(both));
    }

  private:
    static __m128i Fill(std::uint8_t byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
    __m128i Test(const char* bytes, int probe) const {
        const __m128i loaded = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        return _mm_cmpeq_epi8(_mm_or_si128(loaded, masks_[probe]), values_[probe]);
    }

    std::size_t first_offset_, second_offset_;
    __m128i masks_[2], values_[2];
};

constexpr std::size_t kWideBlock = 16;

}  // namespace

bool TextSearcher::FoundByBytes(std::string_view text) const {
    if (text.size() < needle_.size() + kWideBlock - 1) return FoundByWords(text);
    const WideProbes probes(probes_);
    const char* const last = text.data() + (text.size() - needle_.size() + 1 - kWideBlock);
    for (const char* block = text.data(); block < last; block += kWideBlock) {
        if (MatchesAny<1>(block, probes.Passing(block))) return true;
    }
    return MatchesAny<1>(last, probes.Passing(last));
}

// Places of the last block from which the needle would reach beyond the text are cut off.
bool TextSearcher::FoundByPaddedBytes(std::string_view text) const {
    static_assert(kPadding >= kWideBlock - 1);
    if (text.size() < needle_.size()) return false;
    const WideProbes probes(probes_);
    const char* block = text.data();
    std::size_t places = text.size() - needle_.size() + 1;
    for (; places > kWideBlock; block += kWideBlock, places -= kWideBlock) {
        if (MatchesAny<1>(block, probes.Passing(block))) return true;
    }
    return MatchesAny<1>(block, probes.Passing(block) & ((std::uint32_t{1} << places) - 1));
}

#else

bool TextSearcher::FoundByBytes(std::string_view text) const { return FoundByWords(text); }
bool TextSearcher::FoundByPaddedBytes(std::string_view text) const { return FoundByWords(text); }

#endif

}  // namespace tavolin
