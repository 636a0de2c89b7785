// The one clock, and dates by the calendar.
//
//     SetClock([] { return MakeDate(2026, 11, 15, 1, 5); });
//     GeneralDate(Now());    // "11/15/2026 1:05:00 AM"
//
// Dates are local time in the Gregorian calendar, extended backwards; no zone is kept.
#pragma once

#include <functional>
#include <string>

#include "tavolin/base/date.h"
#include "tavolin/base/export.h"

namespace tavolin {

// A moment as the calendar and the clock on the wall show it.
struct CivilTime {
    int year = 1899;
    int month = 12;  // 1 to 12
    int day = 30;    // 1 to 31
    int hour = 0;    // 0 to 23
    int minute = 0;
    int second = 0;
};

// The local time, to the second (parts of a second are cut off), or what the clock set gives.
// Raises what the clock set raises.
TAVOLIN_API Date Now();

// Puts another clock in place for the whole process; an empty function puts the machine's back.
// Not to be called while another thread is in Now().
TAVOLIN_API void SetClock(std::function<Date()> clock);

// The date of a day and time. Parts out of range carry over: month 13 is January of the next year,
// day 0 the last of the month before, hour -1 an hour before midnight. Years from -30000 to 30000.
TAVOLIN_API Date MakeDate(int year, int month, int day, int hour = 0, int minute = 0,
                          int second = 0);

// The reverse of MakeDate, with every part in its range.
TAVOLIN_API CivilTime ToCivil(Date date);

// The general form "11/15/2026 1:05:00 AM": month, day, year and the twelve-hour clock; minutes and
// seconds have two digits, nothing else is padded. At exactly midnight the day alone; of the day
// zero, 12/30/1899, the time alone. For the years 100 to 9999.
TAVOLIN_API std::string GeneralDate(Date date);

}  // namespace tavolin
