#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

#include "display/needle_drawing.h"
#include "display/recording_surface.h"
#include "support/recording_display.h"

namespace {

using lv::SurfaceCall;
using lv::SurfaceOp;
using Strings = std::vector<std::string>;
using Polar = std::vector<std::tuple<long, long, long>>;  // radius or millidegrees

long mdeg(double rad) {
    return std::lround(rad * 180 / std::numbers::pi * 1000);
}

class MeterFace : public ::testing::Test {
protected:
    void draw(int dial, int scale) {
        cfg.DialType = dial;
        cfg.ScaleType = scale;
        fresh();
        ps.redraw = false;
        lv::Draw_Panel(ctx);
    }
    void fresh() {
        surface = lv::RecordingSurface(1200);  // no drawing state left over either
        display.clear();
    }
    // Each line as (angle, radius at its start, at its end) about (0, cy): clockwise from
    // 12 o'clock on the circular face, counter-clockwise from 3 o'clock on the traditional.
    Polar ticks(bool circular) const {
        Polar out;
        const float cy = circular ? 600 : 0;
        for (const SurfaceCall& t : surface.of(SurfaceOp::Line))
            out.emplace_back(
                (mdeg(circular ? std::atan2(t.x1, t.y1 - cy) : std::atan2(t.y1, t.x1)) + 360000) %
                    360000,
                std::lround(std::hypot(t.x1, t.y1 - cy)), std::lround(std::hypot(t.x2, t.y2 - cy)));
        return out;
    }

    lv::Settings cfg;  // traditional dial; Dial, Panel, Scale and needle colours all differ
    lv::MeterState st;
    lv::PanelState ps;
    lv::ClockInputs clock{{13, 5, 42, {2024, 2, 29}}};
    lv::RecordingSurface surface{1200};
    lv::test::RecordingDisplay display;
    lv::PanelContext ctx{surface, cfg, st, display, ps, [this] { return clock; }};
};

TEST_F(MeterFace, ArcsCirclesAndTicksOfEachFaceAndItsTwinType) {
    // Traditional (1, drawn as 2): fan 90 -+ 110/1.8 degrees (negative: edges to the centre),
    // scale 90 -+ 55, the full scale's outer line broken from 90+11 to 90+16.5, its ticks long
    // and short in turn. Circular (0, drawn as 3), about (0, 600): disc, hub ring and, on the
    // full scale, the ring at 550.
    const Polar full{{1110, -28889, -151111},
                     {1020, 35000, 145000},
                     {1070, 35000, 101000},
                     {1070, 106500, 145000}};
    const Polar simple{{1110, -28889, -151111},
                       {1020, 145000, 147750},
                       {1020, 32250, 35000},
                       {1020, 102891, 104609}};
    const std::tuple<int, int, Polar, std::vector<float>, int, double, double, long, long> cases[] =
        {{1, 0, full, {465}, 21, 35, 5.5, 1070, 1020},
         {1, 1, simple, {465}, 9, 35, 13.75, 1020, 1050},
         {0, 0, {}, {575, 35, 550}, 40, 0, 9, 550, 575},
         {0, 1, {}, {575, 35}, 16, 0, 22.5, 535, 560}};
    for (const auto& [dial, scale, arcs, radii, n, first, step, fromR, toR] : cases) {
        SCOPED_TRACE(std::to_string(dial) + "/" + std::to_string(scale));
        draw(dial ? 2 : 3, scale);
        const auto twin = surface.calls;
        draw(dial, scale);
        EXPECT_EQ(surface.calls, twin);
        Polar gotArcs, want;
        for (const SurfaceCall& a : surface.of(SurfaceOp::Arc)) {
            gotArcs.emplace_back(std::lround(a.radius), mdeg(a.start), mdeg(a.end));
            const bool fan = gotArcs.size() == 1;
            EXPECT_EQ(std::tuple(a.ink(), a.state.fill, a.start < 0 && a.end < 0),
                      fan ? std::tuple(cfg.Panel_Color, cfg.Dial_Color, true)
                          : std::tuple(cfg.Scale_Color, cfg.Panel_Color, false));
        }
        EXPECT_EQ(gotArcs, arcs);
        // Only the first circle is filled: the disc in Dial_Color or the hub blank in Panel_Color.
        std::vector<float> gotRadii;
        for (const SurfaceCall& c : surface.of(SurfaceOp::Circle)) {
            gotRadii.push_back(c.radius);
            EXPECT_EQ(c.state.fillStyle == lv::FillStyle::Solid, gotRadii.size() == 1);
            EXPECT_EQ(c.y1, dial == 0 ? 600 : 0);
        }
        EXPECT_EQ(gotRadii, radii);
        EXPECT_EQ(surface.of(SurfaceOp::Circle)[0].state.fill,
                  dial ? cfg.Panel_Color : cfg.Dial_Color);

        for (int i = 0; i < n; ++i)  // the full traditional scale alternates 1020 and 1040
            want.emplace_back(std::lround((first + step * i) * 1000), fromR,
                              toR + 20 * (i % 2) * (n == 21));
        Polar got = ticks(dial == 0);
        if (got.size() == want.size() + 1 && got.back() == got.front())
            got.pop_back();  // closing tick
        EXPECT_EQ(got, want);
        for (const SurfaceCall& t : surface.of(SurfaceOp::Line))
            EXPECT_EQ(std::pair(t.ink(), t.state.lineWidth), std::pair(cfg.Scale_Color, 2));
    }
}

TEST_F(MeterFace, UnknownTypesOnlyClearButReadoutsAndClockFollow) {
    // During playback the clock shows the recording's start plus the elapsed position,
    // without seconds, and stays as it is when the recording has no start time.
    const std::tuple<int, int, int, int, std::int64_t, int, const char*> cases[] = {
        {4, 0, lv::kRunLive, 0, 0, 1000, "Clock(13,5,42,2024-2-29)"},
        {1, 2, lv::kRunPlayback, 0, 5000, 1000, nullptr},
        {0, -1, lv::kRunPlayback, 47130, 125 * 44100 + 44099, 44100, "Clock(13,7,0,2024-2-29)"},
        {4, 0, lv::kRunPlayback, 3599, 59999, 1000, "Clock(1,0,0,2024-2-29)"}};
    for (auto [dial, scale, mode, start, pos, units, shown] : cases) {
        st.RunMode = static_cast<std::int16_t>(mode);
        st.ShownStatus = "Input OK";
        clock = {{13, 5, 42, {2024, 2, 29}}, pos, units, start};
        draw(dial, scale);
        EXPECT_EQ(surface.ops(), std::vector{SurfaceOp::Clear}) << dial << "/" << scale;
        EXPECT_EQ(std::pair(surface.calls[0].state.back, ps.redraw),
                  std::pair(cfg.Panel_Color, true));
        Strings want{"Base(2.0)", "Bd(0.0)", "Mode(Input OK,0)", "Knob(0)"};
        if (shown) want.insert(want.begin() + 3, shown);
        EXPECT_EQ(display.calls, want) << start;
    }
}

TEST_F(MeterFace, NeedlePointsAlongItsValueFromRadius500To1000) {
    const double h = 1000 * std::numbers::sqrt2 / 2;
    for (auto [value, x, y] :
         {std::tuple{0, 0.0, 1000.0}, {16384, 1000, 0}, {32768, 0, -1000}, {-8192, -h, h}}) {
        const lv::NeedleLine n = lv::needleLine(value);
        EXPECT_NEAR(std::hypot(n.outerX - x, n.outerY - y), 0, 0.01) << value;
        EXPECT_NEAR(std::hypot(n.innerX - x / 2, n.innerY - y / 2), 0, 0.01) << value;
    }
}

TEST_F(MeterFace, NeedleIsPaintedOutOnlyWhenOneIsShown) {
    // Width stored and drawn (out of range: the default), value; face redrawn first; needle
    // lines (E: erase in Dial_Color, N: new).
    const std::tuple<int, int, std::int32_t, bool, std::string> steps[] = {
        {4, 4, 1000, true, "N"},    {4, 4, 2000, false, "EN"}, {0, 0, 5000, false, ""},
        {0, 0, 6000, false, ""},    {3, 3, 7000, false, "EN"}, {8, 8, 7500, false, "EN"},
        {-5, 4, 8000, false, "EN"}, {9, 4, 8500, false, "EN"}, {32767, 4, 9000, false, "EN"}};
    lv::Draw_Panel(ctx);
    SurfaceCall shown;
    for (const auto& [stored, width, value, face, lines] : steps) {
        fresh();
        cfg.Needle_Width = static_cast<std::int16_t>(stored);
        lv::Update_Needle(ctx, value);
        EXPECT_EQ(std::pair(surface.count(SurfaceOp::Clear), ps.redraw),
                  std::pair(face ? std::size_t{1} : 0, false));
        std::string kinds;
        for (const SurfaceCall& l : surface.of(SurfaceOp::Line)) {
            if (l.ink() != cfg.Dial_Color && l.ink() != cfg.MainNeedle_Color) continue;  // ticks
            const bool erase = l.ink() == cfg.Dial_Color;
            kinds += erase ? "E" : "N";
            EXPECT_EQ(l.state.lineWidth, width) << value;
            // What is painted out is the needle last drawn, whatever came between.
            const SurfaceCall& want = erase ? shown : l;
            EXPECT_EQ(std::tuple(l.x1, l.y1, l.x2, l.y2),
                      std::tuple(want.x1, want.y1, want.x2, want.y2));
            shown = l;
        }
        EXPECT_EQ(kinds, lines) << value;
    }
}

TEST_F(MeterFace, RemoveNeedleWipesTheNeedleAreaOfEachDialType) {
    // Circular: a filled disc inside the scale, then the bare hub ring. Traditional: pies of
    // the fan (90 -+ 110/1.8 degrees) in Dial_Color and the hub (90 -+ 110/1.7) in Panel_Color.
    // Radius, from, to, ink, fill, solid, line width.
    using Shape = std::tuple<float, long, long, lv::Colour, lv::Colour, bool, int>;
    const lv::Colour d = cfg.Dial_Color, p = cfg.Panel_Color, s = cfg.Scale_Color;
    const std::tuple<int, std::vector<Shape>, std::size_t> cases[] = {
        {3, {{505, 0, 0, d, d, true, 1}, {35, 0, 0, s, d, false, 3}}, 0},
        {2, {{1000, -28889, -151111, d, d, true, 1}, {465, -25294, -154706, p, p, true, 1}}, 1},
        {7, {}, 0}};
    for (const auto& [dial, shapes, modeCalls] : cases) {
        cfg.DialType = dial;
        fresh();
        lv::Remove_Needle(ctx);
        std::vector<Shape> got;
        for (const SurfaceCall& k : surface.calls)
            got.emplace_back(k.radius, mdeg(k.start), mdeg(k.end), k.ink(), k.state.fill,
                             k.state.fillStyle == lv::FillStyle::Solid, k.state.lineWidth);
        EXPECT_EQ(got, shapes) << dial;
        EXPECT_EQ(display.only("Mode(").size(), modeCalls) << dial;
    }
}

TEST_F(MeterFace, LampSitsOnTheHubOrInTheScaleGapSizedByThePanelWidth) {
    // Traditional: radius 1070, 0.239972 left of the vertical, about (-254.3, 1039.3).
    // Diameter: width / 50 or / 60, halves to even; -1: the line width stays.
    const double a = 0.239972, x = -std::sin(a) * 1070, y = std::cos(a) * 1070;
    const std::tuple<int, int, double, double, int> cases[] = {
        {0, 1000, 0, 600, 20}, {3, 1075, 0, 600, 22}, {1, 1200, x, y, 20},
        {2, 630, x, y, 10},    {2, 690, x, y, 12},    {4, 1000, 0, 0, -1}};
    for (auto [dial, widthPx, cx, cy, diameter] : cases) {
        fresh();
        surface.setWidthPixels(widthPx);
        surface.setLineWidth(7);
        lv::Update_LED(surface, dial, cfg.LED_BM_Color);
        ASSERT_EQ(surface.ops(), std::vector{SurfaceOp::Point});
        const SurfaceCall& dot = surface.calls[0];
        EXPECT_NEAR(std::hypot(dot.x1 - cx, dot.y1 - cy), 0, 0.01) << dial << " " << widthPx;
        EXPECT_EQ(std::pair(dot.state.lineWidth, dot.ink()),
                  std::pair(diameter < 0 ? 7 : diameter, cfg.LED_BM_Color));
    }
}

TEST(ShadowNeedle, MixesDialAndNeedleByTwentieths) {
    using lv::rgb;
    const lv::Colour white = rgb(255, 255, 255), red = rgb(255, 0, 0), black = 0;
    // Weights 0, 2, 4, 7, 11, 20 twentieths of the needle; halves to even (25.5, 16.5, 5.5).
    const std::tuple<lv::Colour, lv::Colour, int, lv::Colour> cases[] = {
        {white, red, 0, white},
        {white, red, 5, red},
        {black, white, 1, rgb(26, 26, 26)},
        {rgb(200, 100, 0), rgb(0, 100, 200), 3, rgb(130, 100, 70)},
        {black, rgb(30, 10, 50), 4, rgb(16, 6, 28)},
        {white, red, -1, white},
        {white, red, 6, red}};
    for (auto [dial, needle, index, mixed] : cases)
        EXPECT_EQ(lv::shadowNeedleColour(dial, needle, index), mixed) << index;
}

}  // namespace
