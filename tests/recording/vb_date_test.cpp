#include "common/vb_date.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

namespace {

using namespace std::chrono;

TEST(DaysSince1999, CountsWholeDaysBothWays)
{
    struct Case {
        year_month_day date;
        std::int32_t days;
    };
    const Case cases[] = {
        {1999y / December / 31, 0},   {2000y / January / 1, 1},
        {2000y / March / 1, 61},      // 31 + 29 (2000 is a leap year) + 1
        {2001y / January / 1, 367},   {2024y / January / 1, 8767},  // 24 years, 6 of them leap
        {2024y / February / 4, 8801}, {1999y / December / 30, -1},
        {2089y / September / 16, 32767},  // the last day a 16-bit count holds
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lv::daysSince1999(c.date), c.days) << c.days;
        EXPECT_EQ(lv::dateFromDays(c.days), c.date) << c.days;
    }
}

TEST(NameStamp, TwoDigitsEachInTheNamePattern)
{
    struct Case {
        lv::LocalDateTime when;
        const char* text;
    };
    const Case cases[] = {
        {{2024y / March / 5, 14, 7, 9}, "24-03-05__14.07.09"},
        {{2000y / January / 1, 0, 0, 0}, "00-01-01__00.00.00"},
        {{1999y / December / 31, 23, 59, 59}, "99-12-31__23.59.59"},
        {{2105y / November / 20, 9, 30, 0}, "05-11-20__09.30.00"},
    };
    for (const Case& c : cases) EXPECT_EQ(lv::formatNameStamp(c.when), c.text);
}

TEST(SecondsOfDay, HoursMinutesAndSeconds)
{
    EXPECT_EQ(lv::secondsOfDay({2024y / March / 5, 12, 34, 56}), 45296);
    EXPECT_EQ(lv::secondsOfDay({2024y / March / 5, 23, 59, 59}), 86399);
}

TEST(ClockText, TimeOfDayWrappingAtMidnight)
{
    struct Case {
        std::int64_t secs;
        const char* text;
    };
    const Case cases[] = {{0, "00:00:00"},     {45296, "12:34:56"}, {86399, "23:59:59"},
                          {86400, "00:00:00"}, {90000, "01:00:00"}, {-1, "23:59:59"}};
    for (const Case& c : cases) EXPECT_EQ(lv::clockText(c.secs), c.text) << c.secs;
}

TEST(LocalNow, IsAValidCalendarTime)
{
    const lv::LocalDateTime now = lv::localNow();
    EXPECT_TRUE(now.date.ok());
    EXPECT_GE(now.date.year(), 2020y);
    EXPECT_TRUE(now.hour >= 0 && now.hour < 24 && now.minute >= 0 && now.minute < 60 &&
                now.second >= 0 && now.second < 60);
}

}  // namespace
