#include "tavolin/base/clock.h"

#include <gtest/gtest.h>

#include <ctime>

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

}  // namespace
}  // namespace tavolin
