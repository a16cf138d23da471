#include "recording/frame_record.h"

#include "signal/lamp_rules.h"

namespace lv {

lvdRecord recordOfFrame(const MeterState& st, const Settings& cfg, std::int32_t needleValue,
                        char frameLetter, std::int32_t timeMs, const lvdRecord& working) {
    lvdRecord r = working;
    r.TimeMs = timeMs < 0 ? 0 : timeMs;
    r.RawData = static_cast<std::int16_t>(static_cast<std::uint16_t>(st.RawNeedle));
    r.NeedlePos = static_cast<std::int16_t>(needleValue);
    // The frame's own BD and the Base calculation's falls both end in BdQuarter.
    r.BdCount = static_cast<std::int16_t>(st.BdQuarter / 4);
    r.BaseCode = st.BaseByte;
    r.Sensitivity = static_cast<std::uint8_t>(st.SensPos);
    // Bit 2 carries the "Body Motion Freeze" option in force, so a recording
    // says how it was taken.
    r.StatusFlags = packStatusFlags(lampStateCode(st.LedColour, cfg), cfg.FreezeEnable,
                                    st.BdCounting, cfg.DialType);
    r.FrameType = static_cast<std::uint8_t>(frameLetter);
    return r;
}

}  // namespace lv
