// One needle, prepared once, looked for in many texts without regard to case.
//
//     const TextSearcher searcher("weiß");
//     const std::string_view texts[] = {arena.Field(a, 1), arena.Field(b, 1)};
//     searcher.FoundIn(texts, 0b11);    // 0b10 for "Elm" and "EDELWEIẞ"
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/byte_buffer.h"

namespace tavolin {

// Immutable once made: any number of threads may search with one searcher.
class TextSearcher {
  public:
    // Prepares the search for `needle`, of which a folded copy is kept. May raise std::bad_alloc.
    explicit TextSearcher(std::string_view needle);

    // Texts that are searched in one go: few enough for a bit each.
    static constexpr std::size_t kMostTexts = 32;
    using Texts = std::span<const std::string_view>;
    // The texts are kept where this many bytes behind the end of each may be read, whatever they
    // hold.
    static constexpr std::size_t kPadding = ByteBuffer::kPadding;

    // The texts, a bit each from the lowest on, for which Fold(text) contains Fold(needle). An
    // empty needle is in every text. A needle that begins with ill-formed bytes is not found inside
    // a well-formed character. A text whose bit in `not_ascii` is zero holds no byte from 0x80 on;
    // a bit that is set promises nothing. Allocates (and may raise std::bad_alloc) only when the
    // needle is ill-formed or a text holds a character whose folding has another byte length and is
    // in the needle.
    std::uint32_t FoundIn(Texts texts, std::uint32_t not_ascii) const;

    // FoundIn by eight-byte words only, as it works where there is no SSE2; the same answers.
    std::uint32_t FoundInPortable(Texts texts, std::uint32_t not_ascii) const;

  private:
    // A byte of the needle to filter by: a text byte b at this offset must have b | mask == value.
    struct Probe {
        std::size_t offset = 0;
        std::uint8_t mask = 0;
        std::uint8_t value = 0;
    };
    // The same for eight bytes at once.
    struct WordProbe {
        std::uint64_t mask;
        std::uint64_t value;
    };
    class Words;
    class Vectors;

    std::string FindVariants();
    void ChooseProbes(const std::string& masks);
    void MakeWords(std::string masks);
    template <class Blocks>
    std::uint32_t Search(Texts texts, std::uint32_t not_ascii) const;
    template <class Blocks>
    bool FoundByBytes(const Blocks& blocks, std::string_view text) const;
    bool IsAt(const char* place) const;
    bool HasOddVariant(std::string_view text) const;
    bool FoundInFolded(std::string_view text) const;

    std::string needle_;  // folded
    bool well_formed_ = true;
    bool ascii_ = true;
    std::array<Probe, 2> probes_;
    std::vector<WordProbe> words_;  // what lies behind the needle passes
    // The characters that fold to one of the needle's but take another number of bytes.
    std::vector<std::string> odd_variants_;
};

}  // namespace tavolin
