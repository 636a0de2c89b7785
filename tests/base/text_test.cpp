// Letter case, order and search of texts.
#include "tavolin/base/text.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "tavolin/base/text_search.h"
#include "tavolin/base/utf16.h"

namespace tavolin {
namespace {

using namespace std::string_literals;

// Texts of pieces that fold in every way there is, with broken ones among them.
std::string RandomText(std::mt19937& random, std::size_t most_pieces) {
    static const char* const pieces[] = {
        "a",           "A",        "z",        "Z",          "@",          "[",
        "`",           "{",        "k",        "K",          "i",          "I",
        "İ",           "é",        "É",        "ß",          "ẞ",          "Ⱥ",
        "ⱥ",           "Å",        "å",        "ﬀ",          "😀",          "\xC3",
        "\xA9",        "\xFF",     "\u212A",   "\u212B",     "\uE000",     "\uFFFF",
        "\xE2\x84",    "\xF0\x9F", "\xC0\x80", "\U00010000", "\U00010400", "\xED\xA0\x80",
        "\xED\xB0\x80"};
    std::string text;
    for (std::size_t n = random() % (most_pieces + 1); n > 0; --n) {
        text += random() % 3 ? pieces[random() % std::size(pieces)]
                             : std::string(1, "abKZ "[random() % 5]);
    }
    return text;
}

// Changes the case of ASCII letters at random: what folds alike but is another text.
std::string Recased(std::string text, std::mt19937& random) {
    for (char& c : text) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter && random() % 2) c ^= 0x20;
    }
    return text;
}

TEST(FoldTest, LowersOneCharacterToOneAndLeavesTheRest) {
    const struct {
        std::string text, folded;
    } cases[] = {
        {"", ""},
        {"@AZ[`az{09", "@az[`az{09"},
        {"A Long LINE of More than Sixteen BYTES", "a long line of more than sixteen bytes"},
        {"ÀÖØÞ×÷ßÿŸ", "àöøþ×÷ßÿÿ"},
        {"İIıi", "iiıi"},               // one character only, no combining dot
        {"\u212A\u212B\u2126", "kåω"},  // signs that are letters
        {"ẞΣςσ", "ßσςσ"},
        {"ǄǅǆȺⱥȾ", "ǆǆǆⱥⱥⱦ"},
        {"ЀЖЯԱႠᎠⅧⒶＺ", "ѐжяաⴀꭰⅷⓐｚ"},
        {"\U00010400😀", "\U00010400😀"},  // above the plane
        {"A\xC3Z\xA9\xE2\x84Q\xFF", "a\xC3z\xA9\xE2\x84q\xFF"},
        {"\xC1\x81\xE0\x81\x81", "\xC1\x81\xE0\x81\x81"},  // overlong forms of A
        {"X\xED\xA0\x80Y\xED\xBF\xBF", "x\xED\xA0\x80y\xED\xBF\xBF"},
        {"A\0B"s, "a\0b"s},
    };
    std::string kept = "old";
    for (const auto& c : cases) {
        EXPECT_EQ(Fold(c.text), c.folded);
        FoldInto(c.text, kept);
        EXPECT_EQ(kept, c.folded);
    }
    std::string small, capital;
    for (int i = 0; i < 2000; ++i) {
        small += "ⱥ";
        capital += "Ⱥ";
    }
    EXPECT_EQ(Fold(capital), small) << "grows by half, beyond any short buffer";
}

TEST(FoldTest, IsDoneOnceAndKeepsTheNumberOfCodeUnits) {
    std::size_t changed = 0;
    for (unsigned c = 1; c <= 0xFFFF; ++c) {
        const std::string text = FromUtf16(std::u16string(1, static_cast<char16_t>(c)));
        const std::string folded = Fold(text);
        changed += folded != text;
        ASSERT_EQ(Fold(folded), folded) << std::hex << c;
        ASSERT_EQ(ToUtf16(folded).size(), 1u) << std::hex << c;
        ASSERT_EQ(Fold("AbcdefGh" + text + "Q"), "abcdefgh" + folded + "q") << std::hex << c;
    }
    EXPECT_GT(changed, 1000u);
}

TEST(EqualFoldTest, IsEqualityOfTheFoldedTextsAndOfTheirHashes) {
    std::mt19937 random(20261115);
    int equal = 0;
    for (int i = 0; i < 200000; ++i) {
        const std::string a = RandomText(random, 6);
        std::string b = i % 3 == 0   ? RandomText(random, 2)
                        : i % 3 == 1 ? Recased(a, random)
                                     : Recased(Fold(a), random);
        if (i % 5 == 0 && !b.empty())
            b[random() % b.size()] ^= static_cast<char>(1 << random() % 8);
        const bool expected = Fold(a) == Fold(b);
        ASSERT_EQ(EqualFold(a, b), expected) << a << " | " << b;
        ASSERT_EQ(EqualFold(b, a), expected) << a << " | " << b;
        ASSERT_TRUE(!expected || HashFold(a) == HashFold(b)) << a << " | " << b;
        equal += expected;
    }
    EXPECT_GT(equal, 50000);
}

TEST(HashFoldTest, GivesTheStoredValues) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"", 0x3A639A28},
        {"a", 0xC924EA93},
        {"Anna", 0xDD8C7E9B},
        {"12345678", 0x29A3B058},
        {"Customer-000017", 0xEDD12F64},
        {"a text of more than sixteen bytes", 0x6BC52922},
        {"GRÖSSE", 0xC7099F0C},
    };
    for (const auto& [text, hash] : cases) EXPECT_EQ(HashFold(text), hash) << text;
}

TEST(ReplaceFoldTest, ReplacesWholeCharactersFromLeftToRight) {
    const struct {
        const char *text, *what, *with, *result;
    } cases[] = {
        {"shop.CDB", "cdb", "mdb", "shop.mdb"},
        {"aAaAa", "AA", "b", "bba"},
        {"xyx", "x", "xx", "xxyxx"},
        {"abc", "", "!", "abc"},
        {"", "a", "b", ""},
        {"ab", "abc", "!", "ab"},
        {"aab", "AB", "", "a"},
        {"STRAẞE Straße", "ß", "ss", "STRAssE Strasse"},
        {"1\u212A 2k İi", "K", "x", "1x 2x İi"},
        {"é\xC3", "\xC3", "?", "é?"},
    };
    for (const auto& c : cases) EXPECT_EQ(ReplaceFold(c.text, c.what, c.with), c.result) << c.text;
}

TEST(CompareCodeUnitsTest, IsTheOrderOfUtf16) {
    EXPECT_LT(CompareCodeUnits("😀", "\uFFFF"), 0);
    EXPECT_LT(CompareCodeUnits("B", "a"), 0);
    EXPECT_GT(CompareCodeUnits("ab", "a"), 0);
    EXPECT_LT(CompareCodeUnits("\U00010000", "\xED\xB0\x80"), 0);
    std::mt19937 random(7);
    for (int i = 0; i < 100000; ++i) {
        const std::string start = RandomText(random, 4);
        const std::string a = start + RandomText(random, 2);
        const std::string b = start + RandomText(random, 2);
        const int expected = ToUtf16(a).compare(ToUtf16(b));
        const int got = CompareCodeUnits(a, b);
        ASSERT_EQ(got < 0, expected < 0) << a << " | " << b;
        ASSERT_EQ(got > 0, expected > 0) << a << " | " << b;
        // The bytes to sort by keep that order, joined or not.
        std::string x, y;
        for (const auto& part : {start, a}) AppendSortBytes(part, x);
        for (const auto& part : {start, b}) AppendSortBytes(part, y);
        const int folded = CompareCodeUnits(Fold(a), Fold(b));
        ASSERT_EQ(x.compare(y) < 0, folded < 0) << a << " | " << b;
        ASSERT_EQ(x.compare(y) > 0, folded > 0) << a << " | " << b;
    }
}

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
