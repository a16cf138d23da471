#pragma once
#include <cstdint>

#include "recording/lvd_record.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// The record of one live frame, taken right after its needle was computed:
// the reading, the needle, Base and BD as the base calculation left them,
// the knob, the lamp as shown and the dial type. The time is the caller's
// (it depends on the audio clock); the stamp bytes are left as `working`
// holds them, since the recorder reuses one working record.
lvdRecord recordOfFrame(const MeterState& st, const Settings& cfg, std::int32_t needleValue,
                        char frameLetter, std::int32_t timeMs, const lvdRecord& working = {});

}  // namespace lv
