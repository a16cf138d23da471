#pragma once
#include "common/display_sink.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// Lamp state codes as the recorder stores them and the player reads them back.
enum LampCode : int { kLampOff = 0, kLampSet = 1, kLampBodyMotion = 2, kLampLag = 3 };

// Draws the lamp in this colour and remembers it as the colour shown.
void setLamp(MeterState& st, DisplaySink& display, Colour colour);

// The meter's status digit changed: off, then SET (bit 0), then body motion (bit 1) wins.
void lampForStatus(MeterState& st, const Settings& cfg, DisplaySink& display, int statusDigit);
// Needle lag or an input overflow: the lag colour, drawn only if not already shown.
void lampLag(MeterState& st, const Settings& cfg, DisplaySink& display);
// A bad frame: the lag colour, drawn every time.
void lampInputError(MeterState& st, const Settings& cfg, DisplaySink& display);
// Five good frames: the lag colour goes off; any other colour stays.
void lampRecover(MeterState& st, const Settings& cfg, DisplaySink& display);

// 0 for Dial_Color, 1 for LED_Set_Color, 2 for LED_BM_Color, 3 for anything else.
int lampStateCode(Colour shown, const Settings& cfg);
// The playback direction: a recorded code back to its colour.
Colour lampColourForCode(int code, const Settings& cfg);

// Alert menu items to their stored values.
int lagLimitForItem(int item);         // 1..5 -> 1..5 frames
int bodyMotionLevelForItem(int item);  // 1, 2, 3 -> 30, 50, 100

}  // namespace lv
