// The model's drawing work per call: a full face, one needle step, one chart
// redraw. The surface only counts, so the figures are the model's own cost;
// painting pixels is the window's business.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <optional>
#include <string>

#include "common/display_sink.h"
#include "display/chart.h"
#include "display/dial_face.h"
#include "display/needle_drawing.h"
#include "display/recording_surface.h"

namespace {

class CountingSurface : public lv::Surface {
public:
    std::int64_t primitives = 0;
    int widthPixels() const override { return 1000; }
    void clear() override { ++primitives; }
    void circle(float, float, float, lv::Colour) override { ++primitives; }
    void arc(float, float, float, lv::Colour, float, float) override { ++primitives; }
    void line(float, float, float, float, std::optional<lv::Colour>) override { ++primitives; }
    void point(float, float, std::optional<lv::Colour>) override { ++primitives; }
    void text(float, float, const std::string&, const lv::TextStyle&) override { ++primitives; }
};

lv::ClockInputs noon() {
    return {{12, 0, 0, {2024, 1, 1}}, 0, 1000, 0};
}

// Args: DialType, ScaleType.
void BM_DrawPanel(benchmark::State& state) {
    lv::Settings cfg;
    cfg.DialType = static_cast<std::int32_t>(state.range(0));
    cfg.ScaleType = static_cast<std::int32_t>(state.range(1));
    lv::MeterState st;
    lv::PanelState ps;
    lv::NullDisplaySink display;
    CountingSurface surface;
    lv::PanelContext ctx{surface, cfg, st, display, ps, noon};
    for (auto _ : state) lv::Draw_Panel(ctx);
    state.counters["primitives"] =
        static_cast<double>(surface.primitives) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_DrawPanel)->ArgsProduct({{0, 1, 2, 3}, {0, 1}});

// The same face written down call by call, as the geometry tests see it.
void BM_DrawPanelRecorded(benchmark::State& state) {
    lv::Settings cfg;
    lv::MeterState st;
    lv::PanelState ps;
    lv::NullDisplaySink display;
    lv::RecordingSurface surface;
    lv::PanelContext ctx{surface, cfg, st, display, ps, noon};
    for (auto _ : state) {
        surface.calls.clear();
        lv::Draw_Panel(ctx);
        benchmark::DoNotOptimize(surface.calls.data());
    }
}
BENCHMARK(BM_DrawPanelRecorded);

void BM_NeedleStep(benchmark::State& state) {
    lv::Settings cfg;
    lv::MeterState st;
    lv::PanelState ps;
    lv::NullDisplaySink display;
    CountingSurface surface;
    lv::PanelContext ctx{surface, cfg, st, display, ps, noon};
    std::int32_t value = -10500;
    for (auto _ : state) {
        lv::Update_Needle(ctx, value);
        value = value >= 10500 ? -10500 : value + 37;
    }
}
BENCHMARK(BM_NeedleStep);

// Two calls per iteration: one skipped, one storing a sample and redrawing
// sheet, both grids and the 199-segment trace.
void BM_ChartRedraw(benchmark::State& state) {
    lv::Settings cfg;
    cfg.GridX = cfg.GridY = true;
    lv::ChartState cs;
    CountingSurface surface;
    std::int32_t value = 0;
    for (auto _ : state) {
        lv::Update_Graph(cs, surface, cfg, value, 800, 0, 10.0);
        lv::Update_Graph(cs, surface, cfg, value, 800, 0, 10.0);
        value = (value + 997) % 65536;
    }
    state.counters["primitives"] =
        static_cast<double>(surface.primitives) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ChartRedraw);

}  // namespace
