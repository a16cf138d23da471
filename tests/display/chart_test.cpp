#include <gtest/gtest.h>

#include "display/chart.h"
#include "display/recording_surface.h"
#include "signal/sens_table.h"

namespace {

using lv::SurfaceCall;
using lv::SurfaceOp;
using Points = std::vector<std::pair<float, float>>;
using Lines = std::vector<std::tuple<float, float, float, float>>;

class Chart : public ::testing::Test {
protected:
    std::vector<SurfaceCall> call(std::int32_t value) {  // one Update_Graph: what it drew
        graph.calls.clear();
        lv::Update_Graph(cs, graph, cfg, value, width, gainIndex, gain);
        return graph.calls;
    }
    Lines lines(const std::vector<SurfaceCall>& calls, lv::Colour ink) const {
        Lines out;
        for (const SurfaceCall& c : calls)
            if (c.op == SurfaceOp::Line && c.ink() == ink) out.emplace_back(c.x1, c.y1, c.x2, c.y2);
        return out;
    }
    Points trace(const std::vector<SurfaceCall>& calls) const {  // the pen's points, left to right
        Points pts;
        for (auto [x1, y1, x2, y2] : lines(calls, cfg.GraphPen_Color)) {
            if (pts.empty()) pts.emplace_back(x1, y1);
            pts.emplace_back(x2, y2);
        }
        return pts;
    }
    Points sample(std::int32_t value) {
        return call(value), trace(call(value));
    }  // the second stores and redraws

    lv::Settings cfg;  // not inverted, timescale 8 s, no grid
    lv::ChartState cs;
    lv::RecordingSurface graph;
    int width = 800;
    std::int16_t gainIndex = 0;
    double gain = 0.5;
};

TEST_F(Chart, EverySecondCallCountsAndTheSheetSlidesOnlyWhenAPixelMoves) {
    // 200 samples span the timescale at 50 calls a second: 2, 4, 6 or 8 calls a sample.
    // Between samples the sheet slides by (width / 200) x calls / calls-a-sample: the
    // calls that draw, with that shift, over 12 calls, and the samples stored.
    using Redraws = std::vector<std::pair<int, int>>;
    const std::tuple<const char*, int, Redraws, int> cases[] = {
        {"8", 800, {{2, 0}, {4, 0}, {6, 0}, {8, 0}, {10, 0}, {12, 0}}, 6},
        {"32", 800, {{2, 1}, {4, 2}, {6, 3}, {8, 0}, {10, 1}, {12, 2}}, 1},
        {"32", 200, {{8, 0}}, 1},  // a quarter pixel never moves
        {"24", 1195, {{2, 1}, {4, 3}, {6, 0}, {8, 1}, {10, 3}, {12, 0}}, 2}};
    for (const auto& [timescale, px, redraws, samples] : cases) {
        SCOPED_TRACE(timescale + std::string(" s, ") + std::to_string(px) + " px");
        cs = {};
        width = px;
        cfg.GraphTimescale = timescale;
        Redraws got;
        for (int n = 1; n <= 12; ++n) {
            const auto calls = call(n);
            const Points pts = trace(calls);
            if (!pts.empty()) got.emplace_back(n, -static_cast<int>(pts.front().first));
            // Nothing at all between, but the rebuild's own wipe.
            EXPECT_EQ(calls.size(), pts.empty() ? (n == 1) : 200u) << n;
        }
        EXPECT_EQ(got, redraws);
        EXPECT_EQ(cs.newest, samples);
    }
}

TEST_F(Chart, TraceRunsOldestToNewestWithHigherReadingsLower) {
    for (std::int32_t v : {30000, 40000, 50000, 60000}) sample(v);
    const Points pts = sample(64000);
    ASSERT_EQ(pts.size(), 200u);
    // Positions 195..199 at pos x 800 / 199; 65536 - reading.
    EXPECT_EQ(Points(pts.end() - 5, pts.end()),
              (Points{{783, 35536}, {787, 25536}, {791, 15536}, {795, 5536}, {800, 1536}}));
    EXPECT_EQ(pts.front(), (std::pair{0.0f, 0.0f})) << "slots not yet filled";
}

TEST_F(Chart, TheOffsetMovesInStepsOf5000AndAGainChangeResetsTheTrace) {
    cfg.GraphInvert = true;  // readings plot as they are (gain 0.5 x 2)
    const std::pair<std::int32_t, std::int32_t> steps[] = {
        {64536, 0},     {64537, 5000},  {69536, 5000},  {69537, 10000},
        {80000, 20000}, {21000, 20000}, {20999, 15000}, {0, -5000}};
    for (auto [value, offset] : steps) {
        EXPECT_EQ(sample(value).back().second, float(value - offset)) << value;
        EXPECT_EQ(cs.offset, offset) << value;
    }
    gainIndex = 2;
    gain = 2;  // x 2 x 2
    call(20000);
    EXPECT_EQ(call(20000).size(), 1u) << "only wiped";
    const Points pts = sample(20000);
    ASSERT_EQ(pts.size(), 200u);
    // The zeros left behind lie 20000 x 4 - 32768 below the offset; the reading at mid-height.
    for (std::size_t i = 0; i + 1 < pts.size(); ++i) EXPECT_EQ(pts[i].second, 32768 - 80000) << i;
    EXPECT_EQ(pts.back().second, 32768);
}

TEST(ChartGain, IsTheKnobsLabel) {
    // Knob position, gain: the label's value; a wild position is clamped to the knob.
    for (auto [sensPos, gain] : {std::pair{0, 1.0}, {36, 10.0}, {63, 40.0}, {99, 40.0}, {-4, 1.0}})
        EXPECT_EQ(lv::chartGain(sensPos), gain) << sensPos;
    // So the sheet spans about 1.8 times the traditional scale (110 degrees of 65536 to the
    // turn) at every knob position: a reading moves the needle by half the knob's gain / 757
    // units and the trace by twice the chart's gain, of 65536 on the sheet.
    const double scaleUnits = 110.0 / 360 * 65536;
    for (int pos = 0; pos < 64;
         ++pos)  // sheet / (2 x chart gain) over scale / (knob gain / 2 / 757)
        EXPECT_NEAR(65536.0 * lv::sensGain(pos) / (4 * 757 * lv::chartGain(pos) * scaleUnits), 1.8,
                    0.1)
            << pos;
}

TEST_F(Chart, GridLinesAndPenFollowTheSettings) {
    // k x 65536 / 7 across the sheet; every 20th of 200 positions (pos x 400 / 199) upright.
    Lines rows, columns;
    for (float y : {9362, 18724, 28086, 37449, 46811, 56173}) rows.emplace_back(0, y, 400, y);
    for (float x : {0, 40, 80, 120, 160, 201, 241, 281, 321, 361})
        columns.emplace_back(x, 0, x, 65536);
    cfg.GraphPenWidth_Index = "3";
    width = 400;
    for (bool gridX : {true, false}) {
        cfg.GridX = gridX;
        cfg.GridY = !gridX;
        call(1);
        const auto calls = call(1);
        EXPECT_EQ(lines(calls, cfg.GraphGrid_Color), gridX ? columns : rows);
        for (const SurfaceCall& c : calls)
            EXPECT_EQ(std::tuple(c.state.lineWidth, c.state.back, c.scale),
                      std::tuple(3, cfg.GraphSheet_Color, lv::UserScale{0, 65900, 400, -65900}));
    }
}

}  // namespace
