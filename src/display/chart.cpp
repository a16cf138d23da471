#include "display/chart.h"

#include <algorithm>
#include <cmath>

#include "common/vb_format.h"
#include "signal/sens_table.h"

namespace lv {

namespace {

constexpr std::int32_t kFullScale = 65536;
constexpr std::int32_t kOffsetStep = 5000;
constexpr std::int32_t kKeepBelow = 64537;  // the trace stays under this above the offset
constexpr std::int32_t kKeepAbove = 1000;   // ... and at least this far above it

// Readings are 0..65535; the clamp only keeps a wild value from overflowing
// the 32-bit ring and the offset arithmetic.
std::int32_t scaled(std::int64_t value, double gain) {
    const std::int64_t v = roundHalfEven(static_cast<double>(value) * gain * 2);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, -(1 << 30), 1 << 30));
}

int penWidth(const Settings& cfg) {
    return std::clamp<int>(vbCInt(cfg.GraphPenWidth_Index).value_or(1), 1, 3);
}

void rebuild(ChartState& cs, Surface& graph, const Settings& cfg, int widthPixels) {
    cs.y.fill(0);
    graph.setBackColour(cfg.GraphSheet_Color);  // before the wipe, so it is in the sheet colour
    graph.clear();
    graph.setScale(chartScale(widthPixels));
    graph.setLineWidth(penWidth(cfg));
    for (int pos = 0; pos < kChartSlots; ++pos) {
        cs.gridColumn[pos] = pos % kChartGridColumnEvery == 0;
        cs.x[pos] = static_cast<std::int32_t>(std::int64_t{pos} * widthPixels / (kChartSlots - 1));
    }
    for (int k = 1; k <= kChartGridRows; ++k) cs.gridRow[k - 1] = k * kFullScale / 7;
    cs.stepWidth = static_cast<std::int16_t>(std::clamp(widthPixels / kChartSlots, 0, 32767));
    cs.stepsPerSample = chartStepsPerSample(cfg.GraphTimescale);
    // The rebuild's own call counts for nothing: its value is no reading.
    cs.subStep = 0;
    cs.width = widthPixels;
    cs.reinit = false;
}

// The rule "raise by 5000 while at or above 64537, lower by 5000 while below
// 1000", in one step.
std::int32_t keepOnSheet(std::int32_t sample, std::int32_t offset) {
    const std::int64_t d = std::int64_t{sample} - offset;
    std::int64_t steps = 0;
    if (d >= kKeepBelow) steps = (d - kKeepBelow) / kOffsetStep + 1;
    if (d < kKeepAbove) steps = -((kKeepAbove - d + kOffsetStep - 1) / kOffsetStep);
    return static_cast<std::int32_t>(offset + steps * kOffsetStep);
}

void draw(const ChartState& cs, Surface& graph, const Settings& cfg, int shift) {
    graph.clear();
    if (cfg.GridY)
        for (std::int32_t h : cs.gridRow)
            graph.line(0, float(h), float(cs.width), float(h), cfg.GraphGrid_Color);
    float prevX = 0, prevY = 0;
    for (int pos = 0; pos < kChartSlots; ++pos) {
        const float x = float(cs.x[pos] - shift);
        if (cs.gridColumn[pos] && cfg.GridX) graph.line(x, 0, x, kFullScale, cfg.GraphGrid_Color);
        const float y = float(cs.y[(cs.oldest + pos) % kChartSlots] - cs.offset);
        if (pos > 0) graph.line(prevX, prevY, x, y, cfg.GraphPen_Color);
        prevX = x;
        prevY = y;
    }
}

}  // namespace

double chartGain(int sensPos) {
    // Worked out once for the 64 knob positions: this runs with every sample.
    static const std::array<double, 64> labels = [] {
        std::array<double, 64> out{};
        for (std::size_t pos = 0; pos < out.size(); ++pos)
            out[pos] = vbVal(sensLabel(static_cast<int>(pos)));
        return out;
    }();
    return labels[static_cast<std::size_t>(std::clamp(sensPos, 0, 63))];
}

std::int16_t chartStepsPerSample(const std::string& timescale) {
    const int eighths = std::clamp<int>(vbCInt(timescale).value_or(8) / 8, 1, 4);
    return static_cast<std::int16_t>(2 * eighths);
}

void Init_Graph(ChartState& cs) {
    cs.reinit = true;
}

void Update_Graph(ChartState& cs, Surface& graph, const Settings& cfg, std::int32_t value,
                  int widthPixels, std::int16_t gainIndex, double gain) {
    // By default a higher reading plots lower.
    const std::int64_t v = cfg.GraphInvert ? std::int64_t{value} : kFullScale - std::int64_t{value};
    if (cs.reinit) rebuild(cs, graph, cfg, widthPixels);

    // Only every second call moves the chart.
    if (++cs.subStep % 2 != 0) return;
    if (cs.subStep % cs.stepsPerSample == 0) cs.subStep = 0;

    if (gainIndex != cs.gainIndex) {
        // A flat line, with the current reading put at mid-height.
        graph.clear();
        cs.gainIndex = gainIndex;
        cs.y.fill(0);
        cs.offset = scaled(v, gain) - kFullScale / 2;
        return;
    }

    if (cs.subStep == 0) {
        cs.newest = static_cast<std::int16_t>((cs.newest + 1) % kChartSlots);
        cs.oldest = static_cast<std::int16_t>((cs.newest + 1) % kChartSlots);
        cs.y[cs.newest] = scaled(v, gain);
        cs.offset = keepOnSheet(cs.y[cs.newest], cs.offset);
    }

    // Between samples the picture slides left by a fraction of a step; a
    // fraction too small to move a pixel costs no redraw.
    const int shift = cs.subStep == 0 ? 0 : cs.stepWidth * cs.subStep / cs.stepsPerSample;
    if (cs.subStep != 0 && shift == cs.lastShift) return;
    cs.lastShift = static_cast<std::int16_t>(shift);

    draw(cs, graph, cfg, shift);
}

}  // namespace lv
