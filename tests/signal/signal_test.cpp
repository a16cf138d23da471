#include <gtest/gtest.h>

#include <cmath>

#include "signal/lamp_rules.h"
#include "signal/needle_model.h"
#include "signal/sens_table.h"
#include "support/recording_display.h"

namespace {

using Calls = std::vector<std::string>;
using Ints = std::vector<std::int32_t>;

class Signal : public ::testing::Test {
protected:
    Ints feed(const Ints& readings) {  // through Filter as the live path gives them
        Ints out;
        for (std::int32_t r : readings) {
            st.RawNeedle = r;
            lv::Filter(st);
            st.NeedleReset = false;
            out.push_back(st.FilteredNeedle);
        }
        return out;
    }
    void base(std::int32_t raw) {
        st.RawNeedle = raw;
        lv::Calc_Base(st, cfg, display);
    }

    lv::MeterState st;  // NeedleReset set; shows Base "2.0" and BD "0.0"
    lv::Settings cfg;
    lv::test::RecordingDisplay display;
};

TEST_F(Signal, FilterSettlesShortensOnAStepAndRoundsHalvesToEven) {
    feed(Ints(20, 30000));
    // The length has grown to 10; it drops by one a sample while slot 16 holds 30000:
    // 241500/8 = 30187.5 -> 30188 (even).
    EXPECT_EQ(feed(Ints(6, 30500)), (Ints{30050, 30111, 30188, 30286, 30417, 30500}));
    feed(Ints(9, 30500));
    EXPECT_EQ(st.filter.length, 2) << "still shrinking 15 samples after the step";
    EXPECT_EQ(feed({30530}), Ints{30510}) << "but three samples at the shortest";
    EXPECT_EQ(st.filter.length, 4) << "slot 16 has caught up";
    // (3 x 1000 + newest) / 4; a span |newest - 1000| of exactly 100 keeps the length.
    for (auto [newest, average, lengthAfter] :
         {std::tuple{1100, 1025, 4}, {1101, 1025, 3}, {1099, 1025, 5}, {1006, 1002, 5}}) {
        st.NeedleReset = true;
        feed({1000});
        st.filter.length = 4;
        EXPECT_EQ(feed({newest}), Ints{average}) << newest;
        EXPECT_EQ(st.filter.length, lengthAfter) << newest;
    }
    // The needle test bypasses the filter.
    st.TestModeOn = true;
    st.RawNeedle = 9000;
    lv::sampleStep(st);
    EXPECT_EQ(std::pair(st.FilteredNeedle, st.filter.history[16]), std::pair(9000, 1000));
}

TEST_F(Signal, CalcNeedleScalesTheFallByHalfTheGainAndRetakesTheReference) {
    // 1000 * 8192 / 757 = 10821, minus 2503; the ends at -+10500; toward zero; knob 64: no gain.
    const std::tuple<int, int, int, int> cases[] = {{40000, 39000, 36, 8318},
                                                    {40000, 41000, 36, -10500},
                                                    {40000, 40010, 63, -2935},
                                                    {40000, 38486, 4, 117},
                                                    {40000, 30000, 64, -2503}};
    for (auto [ref, reading, knob, expected] : cases) {
        st.NeedleReset = st.ReferencePending = false;
        st.NeedleRef = ref;
        st.SensPos = static_cast<std::int16_t>(knob);
        EXPECT_EQ(lv::Calc_Needle(st, reading), expected) << reading << " knob " << knob;
    }
    cfg.DialType = 1;  // shows the Base only while ReferencePending, which Calc_Needle clears
    st.SensPos = 36;
    st.ReferencePending = true;
    st.RawNeedle = 65535;
    st.FilteredNeedle = 39000;
    EXPECT_EQ(lv::liveNeedleValue(st, cfg, display), 8318) << "against the old reference";
    EXPECT_EQ(display.calls, Calls{"Base(6.5)"}) << "Base first, from the raw reading";
    EXPECT_EQ(lv::Calc_Needle(st, 38000), 8318) << "now against 39000, once";
}

TEST_F(Signal, ReadoutConversionsTheKnobsGainsAndLampCodes) {
    // round-half-even(raw / 2) * 61550 / 32768 + 1170, / 256.
    EXPECT_EQ(std::pair(lv::baseByteFor(117), lv::baseByteFor(118)), std::pair(4, 5));
    for (auto [value, text] : {std::pair{999, "99.9"}, {1005, "101"}, {-1000, "-100.0"}})
        EXPECT_EQ(lv::bdText(value), text) << value;
    // Each gain is its label x 1638.4, rounded (40 held at 65535).
    for (int p = 0; p < 64; ++p) {
        const std::string label = lv::sensLabel(p);
        const long gain = label == "40" ? 65535 : std::lround(std::stod(label) * 1638.4);
        EXPECT_EQ(lv::sensGain(p), gain) << p << " " << label;
    }
    // Keyboard knob steps stop at both ends.
    for (auto [from, up, to] : {std::tuple{62, true, 63}, {63, true, 63}, {0, false, 0}}) {
        st.SensPos = static_cast<std::int16_t>(from);
        (up ? lv::Go_Up : lv::Go_Down)(st, display);
        EXPECT_EQ(st.SensPos, to) << from;
        EXPECT_EQ(display.take(), Calls{"Knob(" + std::to_string(to) + ")"});
    }
    // The lamp's colour is recorded as a code and played back from it.
    for (int code = 0; code < 4; ++code)
        EXPECT_EQ(lv::lampStateCode(lv::lampColourForCode(code, cfg), cfg), code);
    EXPECT_EQ(lv::lampStateCode(0x123456, cfg), lv::kLampLag) << "any unknown colour";
}

// Dials 0 and 3 count falls while the meter counts.
TEST_F(Signal, CalcBaseCountsFallsAsBd) {
    // Bytes 245, 124, 4, 245, 244: falls of 121, 120 and 1 quarters on top of 41.
    const Calls counted{"Base(6.5)", "Bd(4.0)", "Base(3.5)", "Bd(7.0)", "Base(0.5)", "Base(6.5)"};
    st.BdQuarter = 41;
    st.BdCounting = true;
    cfg.DialType = 3;
    for (std::int32_t raw : {65535, 32768, 0, 65535, 65534}) base(raw);
    EXPECT_EQ(display.take(), counted);
    EXPECT_EQ(std::tuple(st.BdQuarter, st.BaseByte, st.BdValue), std::tuple(41 + 242, 244, 70));
    st = lv::MeterState{};
    st.BdCounting = st.MotionFreeze = true;  // tracks the Base but shows nothing
    base(65535);
    EXPECT_TRUE(display.calls.empty());
    st.MotionFreeze = false;
    base(0);  // the fall is measured from the frozen 245
    EXPECT_EQ(display.take(), (Calls{"Bd(6.0)", "Base(0.5)"}));
}

}  // namespace
