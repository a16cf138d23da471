#include "signal/lamp_rules.h"

namespace lv {

void setLamp(MeterState& st, DisplaySink& display, Colour colour) {
    display.Update_LED(colour);
    st.LedColour = colour;
}

void lampForStatus(MeterState& st, const Settings& cfg, DisplaySink& display, int statusDigit) {
    // Each step draws, so a status change always leaves a freshly drawn lamp,
    // and body motion is drawn last so it wins over SET.
    setLamp(st, display, cfg.Dial_Color);
    if (statusDigit & 0x1) setLamp(st, display, cfg.LED_Set_Color);
    if (statusDigit & 0x2) setLamp(st, display, cfg.LED_BM_Color);
}

void lampLag(MeterState& st, const Settings& cfg, DisplaySink& display) {
    if (st.LedColour != cfg.LED_Lag_Color) setLamp(st, display, cfg.LED_Lag_Color);
}

void lampInputError(MeterState& st, const Settings& cfg, DisplaySink& display) {
    setLamp(st, display, cfg.LED_Lag_Color);
}

void lampRecover(MeterState& st, const Settings& cfg, DisplaySink& display) {
    if (st.LedColour == cfg.LED_Lag_Color) setLamp(st, display, cfg.Dial_Color);
}

int lampStateCode(Colour shown, const Settings& cfg) {
    if (shown == cfg.Dial_Color) return kLampOff;
    if (shown == cfg.LED_Set_Color) return kLampSet;
    if (shown == cfg.LED_BM_Color) return kLampBodyMotion;
    return kLampLag;
}

Colour lampColourForCode(int code, const Settings& cfg) {
    switch (code & 0x3) {
        case kLampOff:
            return cfg.Dial_Color;
        case kLampSet:
            return cfg.LED_Set_Color;
        case kLampBodyMotion:
            return cfg.LED_BM_Color;
        default:
            return cfg.LED_Lag_Color;
    }
}

int lagLimitForItem(int item) {
    // The settings file is taken as it stands; a lag limit of 0 would flag
    // every frame, so keep it to what the menu offers.
    return item < 1 ? 1 : (item > 5 ? 5 : item);
}

int bodyMotionLevelForItem(int item) {
    switch (item) {
        case 1:
            return 30;
        case 2:
            return 50;
        case 3:
            return 100;
        default:
            return 0;
    }
}

}  // namespace lv
