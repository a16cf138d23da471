#include "display/clock_text.h"

#include <gtest/gtest.h>

namespace lv {
namespace {

constexpr CalendarDate kSunday{2026, 11, 22};

TEST(ClockTextTest, TimeOfDayAndDateLinesByType) {
    for (auto [clockType, hour, minute, time] :
         {std::tuple{kClock12Hour, 0, 5, "12:05 AM"},
          {kClock12Hour, 12, 0, "12:00 PM"},
          {kClock12Hour, 13, 7, "1:07 PM"},
          {kClock24Hour, 0, 5, "00:05"},
          {kClock24Hour, 25, 30, "01:30"}}) {  // a recording played on past midnight
        const ClockTexts t = clockTexts(clockType, kDateHide, hour, minute, kSunday);
        EXPECT_EQ(t.meridiem.empty() ? t.time : t.time + " " + t.meridiem, time) << hour;
    }
    // Nothing that could not be drawn: no texts, no wrong date.
    const std::tuple<std::int32_t, std::int32_t, CalendarDate, ClockTexts> cases[] = {
        {kClock24Hour, kDateShort, {2024, 1, 5}, {"10:30", "", "", "2024-01-05"}},
        {kClock12Hour, kDateLong, kSunday, {"10:30", "AM", "Sunday", "22 November 2026"}},
        {kClock24Hour, kDateLong, {2000, 2, 29}, {"10:30", "", "Tuesday", "29 February 2000"}},
        {kClock24Hour, 3, kSunday, {"10:30", "", "", ""}},
        {kClock24Hour, kDateLong, {2025, 2, 29}, {"10:30", "", "", ""}},
        {kClockAnalog, kDateLong, kSunday, {}},
        {9, kDateShort, kSunday, {}}};
    for (const auto& [clockType, dateType, date, want] : cases) {
        const ClockTexts got = clockTexts(clockType, dateType, 10, 30, date);
        EXPECT_EQ(got, want) << clockType << "/" << dateType << ": " << got.time << "|"
                             << got.meridiem << "|" << got.weekday << "|" << got.date;
    }
}

}  // namespace
}  // namespace lv
