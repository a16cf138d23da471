// Whatever a device sends, the frame path must neither crash, nor hang, nor
// leave its state outside the ranges the display relies on.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "device/com_input.h"
#include "device/receive_event.h"
#include "signal/needle_model.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace {

struct Consumer : lv::SampleConsumer {
    Consumer(lv::MeterState& s, const lv::Settings& c, lv::DisplaySink& d)
        : st(s), cfg(c), display(d) {}
    void onNewSample() override {
        const auto v = lv::liveNeedleValue(st, cfg, display);
        if (v < -lv::kNeedleLimit || v > lv::kNeedleLimit) std::abort();
        st.NeedleReset = false;
    }
    lv::MeterState& st;
    const lv::Settings& cfg;
    lv::DisplaySink& display;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    lv::MeterState st;
    // The first byte picks the mode, dial and lag limit; the rest is the wire.
    st.RunMode = static_cast<std::int16_t>(data[0] & 0x3);
    st.PortNumber = 1;
    st.LagLimit = 1 + (data[0] >> 2) % 5;
    lv::Settings cfg;
    cfg.DialType = (data[0] >> 5) & 0x3;
    lv::test::RecordingDisplay display;
    lv::NoRecorder recorder;
    lv::LiveContext ctx{st, cfg, display, recorder};
    lv::test::ScriptedPort port;
    Consumer consumer(st, cfg, display);
    port.setReceiveHandler([&] { lv::receiveEvent(ctx, port, consumer); });
    port.setThreshold(lv::kSearchThreshold);

    std::string_view wire(reinterpret_cast<const char*>(data + 1), size - 1);
    // Deliver in uneven pieces so lines break at every possible place.
    std::size_t piece = 1;
    while (!wire.empty()) {
        const auto n = std::min(piece, wire.size());
        port.deliver(std::string(wire.substr(0, n)));
        wire.remove_prefix(n);
        piece = piece % 61 + 7;
        if (st.GoodFrames < 0 || st.GoodFrames > 5) std::abort();
        if (st.SensPos < 0 || st.SensPos > 127) std::abort();
        if (st.pendingText.size() > 400) std::abort();
    }
    return 0;
}
