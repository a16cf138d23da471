#pragma once
#include <array>
#include <cstdint>
#include <string>

#include "display/surface.h"
#include "settings/settings.h"

namespace lv {

inline constexpr int kChartSlots = 200;
inline constexpr int kChartGridRows = 6;
inline constexpr int kChartGridColumnEvery = kChartSlots / 10;
// y runs from 0 at the bottom to 65900 at the top: a full-scale reading with
// a little headroom.
inline constexpr UserScale chartScale(int widthPixels) {
    return {0.0f, 65900.0f, static_cast<float>(widthPixels), -65900.0f};
}

// The strip chart's memory between calls. Public so that tests and the bench
// can look at it; only Update_Graph and Init_Graph change it.
struct ChartState {
    std::array<std::int32_t, kChartSlots> y{};   // scaled samples, a ring
    std::array<std::int32_t, kChartSlots> x{};   // x of drawing positions 0..199
    std::array<bool, kChartSlots> gridColumn{};  // a vertical grid line at this position
    std::array<std::int32_t, kChartGridRows> gridRow{};
    std::int16_t newest = 0;          // slot written last
    std::int16_t oldest = 0;          // where the trace starts
    std::int16_t stepWidth = 0;       // pixels between two samples
    std::int16_t subStep = 0;         // calls counted towards the next sample
    std::int16_t stepsPerSample = 1;  // never 0
    std::int16_t lastShift = 0;       // horizontal shift of the last redraw
    std::int32_t offset = 0;          // subtracted from every sample before plotting
    std::int16_t gainIndex = 0;       // GraphGain as the ring was filled
    std::int32_t width = 0;           // pixels, as of the last re-initialisation
    bool reinit = true;
};

// The chart's gain at a knob position: the knob's own label (1.0 .. 40), so
// that the trace swings about as far as the needle does at every position.
double chartGain(int sensPos);

// Calls per stored sample for GraphTimescale ("8".."32" seconds). Every second
// call counts, so the counts are even: 200 samples then span the timescale at
// 50 calls a second.
std::int16_t chartStepsPerSample(const std::string& timescale);

// Asks for a rebuild: the next Update_Graph re-reads the settings and the width.
void Init_Graph(ChartState& cs);

// Adds one reading and redraws the chart if anything moved. widthPixels is
// the chart's width, read at re-initialisation; a change of gainIndex
// (GraphGain) starts the trace afresh; samples are scaled by `gain`.
void Update_Graph(ChartState& cs, Surface& graph, const Settings& cfg, std::int32_t value,
                  int widthPixels, std::int16_t gainIndex, double gain);

}  // namespace lv
