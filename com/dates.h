// Dates as hosts keep them: days since 30 December 1899, the fraction being the time of day, also
// before that day.
#pragma once

#include <cmath>

#include "com/platform.h"
#include "tavolin/base/date.h"

namespace tavolin::com {

inline constexpr double kSecondsOfDay = 86400;

inline DATE HostDate(Date date) {
    const double days = std::floor(static_cast<double>(date.seconds) / kSecondsOfDay);
    const double time = static_cast<double>(date.seconds) - days * kSecondsOfDay;
    return days < 0 ? days - time / kSecondsOfDay : days + time / kSecondsOfDay;
}

// To the nearest second. What is no date of the calendar (years 100 to 9999) is one before it,
// which members refuse.
inline Date DateOf(DATE date) {
    constexpr double kFirst = -657435;
    constexpr double kEnd = 2958466;
    if (!(date > kFirst && date < kEnd)) date = kFirst;
    const double days = std::trunc(date);
    const double time = std::fabs(date - days);
    return Date{static_cast<std::int64_t>(std::llround((days + time) * kSecondsOfDay))};
}

}  // namespace tavolin::com
