#pragma once
#include <chrono>
#include <cstdint>
#include <string>

// Date and time arithmetic of the recordings: they count days from
// 31 December 1999 and are named by a compact date-time pattern.
namespace lv {

// Day 0 of the recordings' date stamp (date serial 36525).
inline constexpr std::chrono::year_month_day kDayZero{std::chrono::year{1999},
                                                      std::chrono::December, std::chrono::day{31}};

// A wall-clock reading as the program uses it: a calendar date and a time of day.
struct LocalDateTime {
    std::chrono::year_month_day date = kDayZero;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// Whole days from 31 December 1999 to the date (negative before it).
std::int32_t daysSince1999(std::chrono::year_month_day date);
// The calendar date that many days after 31 December 1999.
std::chrono::year_month_day dateFromDays(std::int32_t days);

// hour * 3600 + minute * 60 + second.
std::int32_t secondsOfDay(const LocalDateTime& t);

// The file-name stamp "yy-mm-dd__Hh.Nn.Ss": two digits each, 24-hour clock,
// e.g. "24-03-05__14.07.09".
std::string formatNameStamp(const LocalDateTime& t);

// "HH:MM:SS" for seconds since midnight. Values outside one day are taken
// modulo a day, so a start time plus the seconds played past midnight still
// reads as a time of day.
std::string clockText(std::int64_t secondsSinceMidnight);

// The present local date and time, to the second.
LocalDateTime localNow();

}  // namespace lv
