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

}  // namespace

TextSearcher::TextSearcher(std::string_view needle)
    : needle_(Fold(needle)), ascii_(IsAscii(needle_)) {
    if (needle_.empty()) return;
    std::string masks = FindVariants();
    ChooseProbes(masks);
    MakeWords(std::move(masks));
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

void TextSearcher::MakeWords(std::string masks) {
    masks.resize((masks.size() + kWordBytes - 1) / kWordBytes * kWordBytes, '\xFF');
    std::string values = needle_;
    values.resize(masks.size(), '\xFF');
    for (std::size_t i = 0; i < masks.size(); i += kWordBytes) {
        const std::uint64_t mask = LoadWord(masks.data() + i);
        words_.push_back({mask, LoadWord(values.data() + i) | mask});
    }
}

// The masks tell the variants of an ASCII letter exactly, those of others only nearly.
inline bool TextSearcher::IsAt(const char* place) const {
    const char* at = place;
    for (const WordProbe& word : words_) {
        if ((LoadWord(at) | word.mask) != word.value) return false;
        at += kWordBytes;
    }
    return ascii_ || EqualFold({place, needle_.size()}, needle_);
}

bool TextSearcher::HasOddVariant(std::string_view text) const {
    if (IsAscii(text)) return false;
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

// Blocks are what the places in a text where the needle may begin are tried in. Near(block) and
// Far(block) give kBits bits for each of the next kNear and kFar places, the lowest or highest of
// them set where both probes pass.

class TextSearcher::Words {
  public:
    static constexpr unsigned kBits = 8, kNear = 8, kFar = 8;

    explicit Words(const std::array<Probe, 2>& probes) : probes_(probes) {}

    std::uint64_t Near(const char* block) const {
        return Passing(block, probes_[0]) & Passing(block, probes_[1]);
    }
    std::uint64_t Far(const char* block) const { return Near(block); }

  private:
    static std::uint64_t Passing(const char* block, const Probe& probe) {
        return ZeroBytes((LoadWord(block + probe.offset) | kEveryByte * probe.mask) ^
                         kEveryByte * probe.value);
    }

    std::array<Probe, 2> probes_;
};

#if defined(__SSE2__)

class TextSearcher::Vectors {
  public:
    static constexpr unsigned kBits = 1, kNear = 16, kFar = 64;

    explicit Vectors(const std::array<Probe, 2>& probes)
        : offsets_{probes[0].offset, probes[1].offset},
          masks_{Fill(probes[0].mask), Fill(probes[1].mask)},
          values_{Fill(probes[0].value), Fill(probes[1].value)} {}

    std::uint64_t Near(const char* block) const { return Bits(Passing(block)); }
    std::uint64_t Far(const char* block) const {
        const __m128i a = Passing(block), b = Passing(block + 16), c = Passing(block + 32),
                      d = Passing(block + 48);
        if (Bits(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) == 0) return 0;
        return Bits(a) | Bits(b) << 16 | Bits(c) << 32 | Bits(d) << 48;
    }

  private:
    static __m128i Fill(std::uint8_t byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
    static std::uint64_t Bits(__m128i bytes) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes));
    }
    __m128i Passing(const char* block) const {
        return _mm_and_si128(Test(block + offsets_[0], 0), Test(block + offsets_[1], 1));
    }
    __m128i Test(const char* bytes, int probe) const {
        const __m128i loaded = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        return _mm_cmpeq_epi8(_mm_or_si128(loaded, masks_[probe]), values_[probe]);
    }

    std::size_t offsets_[2];
    __m128i masks_[2], values_[2];
};

#else

class TextSearcher::Vectors : public Words {
    using Words::Words;
};

#endif

// Places of the last block from which the needle would reach beyond the text are cut off.
template <class Blocks>
inline bool TextSearcher::FoundByBytes(const Blocks& blocks, std::string_view text) const {
    static_assert(kPadding >= Blocks::kFar);
    constexpr unsigned kBits = Blocks::kBits;
    if (text.size() < needle_.size()) return false;
    const char* block = text.data();
    std::size_t places = text.size() - needle_.size() + 1;
    const auto found = [&](std::uint64_t candidates) {
        if (places * kBits < 64) candidates &= (std::uint64_t{1} << places * kBits) - 1;
        for (; candidates != 0; candidates &= candidates - 1) {
            if (IsAt(block + static_cast<unsigned>(std::countr_zero(candidates)) / kBits)) {
                return true;
            }
        }
        return false;
    };
    if (places <= Blocks::kNear) return found(blocks.Near(block));
    while (true) {
        if (found(blocks.Far(block))) return true;
        if (places <= Blocks::kFar) return false;
        places -= Blocks::kFar;
        block += Blocks::kFar;
    }
}

template <class Blocks>
std::uint32_t TextSearcher::Search(Texts texts, std::uint32_t not_ascii) const {
    const auto all = static_cast<std::uint32_t>((std::uint64_t{1} << texts.size()) - 1);
    if (needle_.empty()) return all;
    not_ascii &= all;
    std::uint32_t found = 0;
    const auto search = [&](std::uint32_t among, auto&& holds) {
        for (; among != 0; among &= among - 1) {
            const int text = std::countr_zero(among);
            found |= std::uint32_t{holds(texts[static_cast<std::size_t>(text)])} << text;
        }
    };
    const auto in_folded = [&](std::string_view text) { return FoundInFolded(text); };
    if (!well_formed_) {
        search(not_ascii, in_folded);
        return found;
    }
    // The search by bytes sees only occurrences without odd variants. It says no to some texts that
    // have one, but never yes to a text that has none.
    const Blocks blocks(probes_);
    search(ascii_ ? all : not_ascii,
           [&](std::string_view text) { return FoundByBytes(blocks, text); });
    if (!odd_variants_.empty()) {
        search(not_ascii & ~found,
               [&](std::string_view text) { return HasOddVariant(text) && FoundInFolded(text); });
    }
    return found;
}

std::uint32_t TextSearcher::FoundIn(Texts texts, std::uint32_t not_ascii) const {
    return Search<Vectors>(texts, not_ascii);
}

std::uint32_t TextSearcher::FoundInPortable(Texts texts, std::uint32_t not_ascii) const {
    return Search<Words>(texts, not_ascii);
}

}  // namespace tavolin
