#include "tavolin/base/utf16.h"

#include <gtest/gtest.h>

#include <random>

namespace tavolin {
namespace {

TEST(Utf16Test, KeepsEverySequenceOfCodeUnits) {
    std::mt19937 random(3);
    const char16_t edges[] = {0,      0x7F,   0x80,   0x7FF,  0x800,  0xD7FF, 0xD800,
                              0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};
    for (int i = 0; i < 100000; ++i) {
        std::u16string units;
        for (auto n = random() % 6; n > 0; --n) units += edges[random() % std::size(edges)];
        ASSERT_EQ(ToUtf16(FromUtf16(units)), units);
    }
}

TEST(Utf16Test, KnowsEachForm) {
    const struct {
        const char* utf8;
        std::u16string units;
        bool both_ways;
    } cases[] = {
        {"aé€😀", u"aé€😀", true},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}, true},
        {"\xED\xB0\x80\xED\xA0\x80", {0xDC00, 0xD800}, true},
        {"\xED\xA0\x80\xED\xB0\x80", {0xD800, 0xDC00}, false},  // comes back as one of four bytes
        {"a\xC3z\xA9", {'a', 0xFFFD, 'z', 0xFFFD}, false},
        {"\xE2\x82", {0xFFFD, 0xFFFD}, false},
        {"\xC0\x80", {0xFFFD, 0xFFFD}, false},
        {"\xF4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}, false},
        {"\xF0\x8F\xBF\xBF", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ToUtf16(c.utf8), c.units) << c.utf8;
        EXPECT_EQ(FromUtf16(c.units) == c.utf8, c.both_ways) << c.utf8;
    }
}

}  // namespace
}  // namespace tavolin
