// Dates, code pages, code units and events.
#include <gtest/gtest.h>

#include <ctime>
#include <random>
#include <string>

#include "tavolin/base/clock.h"
#include "tavolin/base/code_page.h"
#include "tavolin/base/event.h"
#include "tavolin/base/utf16.h"

namespace tavolin {
namespace {

constexpr std::int64_t kDay = 86400;

TEST(ClockTest, CountsFromDayZeroAndBack) {
    EXPECT_EQ(MakeDate(1899, 12, 30).seconds, 0);
    EXPECT_EQ(MakeDate(1970, 1, 1).seconds, 25569 * kDay);
    EXPECT_EQ(MakeDate(1899, 12, 29, 23, 59, 59).seconds, -1);
    EXPECT_EQ(MakeDate(2026, 11, 15, 13, 5, 7).seconds, 46341 * kDay + 13 * 3600 + 5 * 60 + 7);
    EXPECT_EQ(MakeDate(2023, 13, 1), MakeDate(2024, 1, 1));
    EXPECT_EQ(MakeDate(2024, 3, 0), MakeDate(2024, 2, 29));
    EXPECT_EQ(MakeDate(2024, 0, 31), MakeDate(2023, 12, 31));
    EXPECT_EQ(MakeDate(1900, 2, 29), MakeDate(1900, 3, 1));
    // Eight hours and some odd seconds a step: every hour and day of the month comes round.
    for (auto s = MakeDate(100, 1, 1).seconds; s < MakeDate(10000, 1, 1).seconds; s += 8999999) {
        const CivilTime t = ToCivil(Date{s});
        ASSERT_EQ(MakeDate(t.year, t.month, t.day, t.hour, t.minute, t.second).seconds, s);
        ASSERT_TRUE(t.hour >= 0 && t.hour < 24 && t.minute >= 0 && t.second >= 0) << s;
    }
}

TEST(ClockTest, WritesTheGeneralForm) {
    const std::pair<Date, const char*> cases[] = {
        {MakeDate(2026, 11, 15, 1, 5), "11/15/2026 1:05:00 AM"},
        {MakeDate(2026, 11, 15), "11/15/2026"},
        {MakeDate(2026, 1, 2, 0, 0, 1), "1/2/2026 12:00:01 AM"},
        {MakeDate(2026, 1, 2, 12), "1/2/2026 12:00:00 PM"},
        {MakeDate(2026, 1, 2, 23, 59, 59), "1/2/2026 11:59:59 PM"},
        {MakeDate(100, 1, 1, 13, 10, 9), "1/1/100 1:10:09 PM"},
        {MakeDate(9999, 12, 31, 10), "12/31/9999 10:00:00 AM"},
        {MakeDate(1899, 12, 30), "12:00:00 AM"},
        {MakeDate(1899, 12, 30, 13, 5), "1:05:00 PM"},
    };
    for (const auto& [date, text] : cases) EXPECT_EQ(GeneralDate(date), text);
}

TEST(ClockTest, TellsTheTimeThatIsSetAndElseTheMachines) {
    SetClock([] { return MakeDate(2001, 2, 3); });
    EXPECT_EQ(Now(), MakeDate(2001, 2, 3));
    SetClock({});
    const std::time_t before = std::time(nullptr);
    const CivilTime now = ToCivil(Now());
    std::tm local{};
    local.tm_year = now.year - 1900;
    local.tm_mon = now.month - 1;
    local.tm_mday = now.day;
    local.tm_hour = now.hour;
    local.tm_min = now.minute;
    local.tm_sec = now.second;
    local.tm_isdst = -1;
    EXPECT_NEAR(std::difftime(std::mktime(&local), before), 1, 1.5);
}

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

// Handlers come and go, also from inside a handler, beside a plain list of those that are there.
TEST(EventTest, AgreesWithAPlainList) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Event<std::string*> event;
    std::vector<EventConnection> present;
    EventConnection victim = 0;
    EventConnection known = 0;  // the newest of all there have been
    for (int i = 0; i < 5000 && !testing::Test::HasFailure(); ++i) {
        const auto any = static_cast<EventConnection>(random() % (known + 2));
        const auto phase = static_cast<unsigned>(i) / 500 % 2;  // growing, shrinking
        if (random() % 3 == phase) {
            auto self = std::make_shared<EventConnection>();
            *self = known = event.Connect([&event, &victim, self](std::string* text) {
                *text += std::to_string(*self) + " ";
                event.Disconnect(std::exchange(victim, 0));
            });
            present.push_back(known);
        } else if (random() % 2 == 0) {
            event.Disconnect(any);
            std::erase(present, any);
        } else {
            victim = any;
            std::string expected;
            // The first handler to run disconnects the victim, which may be itself.
            for (const auto id : present) {
                if (id != any || expected.empty()) expected += std::to_string(id) + " ";
            }
            if (!present.empty()) std::erase(present, any);
            std::string fired;
            event.Fire(&fired);
            ASSERT_EQ(fired, expected) << "in step " << i;
        }
        ASSERT_EQ(event.HasHandlers(), !present.empty()) << "in step " << i;
    }
}

}  // namespace
}  // namespace tavolin
