// One data frame all the way to pixels, as the live window does it 50 times a
// second: decode, needle model, the needle and the chart drawn, and what
// changed painted into a 1280x800 window's backing store. Target: well under
// 150 us a frame.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QPainter>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/display_sink.h"
#include "device/com_input.h"
#include "device/protocol.h"
#include "display/chart.h"
#include "display/dial_face.h"
#include "display/needle_drawing.h"
#include "display/qt_image_surface.h"
#include "signal/needle_model.h"

namespace {

// A 1280x800 window: the dial held at its shape above a chart of 3/5 its
// height, menu and status bars around them.
constexpr int kDialWidth = 740, kDialHeight = 462, kChartWidth = 1280, kChartHeight = 277;

std::vector<std::string> lifelikeFrames(int count) {
    std::vector<std::string> frames;
    for (int i = 0; i < count; ++i) {
        lv::protocol::FrameFields f;
        f.letter = i == 0 ? 'O' : 'P';
        // A slow swing across most of the scale with a faster ripple on it.
        f.needle =
            static_cast<std::uint16_t>(32768 + 900 * std::sin(i / 60.0) + 120 * std::sin(i / 5.0));
        f.knob = 72 + 36;  // the knob at "10"
        frames.push_back(lv::protocol::encodeFrame(f));
    }
    return frames;
}

// Args: DialType, chart (0 hidden, 1 shown, 2 shown with both grids).
void BM_FrameToPixels(benchmark::State& state) {
    const auto frames = lifelikeFrames(4096);
    lv::Settings cfg;
    cfg.DialType = static_cast<std::int32_t>(state.range(0));
    cfg.GraphVisible = state.range(1) != 0;
    cfg.GridX = cfg.GridY = state.range(1) == 2;
    lv::MeterState st;
    st.RunMode = lv::kRunLive;
    st.PortNumber = 1;
    lv::NullDisplaySink display;
    lv::NoRecorder recorder;
    lv::LiveContext live{st, cfg, display, recorder};

    lv::ImageSurface panel(QSize(kDialWidth, kDialHeight));
    panel.setScale(lv::kPanelScale);
    panel.setEraseColour(cfg.Dial_Color);
    lv::PanelState ps;
    lv::PanelContext ctx{panel, cfg, st, display, ps, [] { return lv::ClockInputs{}; }};
    lv::ImageSurface chart(QSize(kChartWidth, kChartHeight));
    lv::ChartState cs;
    // The window's backing store, which each repaint copies the changes into.
    QImage window(QSize(kChartWidth, kDialHeight + kChartHeight), QImage::Format_RGB32);
    QPainter screen(&window);

    std::size_t i = 0;
    for (auto _ : state) {
        lv::comInputText(live, frames[i++ & 4095]);
        if (!st.NewData) continue;
        lv::sampleStep(st);
        const std::int32_t needle = lv::liveNeedleValue(st, cfg, display);
        st.NeedleReset = false;
        lv::Update_Needle(ctx, needle);
        if (cfg.GraphVisible)
            lv::Update_Graph(cs, chart, cfg, st.RawNeedle, kChartWidth, cfg.GraphGain,
                             lv::chartGain(st.SensPos));
        // What the window's repaint does with the changed areas.
        panel.paint(screen, panel.takeDirty());
        screen.translate(0, kDialHeight);
        chart.paint(screen, chart.takeDirty());
        screen.resetTransform();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FrameToPixels)->ArgsProduct({{0, 1}, {0, 1, 2}})->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    // Fonts and painting need an application; no screen is needed.
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
