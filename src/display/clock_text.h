#pragma once
#include <cstdint>
#include <string>

#include "common/display_sink.h"

namespace lv {

// ClockType: which clock the panel shows.
inline constexpr std::int32_t kClockNone = 0;
inline constexpr std::int32_t kClockAnalog = 1;
inline constexpr std::int32_t kClock12Hour = 2;
inline constexpr std::int32_t kClock24Hour = 3;

// DateType: the date under a digital clock.
inline constexpr std::int32_t kDateHide = 0;
inline constexpr std::int32_t kDateShort = 1;
inline constexpr std::int32_t kDateLong = 2;

// The lines a digital clock prints, top to bottom; an empty line is not shown.
struct ClockTexts {
    std::string time;      // "12:05" or "00:05"
    std::string meridiem;  // "AM" or "PM" after a 12-hour time, else empty
    std::string weekday;   // "Sunday", for the long date only
    std::string date;      // "2026-11-22" (short) or "22 November 2026" (long)
    bool operator==(const ClockTexts&) const = default;
};

// What a digital clock shows at hour:minute on `date`. Only the 12- and 24-hour
// clocks have texts; any other ClockType (the analogue clock, none, a value
// from a damaged settings file) gets none, and neither does an unknown
// DateType or an impossible date. Hours past 23 (a played-back recording that
// ran over midnight) read as the time of day.
ClockTexts clockTexts(std::int32_t clockType, std::int32_t dateType, int hour, int minute,
                      const CalendarDate& date);

}  // namespace lv
