#include "display/clock_text.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace lv {

namespace {

// Spelt out here rather than asked of a locale, so the panel reads the same
// on every machine.
constexpr std::array<const char*, 7> kWeekdays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                               "Thursday", "Friday", "Saturday"};
constexpr std::array<const char*, 12> kMonths{"January",   "February", "March",    "April",
                                              "May",       "June",     "July",     "August",
                                              "September", "October",  "November", "December"};

}  // namespace

ClockTexts clockTexts(std::int32_t clockType, std::int32_t dateType, int hour, int minute,
                      const CalendarDate& date) {
    if (clockType != kClock12Hour && clockType != kClock24Hour) return {};
    ClockTexts out;
    const int h = (hour % 24 + 24) % 24;
    char text[64];
    if (clockType == kClock12Hour) {
        std::snprintf(text, sizeof text, "%d:%02d", (h + 11) % 12 + 1, minute);
        out.meridiem = h < 12 ? "AM" : "PM";
    } else {
        std::snprintf(text, sizeof text, "%02d:%02d", h, minute);
    }
    out.time = text;

    // std::chrono keeps day and month in a byte and the year in 16 bits: check
    // the ranges first, or a wild value would wrap into a valid-looking date.
    if (date.year < 1 || date.year > 9999 || date.month < 1 || date.month > 12 || date.day < 1 ||
        date.day > 31)
        return out;
    namespace chr = std::chrono;
    const chr::year_month_day ymd{chr::year{date.year}, chr::month{unsigned(date.month)},
                                  chr::day{unsigned(date.day)}};
    if (!ymd.ok()) return out;
    if (dateType == kDateShort) {
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", date.year, date.month, date.day);
        out.date = text;
    } else if (dateType == kDateLong) {
        out.weekday = kWeekdays[chr::weekday{chr::sys_days{ymd}}.c_encoding()];
        std::snprintf(text, sizeof text, "%d %s %d", date.day, kMonths[date.month - 1], date.year);
        out.date = text;
    }
    return out;
}

}  // namespace lv
