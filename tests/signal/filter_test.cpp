#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "signal/meter_state.h"
#include "signal/needle_model.h"

namespace {

// Feeds readings through Filter as the live path does after the first sample.
std::vector<std::int32_t> feed(lv::MeterState& st, const std::vector<std::int32_t>& readings)
{
    std::vector<std::int32_t> out;
    for (std::int32_t r : readings) {
        st.RawNeedle = r;
        lv::Filter(st);
        st.NeedleReset = false;
        out.push_back(st.FilteredNeedle);
    }
    return out;
}

lv::MeterState settledAt(std::int32_t value, int samples)
{
    lv::MeterState st;
    st.NeedleReset = true;
    feed(st, std::vector<std::int32_t>(static_cast<std::size_t>(samples), value));
    return st;
}

TEST(Filter, ConstantInputPassesThroughAndTheLengthGrowsToTen)
{
    lv::MeterState st = settledAt(30000, 20);
    EXPECT_EQ(st.FilteredNeedle, 30000);
    // A single step now shows the length in use: one new sample in ten.
    EXPECT_EQ(feed(st, {31000}), std::vector<std::int32_t>{30100});
}

TEST(Filter, AStepShortensTheAverageOneSampleAtATime)
{
    lv::MeterState st = settledAt(30000, 20);
    // Length 10, 9, 8, ... while slot 16 still holds 30000 (span 500 > 100):
    // (30500 + 9*30000)/10, (2*30500 + 7*30000)/9 = 30111.1,
    // (3*30500 + 5*30000)/8 = 30187.5 -> 30188 (even), 212000/7 = 30285.7,
    // 182500/6 = 30416.7, then five samples of 30500 in a length of 5.
    EXPECT_EQ(feed(st, std::vector<std::int32_t>(6, 30500)),
              (std::vector<std::int32_t>{30050, 30111, 30188, 30286, 30417, 30500}));
    EXPECT_EQ(st.filter.length, 4);
}

TEST(Filter, LengthNeverLeavesThreeToTenInUse)
{
    lv::MeterState st = settledAt(30000, 20);
    feed(st, std::vector<std::int32_t>(12, 40000));  // long enough to shrink past 3
    // At length 3 the newest three readings make the whole average.
    EXPECT_EQ(feed(st, {40300}), std::vector<std::int32_t>{40100});

    lv::MeterState grown = settledAt(1000, 40);
    EXPECT_EQ(feed(grown, {2000}), std::vector<std::int32_t>{1100}) << "still ten after 40 still samples";
}

TEST(Filter, AverageRoundsHalvesToEven)
{
    struct Case {
        std::int32_t newest;
        std::int32_t expected;
    };
    // Length 4 over three slots of 10 and the newest reading.
    const Case cases[] = {{12, 10}, {14, 11}, {16, 12}, {13, 11}, {8, 10}, {4, 8}};
    for (const Case& c : cases) {
        lv::MeterState st;
        st.filter.length = 4;
        st.NeedleReset = true;
        feed(st, {10});
        st.filter.length = 4;
        EXPECT_EQ(feed(st, {c.newest}), std::vector<std::int32_t>{c.expected}) << "newest " << c.newest;
    }
}

TEST(Filter, SpanOfExactlyOneHundredKeepsTheLength)
{
    struct Case {
        std::int32_t newest;
        std::int16_t lengthAfter;
    };
    // Slot 16 holds 1000 after the reset; the span is |newest - 1000|.
    const Case cases[] = {{1100, 5}, {900, 5}, {1101, 4}, {899, 4}, {1099, 6}, {1000, 6}};
    for (const Case& c : cases) {
        lv::MeterState st;
        st.NeedleReset = true;
        feed(st, {1000});
        st.filter.length = 5;
        feed(st, {c.newest});
        EXPECT_EQ(st.filter.length, c.lengthAfter) << "newest " << c.newest;
    }
}

TEST(Filter, ResetFillsAllSixteenSlots)
{
    lv::MeterState st = settledAt(100, 20);
    st.NeedleReset = true;
    st.RawNeedle = 50000;
    lv::Filter(st);
    for (std::size_t i = 1; i <= 16; ++i) EXPECT_EQ(st.filter.history[i], 50000) << "slot " << i;
    EXPECT_EQ(st.filter.history[0], 0);
    EXPECT_EQ(st.filter.history[17], 0);
    EXPECT_EQ(st.FilteredNeedle, 50000) << "no trace of the old readings";
}

TEST(SampleStep, KeepsTheLastThreeRawReadings)
{
    struct Case {
        bool reset;
        std::array<std::int32_t, 3> expected;
    };
    const Case cases[] = {
        {false, {500, 1, 2}},
        {true, {500, 500, 500}},  // a reset pretends the needle has been here all along
    };
    for (const Case& c : cases) {
        lv::MeterState st;
        st.rawHistory = {1, 2, 3};
        st.RawNeedle = 500;
        st.NeedleReset = c.reset;
        lv::sampleStep(st);
        EXPECT_EQ(st.rawHistory, c.expected) << "reset " << c.reset;
    }
}

TEST(SampleStep, NeedleTestBypassesTheFilter)
{
    lv::MeterState st = settledAt(1000, 20);
    const lv::FilterState before = st.filter;
    st.TestModeOn = true;
    st.RawNeedle = 9000;
    lv::sampleStep(st);
    EXPECT_EQ(st.FilteredNeedle, 9000);
    EXPECT_EQ(st.filter.history, before.history);
    EXPECT_EQ(st.filter.length, before.length);

    st.TestModeOn = false;
    st.RawNeedle = 2000;
    lv::sampleStep(st);
    EXPECT_EQ(st.FilteredNeedle, 1100) << "filtered again, over ten samples";
}

}  // namespace
