// One needle, prepared once, looked for in many texts without regard to case.
//
//     TextSearcher searcher("weiß");
//     searcher.FoundIn("Edelweiß");    // true
//     searcher.FoundIn("EDELWEIẞ");    // true
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin {

// Immutable once made: any number of threads may search with one searcher.
class TextSearcher {
  public:
    // Prepares the search for `needle`, of which a folded copy is kept. May raise std::bad_alloc.
    explicit TextSearcher(std::string_view needle);

    // Whether Fold(text) contains Fold(needle). An empty needle is in every text. A needle that
    // begins with ill-formed bytes is not found inside a well-formed character. Reads no byte
    // outside `text`. Allocates (and may raise std::bad_alloc) only when the needle is ill-formed
    // or the text holds a character whose folding has another byte length and is in the needle.
    bool FoundIn(std::string_view text) const;

    // FoundIn(text) for texts kept where kPadding more bytes behind the end may be read, whatever
    // they hold; quicker on short texts. `is_ascii` is IsAscii(text) or false: true saves looking.
    static constexpr std::size_t kPadding = 16;
    bool FoundInPadded(std::string_view text, bool is_ascii) const;

    // FoundIn by eight-byte words only, as it works where there is no SSE2; the same answers.
    bool FoundInPortable(std::string_view text) const;

  private:
    // A byte of the needle to filter by: a text byte b at this offset must have b | mask == value.
    struct Probe {
        std::size_t offset = 0;
        std::uint8_t mask = 0;
        std::uint8_t value = 0;
    };
    // Whether the text contains the needle in as many bytes, found by one kind of registers.
    using ByteSearch = bool (TextSearcher::*)(std::string_view text) const;

    std::string FindVariants();
    void ChooseProbes(const std::string& masks);
    bool Found(std::string_view text, ByteSearch by_bytes) const;
    bool FoundByBytes(std::string_view text) const;
    bool FoundByPaddedBytes(std::string_view text) const;
    bool FoundByWords(std::string_view text) const;
    bool HasOddVariant(std::string_view text) const;
    bool FoundInFolded(std::string_view text) const;
    template <unsigned kBitsPerByte>
    bool MatchesAny(const char* block, std::uint64_t candidates) const;

    std::string needle_;  // folded
    bool well_formed_ = true;
    bool ascii_ = true;
    std::array<Probe, 2> probes_;
    // The characters that fold to one of the needle's but take another number of bytes.
    std::vector<std::string> odd_variants_;
};

}  // namespace tavolin
