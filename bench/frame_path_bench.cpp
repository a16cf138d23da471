// One data frame from the wire to the needle value: the work the receive event
// does 50 times a second. Target: well under 1 us a frame.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

#include "common/display_sink.h"
#include "device/com_input.h"
#include "device/protocol.h"
#include "signal/needle_model.h"

namespace {

std::vector<std::string> makeFrames(int count) {
    std::vector<std::string> frames;
    frames.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        lv::protocol::FrameFields f;
        f.letter = (i % 997 == 0) ? 'O' : 'P';
        f.needle = static_cast<std::uint16_t>(32768 + 8000 * std::sin(i / 40.0));
        f.knob = static_cast<std::uint8_t>(72 + (i / 500) % 8);
        f.status = static_cast<std::uint8_t>((i / 300) % 2 ? 0x8 : 0x0);
        f.bd = static_cast<std::int16_t>(i / 50);
        frames.push_back(lv::protocol::encodeFrame(f));
    }
    return frames;
}

void BM_FrameToNeedle(benchmark::State& state) {
    const auto frames = makeFrames(4096);
    lv::MeterState st;
    st.RunMode = lv::kRunLive;
    st.PortNumber = 1;
    lv::Settings cfg;
    lv::NullDisplaySink display;
    lv::NoRecorder recorder;
    lv::LiveContext ctx{st, cfg, display, recorder};
    std::size_t i = 0;
    for (auto _ : state) {
        lv::comInputText(ctx, frames[i++ & 4095]);
        if (st.NewData) {
            lv::sampleStep(st);
            benchmark::DoNotOptimize(lv::liveNeedleValue(st, cfg, display));
            st.NeedleReset = false;
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FrameToNeedle);

}  // namespace
