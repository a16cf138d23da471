#include "display/clock_text.h"

#include <gtest/gtest.h>

namespace lv {
namespace {

constexpr CalendarDate kSunday{2026, 11, 22};

TEST(ClockTextTest, TimeOfDay) {
    struct Case {
        std::int32_t clockType;
        int hour, minute;
        const char* time;
    } const cases[] = {
        {kClock12Hour, 0, 5, "12:05 AM"},   {kClock12Hour, 12, 0, "12:00 PM"},
        {kClock12Hour, 23, 59, "11:59 PM"}, {kClock12Hour, 11, 59, "11:59 AM"},
        {kClock12Hour, 13, 7, "1:07 PM"},   {kClock12Hour, 24, 0, "12:00 AM"},
        {kClock24Hour, 0, 5, "00:05"},      {kClock24Hour, 23, 59, "23:59"},
        {kClock24Hour, 25, 30, "01:30"},  // a recording played on past midnight
    };
    for (const Case& c : cases) {
        const ClockTexts t = clockTexts(c.clockType, kDateHide, c.hour, c.minute, kSunday);
        EXPECT_EQ(t.meridiem.empty() ? t.time : t.time + " " + t.meridiem, c.time)
            << c.clockType << " " << c.hour << ":" << c.minute;
    }
}

TEST(ClockTextTest, DateLinesByType) {
    struct Case {
        std::int32_t clockType, dateType;
        CalendarDate date;
        ClockTexts want;
    } const cases[] = {
        {kClock24Hour, kDateHide, kSunday, {"10:30", "", "", ""}},
        {kClock24Hour, kDateShort, kSunday, {"10:30", "", "", "2026-11-22"}},
        {kClock12Hour, kDateLong, kSunday, {"10:30", "AM", "Sunday", "22 November 2026"}},
        {kClock24Hour, kDateLong, {2000, 2, 29}, {"10:30", "", "Tuesday", "29 February 2000"}},
        {kClock24Hour, kDateLong, {1999, 12, 31}, {"10:30", "", "Friday", "31 December 1999"}},
        {kClock24Hour, kDateShort, {2024, 1, 5}, {"10:30", "", "", "2024-01-05"}},
        // Nothing that could not be drawn: no texts, no wrong date.
        {kClock24Hour, -1, kSunday, {"10:30", "", "", ""}},
        {kClock24Hour, 3, kSunday, {"10:30", "", "", ""}},
        {kClock24Hour, kDateLong, {2025, 2, 29}, {"10:30", "", "", ""}},
        {kClock24Hour, kDateShort, {2026, 13, 1}, {"10:30", "", "", ""}},
        {kClock24Hour, kDateShort, {2026, 1, 261}, {"10:30", "", "", ""}},
        {kClockNone, kDateShort, kSunday, {}},
        {kClockAnalog, kDateLong, kSunday, {}},
        {9, kDateShort, kSunday, {}},
        {-1, kDateShort, kSunday, {}},
    };
    for (const Case& c : cases) {
        const ClockTexts got = clockTexts(c.clockType, c.dateType, 10, 30, c.date);
        EXPECT_EQ(got, c.want) << c.clockType << "/" << c.dateType << ": " << got.time << "|"
                               << got.meridiem << "|" << got.weekday << "|" << got.date;
    }
}

}  // namespace
}  // namespace lv
