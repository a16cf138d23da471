#include "recording/start_stamp.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>

namespace {

using namespace std::chrono;
using Stamp = std::array<std::uint8_t, 4>;

lv::lvdRecord recordWithStampBytes(Stamp stamp, std::uint8_t marker)
{
    lv::lvdRecord r;
    r.TimeMs = 20;
    r.FrameType = 'P';
    r.Stamp = stamp;
    r.StampMarker = marker;
    return r;
}

TEST(TimeStamp, StartTimeBigEndianAfterTheClockByte)
{
    struct Case {
        std::int32_t secs;
        Stamp bytes;
    };
    const Case cases[] = {
        {45296, {0x01, 0x00, 0xB0, 0xF0}},  // 12:34:56
        {86399, {0x01, 0x01, 0x51, 0x7F}},  // 23:59:59
        {0, {0x01, 0x00, 0x00, 0x00}},
        {-1, {0x01, 0xFF, 0xFF, 0xFF}},  // Int(-1 / 2^n) AND 255 is 255 for every byte
    };
    for (const Case& c : cases) {
        lv::lvdRecord r = recordWithStampBytes({9, 9, 9, 9}, 0);
        lv::layTimeStamp(r, {c.secs, 0, 0x01, 0x02});
        EXPECT_EQ(r.Stamp, c.bytes) << c.secs;
        EXPECT_EQ(r.StampMarker, 'C');
        EXPECT_EQ(r.TimeMs, 20);  // the record's own fields stay as recorded
        EXPECT_EQ(r.FrameType, 'P');
    }
}

TEST(DateStamp, DaysBigEndianWithByteFifteenUntouched)
{
    struct Case {
        std::int32_t days;
        Stamp bytes;
    };
    const Case cases[] = {
        {8801, {0x03, 0x77, 0x22, 0x61}},
        {0, {0x03, 0x77, 0x00, 0x00}},
        {65535, {0x03, 0x77, 0xFF, 0xFF}},
    };
    for (const Case& c : cases) {
        lv::lvdRecord r = recordWithStampBytes({9, 0x77, 9, 9}, 0);
        lv::layDateStamp(r, {0, c.days, 0x01, 0x03});
        EXPECT_EQ(r.Stamp, c.bytes) << c.days;
        EXPECT_EQ(r.StampMarker, 'D');
    }
}

TEST(StartStampFor, TakesTheClockAndDateStylesLowBytes)
{
    lv::Settings s;
    s.ClockType = 0x0203;
    s.DateType = 2;
    const lv::StartStamp stamp = lv::startStampFor(s, 45296, 8801);
    EXPECT_EQ(stamp.clockByte, 0x03);
    EXPECT_EQ(stamp.dateByte, 0x02);
    EXPECT_EQ(stamp.StartTimeSecs, 45296);
    EXPECT_EQ(stamp.StartDays, 8801);
}

TEST(ReadStartStamps, OnlyTheRightMarkerInTheRightRecordCounts)
{
    struct Case {
        const char* what;
        lv::lvdRecord r1, r2;
        std::int32_t secs, days;
        year_month_day date;
    };
    const Case cases[] = {
        {"both", recordWithStampBytes({1, 0x00, 0xB0, 0xF0}, 'C'),
         recordWithStampBytes({2, 0x55, 0x22, 0x61}, 'D'), 45296, 8801, 2024y / February / 4},
        {"none", recordWithStampBytes({1, 0x00, 0xB0, 0xF0}, 0),
         recordWithStampBytes({2, 0x55, 0x22, 0x61}, 0), 0, 0, 1999y / December / 31},
        {"swapped", recordWithStampBytes({1, 0x00, 0xB0, 0xF0}, 'D'),
         recordWithStampBytes({2, 0x55, 0x22, 0x61}, 'C'), 0, 0, 1999y / December / 31},
        {"lower case", recordWithStampBytes({1, 0x00, 0xB0, 0xF0}, 'c'),
         recordWithStampBytes({2, 0x55, 0x22, 0x61}, 'd'), 0, 0, 1999y / December / 31},
        // 24 bits of time are read as they are, past one day too.
        {"time only", recordWithStampBytes({0, 0xFF, 0xFF, 0xFF}, 'C'),
         recordWithStampBytes({0, 0, 0, 0}, 0), 16777215, 0, 1999y / December / 31},
        // A day count above 32767 stays a date after 2089.
        {"late date", recordWithStampBytes({}, 0), recordWithStampBytes({0, 0, 0x80, 0x00}, 'D'), 0,
         32768, 2089y / September / 17},
    };
    for (const Case& c : cases) {
        const lv::StartInfo info = lv::readStartStamps(c.r1, c.r2);
        EXPECT_EQ(info.StartTimeSecs, c.secs) << c.what;
        EXPECT_EQ(info.StartDays, c.days) << c.what;
        EXPECT_EQ(info.RecordingDate, c.date) << c.what;
    }
}

}  // namespace
