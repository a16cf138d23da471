#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>
#include <vector>

#include "signal/lamp_rules.h"
#include "signal/needle_model.h"
#include "support/recording_display.h"

namespace {

using Calls = std::vector<std::string>;
using Ints = std::vector<std::int32_t>;

class Signal : public ::testing::Test {
protected:
    // Readings through Filter as the live path gives them; the filtered values.
    Ints feed(const Ints& readings) {
        Ints out;
        for (std::int32_t r : readings) {
            st.RawNeedle = r;
            lv::Filter(st);
            st.NeedleReset = false;
            out.push_back(st.FilteredNeedle);
        }
        return out;
    }
    void steady(std::int32_t ref, int sensPos) {
        st.NeedleReset = st.ReferencePending = false;
        st.NeedleRef = ref;
        st.SensPos = static_cast<std::int16_t>(sensPos);
    }
    void base(std::int32_t raw) {
        st.RawNeedle = raw;
        lv::Calc_Base(st, cfg, display);
    }

    lv::MeterState st;  // NeedleReset set; shows Base "2.0" and BD "0.0"
    lv::Settings cfg;
    lv::test::RecordingDisplay display;
};

TEST_F(Signal, FilterSettlesOnAConstantThenShortensOnAStep) {
    feed(Ints(20, 30000));
    EXPECT_EQ(st.FilteredNeedle, 30000);
    // The length has grown to 10; it drops by one a sample while slot 16 holds
    // 30000 (span 500): 30050, 271000/9, 241500/8 = 30187.5 -> 30188 (even),
    // 212000/7, 182500/6, 152500/5.
    EXPECT_EQ(feed(Ints(6, 30500)), (Ints{30050, 30111, 30188, 30286, 30417, 30500}));
    feed(Ints(9, 30500));
    EXPECT_EQ(st.filter.length, 2) << "still shrinking 15 samples after the step";
    EXPECT_EQ(feed({30530}), Ints{30510}) << "but three samples at the shortest";
    EXPECT_EQ(st.filter.length, 4) << "slot 16 has caught up";
}

TEST_F(Signal, FilterRoundsHalvesToEvenAndKeepsTheLengthOnASpanOfOneHundred) {
    // (3 x 1000 + newest) / 4; the span is |newest - 1000|.
    for (auto [newest, average, lengthAfter] : {std::tuple{1100, 1025, 4},
                                                {900, 975, 4},
                                                {1101, 1025, 3},
                                                {1099, 1025, 5},
                                                {1002, 1000, 5},
                                                {1006, 1002, 5}}) {
        st.NeedleReset = true;
        feed({1000});
        st.filter.length = 4;
        EXPECT_EQ(feed({newest}), Ints{average}) << "newest " << newest;
        EXPECT_EQ(st.filter.length, lengthAfter) << "newest " << newest;
    }
}

TEST_F(Signal, ResetRefillsTheFilterAndTheRawHistory) {
    st.RawNeedle = 50000;
    lv::sampleStep(st);
    EXPECT_EQ(st.FilteredNeedle, 50000);
    for (std::size_t i = 1; i <= 16; ++i) EXPECT_EQ(st.filter.history[i], 50000) << "slot " << i;
    EXPECT_EQ(st.rawHistory, (std::array<std::int32_t, 3>{50000, 50000, 50000}));

    st.NeedleReset = false;
    st.rawHistory = {1, 2, 3};
    st.TestModeOn = true;  // the needle test shows every raw step, unfiltered
    st.RawNeedle = 9000;
    lv::sampleStep(st);
    EXPECT_EQ(st.FilteredNeedle, 9000);
    EXPECT_EQ(st.filter.history[1], 50000);
    EXPECT_EQ(st.rawHistory, (std::array<std::int32_t, 3>{9000, 1, 2}));
}

TEST_F(Signal, CalcNeedleScalesTheFallByHalfTheGain) {
    for (auto [ref, reading, knob, expected] : {
             std::tuple{40000, 39000, 36, 8318},  // 1000 * 8192 / 757 = 10821, minus 2503
             {40000, 41000, 36, -10500},          // -13324 stops at the lower end
             {65535, 0, 63, 10500},
             {40000, 40010, 63, -2935},  // -10 * 32767 / 757 = -432.9: toward zero
             {40000, 38486, 4, 117},     // half of 2621 is 1310: 1514 * 1310 / 757 = 2620
             {40000, 30000, 64, -2503},  // the empty entry after the gains
         }) {
        steady(ref, knob);
        EXPECT_EQ(lv::Calc_Needle(st, reading), expected) << reading << " knob " << knob;
        EXPECT_EQ(st.NeedleRef, ref);
    }
}

TEST_F(Signal, ReferenceIsRetakenAfterThisSampleOrAtOnceOnReset) {
    steady(40000, 36);
    cfg.DialType = 1;  // shows the Base only while ReferencePending, which Calc_Needle clears
    st.ReferencePending = true;
    st.RawNeedle = 65535;
    st.FilteredNeedle = 39000;
    EXPECT_EQ(lv::liveNeedleValue(st, cfg, display), 8318) << "against the old reference";
    EXPECT_EQ(display.calls, Calls{"Base(6.5)"}) << "Base first, from the raw reading";
    EXPECT_EQ(lv::Calc_Needle(st, 38000), 8318) << "now against 39000";
    EXPECT_EQ(st.NeedleRef, 39000) << "and only once";

    st.NeedleReset = st.ReferencePending = true;
    EXPECT_EQ(lv::Calc_Needle(st, 12345), -2503);
    EXPECT_EQ(st.NeedleRef, 12345);
    EXPECT_TRUE(st.ReferencePending) << "the reset path returns before serving it";
}

TEST_F(Signal, ReadoutConversions) {
    // x = round-half-even(raw / 2); byte = (x * 61550 / 32768 + 1170) / 256.
    for (auto [raw, b] : {std::pair{65535, 245}, {0, 4}, {117, 4}, {118, 5}, {32768, 124}})
        EXPECT_EQ(lv::baseByteFor(raw), b) << "raw " << raw;
    // ((b >> 1) + 8) / 20, the second decimal only when it is a 5.
    for (auto [b, text] :
         {std::pair{245, "6.5"}, {4, "0.5"}, {25, "1.0"}, {26, "1.05"}, {66, "2.05"}})
        EXPECT_EQ(lv::baseText(b), text) << "b " << b;
    // BD in tenths: "#0.0" below 1000, "000" from 1000 on.
    for (auto [value, text] :
         {std::pair{5, "0.5"}, {999, "99.9"}, {1000, "100"}, {1005, "101"}, {-1000, "-100.0"}})
        EXPECT_EQ(lv::bdText(value), text) << "BD " << value;
    // Angles wrap by one turn of the drawing code's 6.28318; 0 is nudged off zero.
    for (auto [angle, expected] :
         {std::pair{0.0f, 0.00001f}, {-0.1f, 6.18318f}, {7.0f, 0.71682f}, {3.0f, 3.0f}})
        EXPECT_NEAR(lv::CAng(angle), expected, 2e-6f) << "angle " << angle;
}

// Bytes 245, 124, 4, 245, 244: falls of 121, 120 and 1 quarters on top of 41.
TEST_F(Signal, CalcBaseCountsFallsOnlyWhileTheMeterCounts) {
    const Calls bases{"Base(6.5)", "Base(3.5)", "Base(0.5)", "Base(6.5)"};
    const Calls counted{"Base(6.5)", "Bd(4.0)", "Base(3.5)", "Bd(7.0)", "Base(0.5)", "Base(6.5)"};
    for (int dial : {0, 2, 3}) {
        for (bool counting : {true, false}) {
            st = lv::MeterState{};
            st.BdQuarter = 41;
            st.BdCounting = counting;
            cfg.DialType = dial;
            for (std::int32_t raw : {65535, 32768, 0, 65535, 65534}) base(raw);
            EXPECT_EQ(display.take(), counting ? counted : bases)
                << "dial " << dial << " counting " << counting;
            EXPECT_EQ(st.BdQuarter, counting ? 41 + 242 : 41);
            EXPECT_EQ(st.BaseByte, 244);
            EXPECT_EQ(st.BdValue, counting ? 70 : 10);
        }
    }
}

TEST_F(Signal, CalcBaseMotionFreezeTracksTheBaseButShowsNothing) {
    cfg.DialType = 0;
    st.BdCounting = st.MotionFreeze = true;
    base(65535);
    EXPECT_TRUE(display.calls.empty());
    st.MotionFreeze = false;
    base(0);  // the fall is measured from the frozen 245
    EXPECT_EQ(display.calls, (Calls{"Bd(6.0)", "Base(0.5)"}));
}

TEST_F(Signal, CalcBaseDialOneOnlyOnReferenceOtherDialsNothing) {
    for (auto [dial, pending, calls] : {std::tuple{1, false, Calls{}},
                                        {1, true, Calls{"Base(0.5)"}},
                                        {4, true, Calls{}},
                                        {-1, true, Calls{}}}) {
        st = lv::MeterState{};
        st.BdCounting = true;
        st.lastBaseByte = 245;
        st.ReferencePending = pending;
        cfg.DialType = dial;
        base(0);
        EXPECT_EQ(display.take(), calls) << "dial " << dial << " pending " << pending;
        EXPECT_EQ(st.BaseByte, calls.empty() ? 0 : 4);
        EXPECT_EQ(st.lastBaseByte, 245) << "no running Base, so no BD";
    }
}

TEST_F(Signal, KnobStepsStopAtBothEnds) {
    for (auto [from, up, to] : {std::tuple{36, true, 37},
                                {63, true, 63},
                                {70, true, 63},
                                {36, false, 35},
                                {0, false, 0},
                                {-5, false, 0}}) {
        st.SensPos = static_cast<std::int16_t>(from);
        (up ? lv::Go_Up : lv::Go_Down)(st, display);
        EXPECT_EQ(st.SensPos, to) << "from " << from << " up " << up;
        EXPECT_EQ(display.take(), Calls{"Knob(" + std::to_string(to) + ")"});
    }
}

TEST_F(Signal, LampLagDrawnOnceErrorAlwaysRecoveryOnlyFromLag) {
    lv::lampLag(st, cfg, display);
    lv::lampLag(st, cfg, display);
    lv::lampInputError(st, cfg, display);
    EXPECT_EQ(display.take(), Calls(2, "LED(" + std::to_string(cfg.LED_Lag_Color) + ")"));
    for (lv::Colour shown : {cfg.LED_Set_Color, cfg.LED_BM_Color, cfg.LED_Lag_Color}) {
        st.LedColour = shown;
        lv::lampRecover(st, cfg, display);
        EXPECT_EQ(st.LedColour, shown == cfg.LED_Lag_Color ? cfg.Dial_Color : shown);
    }
    EXPECT_EQ(display.calls, Calls{"LED(" + std::to_string(cfg.Dial_Color) + ")"});
}

TEST_F(Signal, LampStateCodesRoundTripThroughTheColours) {
    for (int code = 0; code < 4; ++code)
        EXPECT_EQ(lv::lampStateCode(lv::lampColourForCode(code, cfg), cfg), code);
    EXPECT_EQ(lv::lampStateCode(0x123456, cfg), lv::kLampLag) << "any unknown colour";
    EXPECT_EQ(lv::lampColourForCode(4 + lv::kLampSet, cfg), cfg.LED_Set_Color)
        << "only two bits count";
    cfg.LED_Set_Color = cfg.Dial_Color;
    EXPECT_EQ(lv::lampStateCode(cfg.Dial_Color, cfg), lv::kLampOff)
        << "a shared colour reads as the first";
}

TEST_F(Signal, AlertMenuItemsToStoredValues) {
    for (auto [item, lag, level] :
         {std::tuple{1, 1, 30}, {2, 2, 50}, {3, 3, 100}, {5, 5, 0}, {0, 1, 0}, {9, 5, 0}}) {
        EXPECT_EQ(lv::lagLimitForItem(item), lag) << item;
        EXPECT_EQ(lv::bodyMotionLevelForItem(item), level) << item;
    }
}

}  // namespace
