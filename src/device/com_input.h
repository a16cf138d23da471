#pragma once
#include <string_view>

#include "common/display_sink.h"
#include "device/recorder_tap.h"
#include "device/serial_port.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// Everything the live frame path reads and writes.
struct LiveContext {
    MeterState& st;
    const Settings& cfg;
    DisplaySink& display;
    RecorderTap& recorder;
};

// 51 characters waiting means the display has fallen well behind the meter.
inline constexpr int kOverflowCount = 51;

// Decodes what waits at the port: keeps the last complete line (an "O" line
// is never skipped for a later one), judges the link's health and drives the
// lamp, knob and BD readouts.
void Com_Input(LiveContext& ctx, SerialPort& port);

// The two halves of Com_Input over text already read, for tests and fuzzing.
void comInputOverflow(LiveContext& ctx);
void comInputText(LiveContext& ctx, std::string_view waiting);

}  // namespace lv
