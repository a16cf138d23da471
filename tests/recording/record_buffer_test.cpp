#include "recording/record_buffer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace {

using namespace std::chrono;

lv::lvdRecord at(std::int32_t timeMs)
{
    lv::lvdRecord r;
    r.TimeMs = timeMs;
    r.FrameType = 'P';
    return r;
}

lv::RecBuffer bufferWithTimes(const std::vector<std::int32_t>& times)
{
    lv::RecBuffer buffer;
    for (std::int32_t t : times) buffer.append(at(t));
    return buffer;
}

TEST(RecBuffer, StartsEmptyWithRoomForOneMinute)
{
    const lv::RecBuffer buffer;
    EXPECT_EQ(buffer.upperBound(), 3000);
    EXPECT_EQ(buffer.RecCount, 0);
    EXPECT_EQ(buffer.RecIndex, 1);
    EXPECT_TRUE(buffer.valid().empty());
}

TEST(RecBuffer, IndexOutsideOneToUpperBoundThrows)
{
    lv::RecBuffer buffer;
    EXPECT_THROW(buffer(0), std::out_of_range);
    EXPECT_THROW(buffer(3001), std::out_of_range);
    EXPECT_NO_THROW(buffer(3000));
}

TEST(RecBuffer, AppendKeepsTheRecordAndMovesOn)
{
    lv::RecBuffer buffer;
    lv::lvdRecord r = at(20);
    r.NeedlePos = 1234;
    buffer.append(r);
    buffer.append(at(40));
    EXPECT_EQ(buffer(1), r);
    EXPECT_EQ(buffer(2).TimeMs, 40);
    EXPECT_EQ(buffer.CurRecord.TimeMs, 40);
    EXPECT_EQ(buffer.RecCount, 2);
    EXPECT_EQ(buffer.RecIndex, 3);
    EXPECT_EQ(buffer.TotalTimeMs, 40);
}

TEST(RecBuffer, NegativeTimeIsStoredAsZero)
{
    lv::RecBuffer buffer = bufferWithTimes({-10});
    EXPECT_EQ(buffer(1).TimeMs, 0);
    EXPECT_EQ(buffer.TotalTimeMs, 0);
}

TEST(RecBuffer, GrowsByThreeThousandPastEachEndAndLosesNothing)
{
    lv::RecBuffer buffer;
    struct Step {
        std::int32_t records;
        std::int32_t upperBound;
    };
    // Full at 3000; record 3001 makes it 3001 + 3000 long; record 6002 makes it 9002.
    const Step steps[] = {{3000, 3000}, {3001, 6001}, {6001, 6001}, {6002, 9002}, {6500, 9002}};
    std::int32_t appended = 0;
    for (const Step& s : steps) {
        while (appended < s.records) buffer.append(at(++appended * 20));
        EXPECT_EQ(buffer.upperBound(), s.upperBound) << s.records << " records";
    }
    for (std::int32_t i = 1; i <= 6500; ++i) ASSERT_EQ(buffer(i).TimeMs, i * 20) << "record " << i;
    EXPECT_EQ(buffer.RecCount, 6500);
    EXPECT_EQ(buffer.TotalTimeMs, 130000);
    EXPECT_EQ(buffer.valid().size(), 6500u);
}

TEST(RecBuffer, ClearLeavesThreeThousandEmptyRecords)
{
    lv::RecBuffer buffer;
    for (int i = 1; i <= 7000; ++i) buffer.append(at(i * 20));
    buffer.clear();
    EXPECT_EQ(buffer.upperBound(), 3000);
    EXPECT_EQ(buffer.RecCount, 0);
    EXPECT_EQ(buffer.RecIndex, 1);
    EXPECT_EQ(buffer.TotalTimeMs, 0);
    EXPECT_EQ(buffer(1), lv::lvdRecord{});
    EXPECT_EQ(buffer(3000), lv::lvdRecord{});
}

TEST(RecBuffer, MarkStartTakesTimeOfDayAndDaysSince1999)
{
    lv::RecBuffer buffer;
    buffer.markStart({2024y / February / 4, 12, 34, 56});
    EXPECT_EQ(buffer.StartTimeSecs, 45296);
    EXPECT_EQ(buffer.StartDays, 8801);
    EXPECT_EQ(buffer.RecordingDate, 2024y / February / 4);
}

// Irregular spacing: the 20 ms estimate is sometimes too far, sometimes short.
const std::vector<std::int32_t> kIrregular = {0, 20, 40, 70, 80, 150, 160, 165, 300, 320};

TEST(FindlvdRecord, FirstRecordAtOrAfterTheTime)
{
    struct Case {
        std::int32_t timeMs;
        std::int32_t position;
    };
    const Case cases[] = {
        {0, 1},     {20, 2},    {30, 3},   // between 20 and 40: the later one
        {41, 4},    {100, 6},   {161, 8},  {166, 9}, {320, 10},
        {321, 10},  {100000, 10},          // past the end: the last record
        {-50, 1},
    };
    for (const Case& c : cases) {
        lv::RecBuffer buffer = bufferWithTimes(kIrregular);
        EXPECT_EQ(buffer.FindlvdRecord(c.timeMs), c.position) << c.timeMs << " ms";
        EXPECT_EQ(buffer.CurRecord, buffer(c.position)) << c.timeMs << " ms";
    }
}

TEST(FindlvdRecord, AgreesWithAPlainScanWhateverTheSpacing)
{
    struct Spacing {
        const char* name;
        std::vector<std::int32_t> times;
    };
    std::vector<Spacing> spacings = {
        {"irregular", kIrregular}, {"dense", {}}, {"sparse", {}}, {"steady", {}}, {"bursts", {}}};
    for (std::int32_t i = 0; i < 200; ++i) {
        spacings[1].times.push_back(i / 3);    // three records a millisecond, repeats included
        spacings[2].times.push_back(i * 137);  // far slower than 20 ms
        spacings[3].times.push_back(20 + i * 20);
        // Ten records at one time: the estimate lands inside a burst, past its first record.
        spacings[4].times.push_back(i / 10 * 250);
    }
    for (const Spacing& s : spacings) {
        lv::RecBuffer buffer = bufferWithTimes(s.times);
        const auto count = static_cast<std::int32_t>(s.times.size());
        for (std::int32_t t = -5; t <= s.times.back() + 30; ++t) {
            std::int32_t expected = count;
            for (std::int32_t i = 0; i < count; ++i)
                if (s.times[static_cast<std::size_t>(i)] >= t) {
                    expected = i + 1;
                    break;
                }
            ASSERT_EQ(buffer.FindlvdRecord(t), expected) << s.name << " at " << t << " ms";
        }
    }
}

TEST(FindlvdRecord, AnEmptyBufferHasNoRecordToFind)
{
    lv::RecBuffer buffer;
    EXPECT_EQ(buffer.FindlvdRecord(0), 0);
    EXPECT_EQ(buffer.FindlvdRecord(5000), 0);
}

}  // namespace
