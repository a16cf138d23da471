#include "common/vb_format.h"
#include "signal/needle_model.h"

namespace lv {

namespace {

// The meter's Base curve on the 0..255 byte scale: 0..65535 maps onto 4..245.
constexpr std::int64_t kBaseSlope = 61550;
constexpr std::int64_t kBaseScale = 32768;
constexpr std::int64_t kBaseOffset = 1170;

void showBase(MeterState& st, DisplaySink& display, int b) {
    const std::string text = baseText(b);
    if (text != st.ShownBase) {
        st.ShownBase = text;
        display.Update_BaseDisplay(text);
    }
}

}  // namespace

int baseByteFor(std::int32_t rawNeedle) {
    const std::int64_t x = roundHalfEven(rawNeedle / 2.0);
    const std::int64_t t = x * kBaseSlope / kBaseScale + kBaseOffset;
    return static_cast<int>(t / 256);
}

std::string baseText(int baseByte) {
    // Steps of 0.05 from 0.5: the second decimal only when it is a 5.
    return formatNumber((baseByte / 2 + 8) / 20.0, "0.0#");
}

void Calc_Base(MeterState& st, const Settings& cfg, DisplaySink& display) {
    switch (cfg.DialType) {
        case 0:
        case 2:
        case 3: {
            const int b = baseByteFor(st.RawNeedle);
            const auto fall = static_cast<std::int16_t>(st.lastBaseByte - b);
            st.lastBaseByte = static_cast<std::uint8_t>(b);
            // Frozen during body motion: the Base still tracks, so the first fall
            // after the freeze is measured from where the body came to rest.
            if (st.MotionFreeze) return;

            // BD sums only the falls, and only while the meter says it counts.
            if (fall > 0 && st.BdCounting) {
                st.BdQuarter += fall;
                st.BdValue = st.BdQuarter / 4;
                const std::string text = bdText(st.BdValue);
                if (text != st.ShownBd) {
                    st.ShownBd = text;
                    display.Update_BdDisplay(text);
                }
            }
            st.BdValue = st.BdQuarter / 4;
            showBase(st, display, b);
            st.BaseByte = static_cast<std::uint8_t>(b);
            break;
        }
        case 1:
            // This dial shows the Base only as it was when the reference was taken.
            if (st.ReferencePending) {
                const int b = baseByteFor(st.RawNeedle);
                showBase(st, display, b);
                st.BaseByte = static_cast<std::uint8_t>(b);
            }
            break;
        default:
            break;
    }
}

}  // namespace lv
