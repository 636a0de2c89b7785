#include "tavolin/persist/scrambler.h"

#include <gtest/gtest.h>

#include <random>

#include "tavolin/base/code_page.h"
#include "tavolin/base/utf16.h"

namespace tavolin {
namespace {

TEST(ScramblerTest, FollowsTheKeyStream) {
    const int stream[] = {71, 67, 89, 83, 77, 71, 74, 79, 71, 78, 65, 70};
    const std::string plain = "Geheim! 12 \xFC";  // in the code page
    std::string scrambled;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        scrambled += static_cast<char>(plain[i] ^ stream[i]);
    }
    for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(EncodeAnsi(ScrambleText(DecodeAnsi(plain))), scrambled);
    }
}

TEST(ScramblerTest, TreatsEachKindOfCodeUnit) {
    const struct {
        const char* what;
        std::string text, scrambled;
    } cases[] = {
        {"of the page, to another of it", "€", "Ç"},          // 80 xor 71 = C7
        {"outside, to another outside", "Ā", "Ň"},            // 100 xor 71 = 147
        {"outside, but the other is of the page", "ĕ", "ĕ"},  // 115 xor 71 = 152
        {"a control character outside", "\xC2\x80", "\xC2\x80"},
        {"a pair draws two", "\U00010000G", "\xF0\xA1\xB1\x83\x1E"},
        {"an ill-formed byte draws one", "\xC3G", "\xC3\x04"},
        {"surrogates in three bytes", "\xED\xA0\x80\xED\xB0\x80", "\xED\xA1\x87\xED\xB1\x83"},
    };
    for (const auto& c : cases) EXPECT_EQ(ScrambleText(c.text), c.scrambled) << c.what;
}

TEST(ScramblerTest, IsItsOwnInverseForAllBytes) {
    std::mt19937 random(634);
    for (int i = 0; i < 100000; ++i) {
        std::string text;
        for (auto n = random() % 20; n > 0; --n) {
            const char16_t unit = static_cast<char16_t>(random() >> random() % 16);
            text += i % 2 ? FromUtf16(std::u16string(1, unit))
                          : std::string(1, static_cast<char>(random()));
        }
        const std::string scrambled = ScrambleText(text);
        ASSERT_EQ(ScrambleText(scrambled), text);
        ASSERT_EQ(ToUtf16(scrambled).size(), ToUtf16(text).size());
    }
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const std::string text = "ab" + FromUtf16(std::u16string(1, static_cast<char16_t>(unit)));
        ASSERT_EQ(ScrambleText(ScrambleText(text)), text) << unit;
    }
}

}  // namespace
}  // namespace tavolin
