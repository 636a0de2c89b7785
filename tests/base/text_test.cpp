#include "tavolin/base/text.h"

#include <gtest/gtest.h>

#include <random>

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

TEST(IsAsciiTest, SeesAHighByteAtEveryPlace) {
    for (std::size_t size = 0; size <= 40; ++size) {
        std::string text(size, '\x7F');
        EXPECT_TRUE(IsAscii(text));
        for (std::size_t place = 0; place < size; ++place) {
            text[place] = '\x80';
            EXPECT_FALSE(IsAscii(text)) << size << " " << place;
            text[place] = '\x7F';
        }
    }
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

}  // namespace
}  // namespace tavolin
