#include "lvdtool/lvd_synth.h"

#include <cmath>

#include "device/com_input.h"
#include "lv3sim/reading_generator.h"
#include "recording/frame_record.h"
#include "signal/lamp_rules.h"
#include "signal/needle_model.h"

namespace lv::tool {

namespace {
constexpr int kFrameMs = 20;
}

std::vector<lvdRecord> synthRecords(double seconds, int dialType, std::uint64_t seed) {
    const auto frames = static_cast<std::int64_t>(std::llround(seconds * 1000.0 / kFrameMs));
    std::vector<lvdRecord> records;
    records.reserve(static_cast<std::size_t>(frames > 0 ? frames : 0));

    MeterState st;
    st.RunMode = kRunLive;
    st.PortNumber = 1;
    Settings cfg;
    cfg.DialType = dialType;
    st.LagLimit = lagLimitForItem(cfg.DataLag_Index);
    st.LedColour = cfg.Dial_Color;
    NullDisplaySink display;
    NoRecorder recorder;
    LiveContext ctx{st, cfg, display, recorder};
    sim::ReadingGenerator generator(seed);

    for (std::int64_t n = 1; n <= frames; ++n) {
        const auto line = generator.nextLine();
        if (!line) break;
        comInputText(ctx, *line);
        if (!st.NewData) continue;
        sampleStep(st);
        const std::int32_t needle = liveNeedleValue(st, cfg, display);
        st.NeedleReset = false;
        records.push_back(
            recordOfFrame(st, cfg, needle, (*line)[0], static_cast<std::int32_t>(n * kFrameMs)));
    }
    return records;
}

}  // namespace lv::tool
