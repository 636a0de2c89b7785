#include "tavolin/base/text_search.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "tavolin/base/text.h"

namespace tavolin {
namespace {

// The text in a block of exactly its size, so that a sanitizer sees any read beyond it.
class Exact {
  public:
    explicit Exact(const std::string& text) : size_(text.size()), bytes_(new char[size_]) {
        text.copy(bytes_.get(), size_);
    }
    std::string_view View() const { return {bytes_.get(), size_}; }

  private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

// What stands behind the text must not count: here, the needle's end.
void ExpectFound(const std::string& needle, const std::string& text, bool expected) {
    const TextSearcher searcher(needle);
    const std::string filler(TextSearcher::kPadding, needle.empty() ? '-' : needle.back());
    const Exact padded(text + (needle + filler).substr(needle.size() / 2, TextSearcher::kPadding));
    const std::string_view one[] = {padded.View().substr(0, text.size())};
    for (const std::uint32_t not_ascii : {1u, IsAscii(text) ? 0u : ~0u}) {
        ASSERT_EQ(searcher.FoundIn(one, not_ascii), expected) << needle << " in " << text;
        ASSERT_EQ(searcher.FoundInPortable(one, not_ascii), expected) << needle << " in " << text;
    }
}

bool NaivelyFound(const std::string& needle, const std::string& text) {
    return Fold(text).find(Fold(needle)) != std::string::npos;
}

TEST(TextSearcherTest, FindsWithoutRegardToCase) {
    const struct {
        const char *needle, *text;
        bool found;
    } cases[] = {
        {"", "", true},
        {"", "x", true},
        {"x", "", false},
        {"milk", "MIL\u212A", true},
        {"kkk", "\u212A", false},  // three bytes each
        {"istanbul", "İSTANBUL", true},
        {"ı", "I", false},
        {"@[", "`{", false},
        {"\xA9", "é", false},     // inside a character
        {"\xA9", "é\xA9", true},  // a byte of its own
        {"\xA9x", "é\xA9Xé", true},
        {"\xC3", "a\xC3", true},
        {"\x80", "\xED\xA0\x80", false},
    };
    for (const auto& c : cases) ExpectFound(c.needle, c.text, c.found);
    ExpectFound(std::string(1, '\0'), "ab", false);
    ExpectFound(std::string(1, '\0'), std::string("a\0b", 3), true);
}

// One bit for each text, and none for texts that need not be looked at.
TEST(TextSearcherTest, TellsWhichOfManyTextsHoldTheNeedle) {
    const std::string held = "Caf\u00C9 " + std::string(TextSearcher::kPadding, ' ');
    const std::string_view hit(held.data(), 5), miss(held.data(), 4);
    std::vector<std::string_view> texts(TextSearcher::kMostTexts, miss);
    EXPECT_EQ(TextSearcher("").FoundIn(texts, 0), ~0u);
    for (const std::size_t i : {0u, 7u, 31u}) texts[i] = hit;
    for (const char* needle : {"af\u00E9", "\u00C9"}) {
        EXPECT_EQ(TextSearcher(needle).FoundIn(texts, ~0u), 0x80000081u);
        EXPECT_EQ(TextSearcher(needle).FoundIn(texts, 0x81), 0x81u);
        EXPECT_EQ(TextSearcher(needle).FoundInPortable(std::span(texts).first(9), ~0u), 0x81u);
    }
}

// Every length of needle and text around the sizes of the registers, every place.
TEST(TextSearcherTest, FindsAtEveryPlaceOfEveryLength) {
    for (std::size_t needle_size = 1; needle_size <= 20; needle_size += needle_size < 4 ? 1 : 5) {
        const std::string needle = std::string("qWeRtYuIoPaSdFgHjKlZ").substr(0, needle_size);
        for (std::size_t size = needle_size; size <= 150; size += size < 80 ? 1 : 17) {
            for (std::size_t place = 0; place + needle_size <= size; ++place) {
                std::string text(size, '-');
                text.replace(place, needle_size, Fold(needle));
                ExpectFound(needle, text, true);
                text[place + size % needle_size] = '-';
                ExpectFound(needle, text, false);
            }
        }
    }
}

TEST(TextSearcherTest, AgreesWithSearchingTheFoldedText) {
    const std::vector<std::string> pieces = {
        "a", "A", "b",      "k", "K", "\u212A", "i",      "I",      "İ",
        "ß", "ẞ", "ⱥ",      "Ⱥ", "é", "É",      "\u212B", "\u00C5", "å",
        "ω", "Ω", "\u2126", "ǅ", "ǆ", "€",      "😀",      " ",      "\xED\xA0\x80"};
    const std::vector<std::string> broken = {"\xC3", "\xE2", "\xE2\x84", "\xAA", "\xFF"};
    std::mt19937 random(42);
    int found = 0;
    for (int i = 0; i < 300000; ++i) {
        const std::size_t kinds = 2 + random() % (pieces.size() - 1);
        const std::size_t first = random() % (pieces.size() - kinds + 1);
        const auto make = [&](std::size_t count, bool may_break) {
            std::string text;
            while (count-- > 0) {
                text += may_break && random() % 8 == 0 ? broken[random() % broken.size()]
                                                       : pieces[first + random() % kinds];
            }
            return text;
        };
        const std::string needle = make(1 + random() % 4, false);
        const std::string text = make(random() % (i % 10 == 0 ? 60 : 12), i % 2 == 0);
        const bool expected = NaivelyFound(needle, text);
        ExpectFound(needle, text, expected);
        if (HasFatalFailure()) return;
        found += expected;
    }
    EXPECT_GT(found, 30000);
    EXPECT_LT(found, 270000);
}

}  // namespace
}  // namespace tavolin
