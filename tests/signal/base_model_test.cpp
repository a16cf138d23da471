#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "signal/needle_model.h"
#include "support/recording_display.h"

namespace {

using Calls = std::vector<std::string>;

TEST(BaseByte, MapsTheReadingOntoFourTo245)
{
    struct Case {
        std::int32_t raw;
        int b;
    };
    const Case cases[] = {
        {65535, 245},  // x = 32767.5 -> 32768, t = 61550 + 1170 = 62720
        {65534, 244},  // x = 32767, t = 61548 + 1170 = 62718
        {0, 4},        // t = 1170
        {117, 4},      // x = 58.5 -> 58 (even), t = 108 + 1170 = 1278
        {118, 5},      // x = 59, t = 110 + 1170 = 1280
        {119, 5},      // x = 59.5 -> 60
        {32768, 124},  // t = 30775 + 1170 = 31945
    };
    for (const Case& c : cases) EXPECT_EQ(lv::baseByteFor(c.raw), c.b) << "raw " << c.raw;
}

TEST(BaseText, StepsOfFiveHundredthsFromHalfToSixAndAHalf)
{
    struct Case {
        int b;
        const char* text;
    };
    const Case cases[] = {{245, "6.5"}, {4, "0.5"},   {0, "0.4"},   {255, "6.75"}, {24, "1.0"}, {25, "1.0"},
                          {26, "1.05"}, {66, "2.05"}, {67, "2.05"}, {68, "2.1"},   {74, "2.25"}};
    for (const Case& c : cases) EXPECT_EQ(lv::baseText(c.b), c.text) << "b " << c.b;
}

class CalcBaseTest : public ::testing::Test {
protected:
    void sample(std::int32_t raw)
    {
        st.RawNeedle = raw;
        lv::Calc_Base(st, cfg, display);
    }

    lv::MeterState st;  // starts showing Base "2.0" and BD "0.0"
    lv::Settings cfg;
    lv::test::RecordingDisplay display;
};

// Base bytes 245, 124, 4, 245, 245: falls of 121 and 120 between rises.
TEST_F(CalcBaseTest, FallsAddUpToBdWhileCountingOnEveryBdDial)
{
    for (int dial : {0, 2, 3}) {
        st = lv::MeterState{};
        st.BdCounting = true;
        cfg.DialType = dial;
        display.clear();
        for (std::int32_t raw : {65535, 32768, 0, 65535, 65535}) sample(raw);
        EXPECT_EQ(display.calls, (Calls{"Base(6.5)", "Bd(3.0)", "Base(3.5)", "Bd(6.0)", "Base(0.5)", "Base(6.5)"}))
            << "dial " << dial;
        EXPECT_EQ(st.BdQuarter, 241);
        EXPECT_EQ(st.BdValue, 60);
        EXPECT_EQ(st.BaseByte, 245);
        EXPECT_EQ(st.ShownBase, "6.5");
        EXPECT_EQ(st.ShownBd, "6.0");
    }
}

TEST_F(CalcBaseTest, NothingIsCountedWhileTheMeterIsNotCounting)
{
    cfg.DialType = 0;
    for (std::int32_t raw : {65535, 32768, 0}) sample(raw);
    EXPECT_EQ(display.calls, (Calls{"Base(6.5)", "Base(3.5)", "Base(0.5)"}));
    EXPECT_EQ(st.BdQuarter, 0);
    EXPECT_EQ(st.BaseByte, 4);
}

TEST_F(CalcBaseTest, SmallFallsAccumulateInQuarters)
{
    cfg.DialType = 0;
    st.BdCounting = true;
    for (int i = 0; i < 4; ++i) {
        st.lastBaseByte = 5;
        sample(0);  // b = 4: a fall of one quarter
    }
    EXPECT_EQ(display.calls, (Calls{"Base(0.5)", "Bd(0.1)"})) << "the BD text changes on the fourth quarter";
    EXPECT_EQ(st.BdQuarter, 4);
}

TEST_F(CalcBaseTest, BdValueFollowsQuartersSetElsewhere)
{
    cfg.DialType = 0;
    st.BdQuarter = 41;  // as a frame from the meter leaves it
    st.BdValue = 0;
    st.ShownBase = "0.5";
    sample(0);
    EXPECT_EQ(st.BdValue, 10);
    EXPECT_TRUE(display.calls.empty()) << "no fall and an unchanged Base text draw nothing";
}

TEST_F(CalcBaseTest, MotionFreezeTracksTheBaseButShowsNothing)
{
    cfg.DialType = 0;
    st.BdCounting = true;
    st.MotionFreeze = true;
    sample(65535);
    EXPECT_TRUE(display.calls.empty());
    EXPECT_EQ(st.lastBaseByte, 245);
    EXPECT_EQ(st.BaseByte, 0);
    EXPECT_EQ(st.BdQuarter, 0);

    st.MotionFreeze = false;
    sample(0);  // the fall is measured from the frozen sample's 245
    EXPECT_EQ(display.calls, (Calls{"Bd(6.0)", "Base(0.5)"}));
    EXPECT_EQ(st.BdQuarter, 241);
}

TEST_F(CalcBaseTest, DialOneShowsTheBaseOnlyWhenTheReferenceIsRetaken)
{
    cfg.DialType = 1;
    st.BdCounting = true;
    st.lastBaseByte = 245;
    st.ReferencePending = false;
    sample(0);
    EXPECT_TRUE(display.calls.empty());
    EXPECT_EQ(st.BaseByte, 0);

    st.ReferencePending = true;
    sample(0);
    EXPECT_EQ(display.calls, Calls{"Base(0.5)"});
    EXPECT_EQ(st.BaseByte, 4);
    EXPECT_EQ(st.lastBaseByte, 245) << "this dial keeps no running Base";
    EXPECT_EQ(st.BdQuarter, 0) << "nor a BD count";
    EXPECT_TRUE(st.ReferencePending) << "served by Calc_Needle, not here";
}

TEST_F(CalcBaseTest, OtherDialTypesLeaveEverythingAlone)
{
    for (int dial : {4, -1, 99}) {
        st = lv::MeterState{};
        st.BdCounting = true;
        st.lastBaseByte = 245;
        cfg.DialType = dial;
        sample(0);
        EXPECT_TRUE(display.calls.empty()) << "dial " << dial;
        EXPECT_EQ(st.lastBaseByte, 245);
        EXPECT_EQ(st.BaseByte, 0);
        EXPECT_EQ(st.BdQuarter, 0);
        EXPECT_EQ(st.ShownBase, "2.0");
    }
}

}  // namespace
