#pragma once
#include <cstdint>

#include "common/display_sink.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// Needle position units: 65536 to a full turn, 0 straight up, positive clockwise.
inline constexpr std::int32_t kNeedleRest = -2503;
inline constexpr std::int32_t kNeedleLimit = 10500;

// Adaptive moving average: RawNeedle -> FilteredNeedle.
void Filter(MeterState& st);

// What runs after every decoded live frame: raw history, then the filter (or
// the unfiltered copy while the needle test runs).
void sampleStep(MeterState& st);

// Needle position -10500..10500 for a reading, relative to NeedleRef and
// scaled by the knob. Re-takes the reference when NeedleReset/ReferencePending.
std::int32_t Calc_Needle(MeterState& st, std::int32_t reading);

// Base reading and BD accumulation from RawNeedle, by DialType.
void Calc_Base(MeterState& st, const Settings& cfg, DisplaySink& display);

// Live needle value for one sample, in the order the needle update asks for
// it: Calc_Base, then Calc_Needle on the filtered reading.
std::int32_t liveNeedleValue(MeterState& st, const Settings& cfg, DisplaySink& display);

// Angle wrap of the dial and clock drawing (single precision, the program's 6.28318).
float CAng(float angle);

// Knob stepping from the keyboard; the meter's own position overwrites it on the next frame.
void Go_Up(MeterState& st, DisplaySink& display);
void Go_Down(MeterState& st, DisplaySink& display);

// BD counter text for a value in tenths: "#0.0" below 1000, "000" from 1000 on.
std::string bdText(std::int32_t bdValue);
// Base text for a Base byte 0..255: ((b >> 1) + 8) / 20 as "0.0#".
std::string baseText(int baseByte);
// Base byte from a raw reading 0..65535.
int baseByteFor(std::int32_t rawNeedle);

}  // namespace lv
