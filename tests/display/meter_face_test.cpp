#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "display/needle_drawing.h"
#include "display/recording_surface.h"
#include "support/recording_display.h"

namespace {

using lv::SurfaceCall;
using lv::SurfaceOp;
using Polar = std::vector<std::tuple<long, long, long>>;  // radius or millidegrees

long mdeg(double rad) {
    return std::lround(rad * 180 / std::numbers::pi * 1000);
}

class MeterFace : public ::testing::Test {
protected:
    void draw(int dial, int scale) {
        std::tie(cfg.DialType, cfg.ScaleType) = std::pair(dial, scale);
        fresh();
        ps.redraw = false;
        lv::Draw_Panel(ctx);
    }
    void fresh() {
        surface = lv::RecordingSurface(1200);  // no drawing state left over either
        display.clear();
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
    const std::tuple<long, long, long> fan{1110, -28889, -151111};
    const Polar full{{1020, 35000, 145000}, {1070, 35000, 101000}, {1070, 106500, 145000}};
    const Polar simple{{1020, 145000, 147750}, {1020, 32250, 35000}, {1020, 102891, 104609}};
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
        Polar gotArcs, want, got;
        for (const SurfaceCall& a : surface.of(SurfaceOp::Arc))
            gotArcs.emplace_back(std::lround(a.radius), mdeg(a.start), mdeg(a.end));
        EXPECT_EQ(gotArcs, (dial ? Polar{fan, arcs[0], arcs[1], arcs[2]} : arcs));  // the fan first
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
        // Each line as (angle, radius at its start, at its end) about (0, cy): clockwise from
        // 12 o'clock on the circular face, counter-clockwise from 3 o'clock on the traditional.
        const float cy = dial ? 0 : 600;
        for (const SurfaceCall& t : surface.of(SurfaceOp::Line))
            got.emplace_back(
                (mdeg(dial ? std::atan2(t.y1, t.x1) : std::atan2(t.x1, t.y1 - cy)) + 360000) %
                    360000,
                std::lround(std::hypot(t.x1, t.y1 - cy)), std::lround(std::hypot(t.x2, t.y2 - cy)));
        if (got.size() == want.size() + 1 && got.back() == got.front())
            got.pop_back();  // closing tick
        EXPECT_EQ(got, want);
    }
}

// Out of range the needle takes its default width; the stored value stays as read.
TEST_F(MeterFace, NeedleWidthOutOfRangeIsTheDefault) {
    for (auto [stored, drawn] : {std::pair{0, 0}, {8, 8}, {-5, 4}, {9, 4}, {32767, 4}}) {
        cfg.Needle_Width = static_cast<std::int16_t>(stored);
        EXPECT_EQ(lv::needleWidth(cfg), drawn) << stored;
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
        {3, 1075, 0, 600, 22}, {1, 1200, x, y, 20}, {2, 630, x, y, 10}, {4, 1000, 0, 0, -1}};
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
        {rgb(200, 100, 0), rgb(0, 100, 200), 3, rgb(130, 100, 70)},
        {black, rgb(30, 10, 50), 4, rgb(16, 6, 28)},
        {white, red, -1, white},
        {white, red, 6, red}};
    for (auto [dial, needle, index, mixed] : cases)
        EXPECT_EQ(lv::shadowNeedleColour(dial, needle, index), mixed) << index;
}

}  // namespace
