#include "tavolin/base/code_page.h"

#include <gtest/gtest.h>

namespace tavolin {
namespace {

TEST(CodePageTest, HasACharacterForEveryCode) {
    for (int i = 0; i < 256; ++i) {
        const auto code = static_cast<std::uint8_t>(i);
        EXPECT_EQ(AnsiCode(AnsiCharacter(code)), code) << i;
        const std::string byte(1, static_cast<char>(code));
        EXPECT_EQ(EncodeAnsi(DecodeAnsi(byte)), byte) << i;
    }
    const std::pair<char32_t, int> known[] = {
        {U'A', 0x41}, {U'€', 0x80}, {0x81, 0x81}, {U'Ž', 0x8E}, {0x9D, 0x9D}, {U'Ÿ', 0x9F},
        {0xA0, 0xA0}, {U'ÿ', 0xFF}, {U'™', 0x99}, {U'“', 0x93}, {U'ƒ', 0x83}};
    for (const auto& [character, code] : known) EXPECT_EQ(AnsiCode(character), code) << code;
    for (const char32_t absent : {0x80, 0x9F, 0x100, 0x2021 + 0x10000, 0xFFFD}) {
        EXPECT_EQ(AnsiCode(absent), std::nullopt) << std::uint32_t{absent};
    }
}

TEST(CodePageTest, EncodesWholeTextsOrNothing) {
    EXPECT_EQ(EncodeAnsi("Käse 5 €"), "K\xE4se 5 \x80");
    EXPECT_EQ(EncodeAnsi(""), "");
    for (const char* text : {"Łódź", "\xC2\x80", "a\xE4", "😀"}) {
        EXPECT_EQ(EncodeAnsi(text), std::nullopt) << text;
        EXPECT_EQ(EncodeTextFile(text), std::string("\xEF\xBB\xBF") + text);
    }
    EXPECT_EQ(EncodeTextFile("Käse"), "K\xE4se");
    EXPECT_EQ(EncodeAnsiWithReferences("ä€Ł😀\xC2\x85\xC2\x81\xFF\xED\xA0\x80"),
              "\xE4\x80&#321;&#128512;&#65533;\x81&#65533;&#65533;");
}

}  // namespace
}  // namespace tavolin
