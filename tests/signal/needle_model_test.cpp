#include "signal/needle_model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/recording_display.h"

namespace {

using Calls = std::vector<std::string>;

lv::MeterState steadyState(std::int32_t ref, int sensPos)
{
    lv::MeterState st;
    st.NeedleReset = false;
    st.ReferencePending = false;
    st.NeedleRef = ref;
    st.SensPos = static_cast<std::int16_t>(sensPos);
    return st;
}

TEST(CalcNeedle, ScalesTheFallFromTheReferenceByHalfTheGain)
{
    struct Case {
        std::int32_t ref, reading;
        int sensPos;
        std::int32_t expected;
    };
    const Case cases[] = {
        {40000, 39000, 36, 8318},      // 1000 * 8192 / 757 = 10821, minus 2503
        {40000, 41000, 36, -10500},    // -13324 stops at the lower end
        {40000, 40000, 36, -2503},     // no change rests on the mark
        {40000, 39990, 63, -2071},     // 10 * 32767 / 757 = 432.9 -> 432
        {40000, 40010, 63, -2935},     // -432.9 -> -432: truncated toward zero
        {40000, 39000, 0, -1422},      // 1000 * 819 / 757 = 1081.9
        {40000, 38486, 4, 117},        // gain 2621, half 1310 not 1310.5: 1514 * 1310 / 757 = 2620
        {65535, 0, 63, 10500},         // the largest product still stops at the upper end
        {0, 65535, 63, -10500},
        {40000, 30000, 64, -2503},     // the empty entry after the gains: gain 0
        {40000, 30000, -1, -2503},     // off the knob: no gain either
    };
    for (const Case& c : cases) {
        lv::MeterState st = steadyState(c.ref, c.sensPos);
        EXPECT_EQ(lv::Calc_Needle(st, c.reading), c.expected)
            << "ref " << c.ref << " reading " << c.reading << " knob " << c.sensPos;
        EXPECT_EQ(st.NeedleRef, c.ref) << "the reference stays without a request";
    }
}

TEST(CalcNeedle, ResetTakesTheReadingAsReferenceAndRests)
{
    lv::MeterState st = steadyState(1, 36);
    st.NeedleReset = true;
    st.ReferencePending = true;
    EXPECT_EQ(lv::Calc_Needle(st, 39000), -2503);
    EXPECT_EQ(st.NeedleRef, 39000);
    EXPECT_TRUE(st.NeedleReset) << "cleared by the needle drawing, not here";
    EXPECT_TRUE(st.ReferencePending) << "the reset path returns before the request is served";
}

TEST(CalcNeedle, PendingReferenceIsTakenAfterThisSampleIsShown)
{
    lv::MeterState st = steadyState(40000, 36);
    st.ReferencePending = true;
    EXPECT_EQ(lv::Calc_Needle(st, 39000), 8318) << "still measured against the old reference";
    EXPECT_FALSE(st.ReferencePending);
    EXPECT_EQ(st.NeedleRef, 39000);
    EXPECT_EQ(lv::Calc_Needle(st, 39000), -2503) << "back on the rest mark";
}

TEST(LiveNeedleValue, BaseSeesTheReferenceRequestBeforeTheNeedleServesIt)
{
    lv::Settings cfg;
    cfg.DialType = 1;
    lv::test::RecordingDisplay display;
    lv::MeterState st = steadyState(40000, 36);
    st.ReferencePending = true;
    st.RawNeedle = 65535;
    st.FilteredNeedle = 39000;
    EXPECT_EQ(lv::liveNeedleValue(st, cfg, display), 8318) << "the needle follows the filtered reading";
    EXPECT_EQ(display.calls, Calls{"Base(6.5)"}) << "the Base follows the raw one";
    EXPECT_FALSE(st.ReferencePending);
    EXPECT_EQ(st.NeedleRef, 39000);

    st.NeedleReset = true;
    st.FilteredNeedle = 12345;
    EXPECT_EQ(lv::liveNeedleValue(st, cfg, display), -2503);
    EXPECT_EQ(st.NeedleRef, 12345);
    EXPECT_TRUE(st.NeedleReset);
}

TEST(CAng, WrapsOneTurnOfTheProgramsConstant)
{
    struct Case {
        float angle, expected;
    };
    const Case cases[] = {
        {0.0f, 0.00001f},  {-0.1f, 6.18318f}, {7.0f, 0.71682f}, {3.0f, 3.0f},     {6.28f, 6.28f},
        {-7.0f, -0.71682f}, {13.0f, 6.71682f},  // only one turn, however far out
        {1e-7f, 1e-7f},
    };
    for (const Case& c : cases) EXPECT_NEAR(lv::CAng(c.angle), c.expected, 2e-6f) << "angle " << c.angle;
}

TEST(Knob, StepsStopAtBothEndsAndRedrawTheKnob)
{
    struct Case {
        int from;
        bool up;
        int to;
    };
    const Case cases[] = {{0, true, 1},   {36, true, 37},  {62, true, 63}, {63, true, 63}, {70, true, 63},
                          {1, false, 0},  {36, false, 35}, {0, false, 0},  {-5, false, 0}, {63, false, 62}};
    for (const Case& c : cases) {
        lv::MeterState st;
        st.SensPos = static_cast<std::int16_t>(c.from);
        lv::test::RecordingDisplay display;
        if (c.up) {
            lv::Go_Up(st, display);
        } else {
            lv::Go_Down(st, display);
        }
        EXPECT_EQ(st.SensPos, c.to) << "from " << c.from << (c.up ? " up" : " down");
        EXPECT_EQ(display.calls, Calls{"Knob(" + std::to_string(c.to) + ")"});
    }
}

TEST(BdText, TenthsBelowOneHundredWholeNumbersAbove)
{
    struct Case {
        std::int32_t value;
        const char* text;
    };
    const Case cases[] = {
        {15, "1.5"},   {999, "99.9"}, {1000, "100"},    {0, "0.0"},       {5, "0.5"},
        {1005, "101"},  // 100.5: halves away from zero
        {1234, "123"}, {12345, "1235"}, {32767, "3277"}, {-5, "-0.5"}, {-1000, "-100.0"}, {-12345, "-1234.5"},
    };
    for (const Case& c : cases) EXPECT_EQ(lv::bdText(c.value), c.text) << "value " << c.value;
}

}  // namespace
