#include "tavolin/base/clock.h"

#include <chrono>
#include <ctime>
#include <utility>

namespace tavolin {

namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kDayZero =
    std::chrono::year{1899} / std::chrono::December / std::chrono::day{30};

std::function<Date()>& ClockInPlace() {
    static std::function<Date()> clock;
    return clock;
}

Date MachineTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return MakeDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                    local.tm_min, local.tm_sec);
}

}  // namespace

Date Now() {
    // A copy, so that a clock may put another one in place while it runs.
    const std::function<Date()> clock = ClockInPlace();
    return clock ? clock() : MachineTime();
}

void SetClock(std::function<Date()> clock) { ClockInPlace() = std::move(clock); }

Date MakeDate(int year, int month, int day, int hour, int minute, int second) {
    const auto first = std::chrono::year_month{std::chrono::year{year}, std::chrono::January} +
                       std::chrono::months{month - 1};
    const sys_days midnight = sys_days{first / 1} + days{day - 1};
    const seconds time = std::chrono::hours{hour} + std::chrono::minutes{minute} + seconds{second};
    return Date{(seconds{midnight - kDayZero} + time).count()};
}

CivilTime ToCivil(Date date) {
    const seconds since{date.seconds};
    const days whole_days = floor<days>(since);
    const year_month_day day{kDayZero + whole_days};
    const auto time = static_cast<int>((since - whole_days).count());
    return CivilTime{static_cast<int>(day.year()),
                     static_cast<int>(static_cast<unsigned>(day.month())),
                     static_cast<int>(static_cast<unsigned>(day.day())),
                     time / 3600,
                     time / 60 % 60,
                     time % 60};
}

std::string GeneralDate(Date date) {
    const CivilTime t = ToCivil(date);
    std::string text =
        std::to_string(t.month) + '/' + std::to_string(t.day) + '/' + std::to_string(t.year);
    const bool day_zero = t.year == 1899 && t.month == 12 && t.day == 30;
    if (day_zero) text.clear();
    if (t.hour == 0 && t.minute == 0 && t.second == 0 && !day_zero) return text;
    if (!day_zero) text += ' ';
    const auto two_digits = [](int n) { return std::to_string(n / 10) + std::to_string(n % 10); };
    text += std::to_string((t.hour + 11) % 12 + 1) + ':' + two_digits(t.minute) + ':' +
            two_digits(t.second) + (t.hour < 12 ? " AM" : " PM");
    return text;
}

}  // namespace tavolin
