#include <gtest/gtest.h>

#include "signal/lamp_rules.h"
#include "support/recording_display.h"

namespace lv {
namespace {

class LampRulesTest : public ::testing::Test {
protected:
    std::string led(Colour c) const { return "LED(" + std::to_string(c) + ")"; }
    MeterState st;
    Settings cfg;
    test::RecordingDisplay display;
};

TEST_F(LampRulesTest, LagIsDrawnOnlyWhenNotShownButAnErrorAlways) {
    lampLag(st, cfg, display);
    lampLag(st, cfg, display);
    EXPECT_EQ(display.calls, std::vector<std::string>{led(cfg.LED_Lag_Color)});
    lampInputError(st, cfg, display);
    EXPECT_EQ(display.calls.size(), 2u);
    EXPECT_EQ(st.LedColour, cfg.LED_Lag_Color);
}

TEST_F(LampRulesTest, RecoveryTurnsOffOnlyTheLagColour) {
    for (Colour shown : {cfg.LED_Lag_Color, cfg.LED_Set_Color, cfg.LED_BM_Color, cfg.Dial_Color}) {
        st.LedColour = shown;
        display.clear();
        lampRecover(st, cfg, display);
        const bool wasLag = shown == cfg.LED_Lag_Color;
        EXPECT_EQ(st.LedColour, wasLag ? cfg.Dial_Color : shown);
        EXPECT_EQ(display.calls.size(), wasLag ? 1u : 0u);
    }
}

TEST_F(LampRulesTest, StateCodesRoundTripThroughTheColours) {
    for (int code = 0; code < 4; ++code) {
        EXPECT_EQ(lampStateCode(lampColourForCode(code, cfg), cfg), code);
    }
    EXPECT_EQ(lampStateCode(0x123456, cfg), kLampLag) << "any unknown colour is the fourth state";
    EXPECT_EQ(lampColourForCode(4 + kLampSet, cfg), cfg.LED_Set_Color) << "only two bits count";
}

TEST_F(LampRulesTest, StateCodeWhenColoursCoincide) {
    // A user may give two lamps one colour; the first identity in order wins.
    cfg.LED_Set_Color = cfg.Dial_Color;
    EXPECT_EQ(lampStateCode(cfg.Dial_Color, cfg), kLampOff);
}

TEST(AlertMenus, ItemsToStoredValues) {
    struct Case {
        int item, lag, level;
    };
    for (const Case c : {Case{1, 1, 30}, Case{2, 2, 50}, Case{3, 3, 100}, Case{5, 5, 0},
                         Case{0, 1, 0}, Case{9, 5, 0}}) {
        EXPECT_EQ(lagLimitForItem(c.item), c.lag) << c.item;
        EXPECT_EQ(bodyMotionLevelForItem(c.item), c.level) << c.item;
    }
}

}  // namespace
}  // namespace lv
