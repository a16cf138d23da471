#include "signal/needle_model.h"

#include "common/vb_format.h"
#include "signal/sens_table.h"

namespace lv {

namespace {

// Raw counts per dial unit at half gain: chosen with the gain table so that a
// full-scale knob and a full-scale reading just reach the stops.
constexpr std::int64_t kCountsPerUnit = 757;

// One turn as the drawing code has always written it. Not 2 pi: the angles
// drawn depend on these digits, so they are kept.
constexpr double kTurn = 6.28318;

}  // namespace

std::int32_t Calc_Needle(MeterState& st, std::int32_t reading) {
    if (st.NeedleReset) {
        st.NeedleRef = reading;
        return kNeedleRest;
    }
    const std::int64_t half = sensGain(st.SensPos) / 2;
    // The original multiplied in 32 bits; readings and gains in range always
    // fit, and 64 bits keep an out-of-range reading from being undefined.
    std::int64_t position =
        (static_cast<std::int64_t>(st.NeedleRef) - reading) * half / kCountsPerUnit;
    position += kNeedleRest;
    if (position > kNeedleLimit) position = kNeedleLimit;
    if (position < -kNeedleLimit) position = -kNeedleLimit;
    if (st.ReferencePending) {
        // An "O" frame: show this sample against the old reference once, then
        // rest the needle on the new one.
        st.ReferencePending = false;
        st.NeedleRef = reading;
    }
    return static_cast<std::int32_t>(position);
}

std::int32_t liveNeedleValue(MeterState& st, const Settings& cfg, DisplaySink& display) {
    // Base first: on dial type 1 it must still see ReferencePending, which
    // Calc_Needle clears.
    Calc_Base(st, cfg, display);
    return Calc_Needle(st, st.FilteredNeedle);
}

float CAng(float angle) {
    // Only one turn is added or removed: callers never stray further.
    if (angle == 0.0f) return 0.00001f;
    if (angle < 0.0f) return static_cast<float>(angle + kTurn);
    if (angle > kTurn) return static_cast<float>(angle - kTurn);
    return angle;
}

void Go_Up(MeterState& st, DisplaySink& display) {
    if (st.SensPos > 62) {
        st.SensPos = 63;
    } else {
        ++st.SensPos;
    }
    display.Update_SensKnob(st.SensPos);
}

void Go_Down(MeterState& st, DisplaySink& display) {
    if (st.SensPos < 1) {
        st.SensPos = 0;
    } else {
        --st.SensPos;
    }
    display.Update_SensKnob(st.SensPos);
}

std::string bdText(std::int32_t bdValue) {
    // From 100.0 on the readout has no room for the tenths.
    return formatNumber(bdValue / 10.0, bdValue >= 1000 ? "000" : "#0.0");
}

}  // namespace lv
