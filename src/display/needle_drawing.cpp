#include "display/needle_drawing.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "common/vb_format.h"

namespace lv {

namespace {

constexpr double q = kHalfTurn / 2;
constexpr double S = kScaleSpan;
// The traditional lamp: on the outer scale radius, in the gap of its outer line.
constexpr double kLampAngle = 0.239972;
constexpr double kLampRadius = 1070;

float f(double v) {
    return static_cast<float>(v);
}

}  // namespace

std::optional<Opening> needleOpening(std::int32_t dialType) {
    if (!isCircularDial(dialType)) return std::nullopt;
    return Opening{0, kCircularCentreY, kCircularDiscRadius};
}

NeedleLine needleLine(std::int32_t value) {
    const double t = value * kFullTurn / 65536;
    const double s = std::sin(t), c = std::cos(t);
    return {f(s * 500), f(c * 500), f(s * 1000), f(c * 1000)};
}

LampSpot lampSpot(std::int32_t dialType, int panelWidthPixels) {
    // A dot narrower than a pixel would vanish.
    auto diameter = [&](int divisor) {
        return static_cast<int>(
            std::max<std::int64_t>(1, roundHalfEven(double(panelWidthPixels) / divisor)));
    };
    if (isCircularDial(dialType)) return {0, kCircularCentreY, diameter(50)};
    if (isTraditionalDial(dialType))
        return {f(-std::sin(kLampAngle) * kLampRadius), f(std::cos(kLampAngle) * kLampRadius),
                diameter(60)};
    return {0, 0, std::nullopt};
}

int needleWidth(const Settings& cfg) {
    // A hand-edited file may hold anything; the menu offers 0 (hidden) to 8.
    if (cfg.Needle_Width < 0 || cfg.Needle_Width > kWidestNeedle) return Settings{}.Needle_Width;
    return cfg.Needle_Width;
}

void Update_Needle(PanelContext& ctx, std::int32_t value) {
    if (ctx.state.redraw) Draw_Panel(ctx);

    const int width = needleWidth(ctx.cfg);
    if (width > 0) {
        PanelState& ps = ctx.state;
        Surface& s = ctx.panel;
        // The line in Dial_Color paints the old needle out. A layered surface
        // takes it as "the needle is gone" and shows the face again there;
        // on the circular faces the needle is seen through the disc only.
        s.beginLayer(Layer::Needle, needleOpening(ctx.cfg.DialType));
        if (!ps.redraw) {
            s.setLineWidth(width);
            s.line(ps.innerX, ps.innerY, ps.outerX, ps.outerY, ctx.cfg.Dial_Color);
        }
        const NeedleLine n = needleLine(value);
        ps.innerX = n.innerX;
        ps.outerX = n.outerX;
        ps.innerY = n.innerY;
        ps.outerY = n.outerY;
        s.setLineWidth(width);
        s.line(n.innerX, n.innerY, n.outerX, n.outerY, ctx.cfg.MainNeedle_Color);
        s.beginLayer(Layer::Top);
    }
    ctx.state.redraw = false;
}

void Remove_Needle(PanelContext& ctx) {
    Surface& s = ctx.panel;
    const Settings& cfg = ctx.cfg;
    s.beginLayer(Layer::Needle, needleOpening(cfg.DialType));
    if (isCircularDial(cfg.DialType)) {
        s.setLineWidth(1);
        s.setForeColour(cfg.Dial_Color);
        s.setFillColour(cfg.Dial_Color);
        s.setFillStyle(FillStyle::Solid);
        s.circle(0, kCircularCentreY, 505, cfg.Dial_Color);
        s.beginLayer(Layer::Top);
        s.setLineWidth(3);
        s.setFillStyle(FillStyle::Transparent);
        s.circle(0, kCircularCentreY, 35, cfg.Scale_Color);
    } else if (isTraditionalDial(cfg.DialType)) {
        s.setLineWidth(1);
        s.setForeColour(cfg.Dial_Color);
        s.setFillColour(cfg.Dial_Color);
        s.setFillStyle(FillStyle::Solid);
        s.arc(0, 0, 1000, cfg.Dial_Color, f(-(q - S / 1.8)), f(-(q + S / 1.8)));
        s.beginLayer(Layer::Top);
        // Wider than the fan on purpose, so that it also covers the wiping
        // pie's straight edges where they run into the hub.
        s.setForeColour(cfg.Panel_Color);
        s.setFillColour(cfg.Panel_Color);
        s.arc(0, 0, 465, cfg.Panel_Color, f(-(q - S / 1.7)), f(-(q + S / 1.7)));
        // The status text lies in the hub area just wiped.
        ctx.display.Update_ModeDisplay(ctx.st.ShownStatus, ctx.st.StatusColour);
    }
    s.beginLayer(Layer::Top);
}

void Update_LED(Surface& panel, std::int32_t dialType, Colour colour) {
    const LampSpot spot = lampSpot(dialType, panel.widthPixels());
    if (spot.diameter) panel.setLineWidth(*spot.diameter);
    panel.point(spot.x, spot.y, colour);
}

Colour shadowNeedleColour(Colour dial, Colour needle, int index) {
    static constexpr std::array<int, 6> kWeight{0, 2, 4, 7, 11, 20};  // twentieths of needle
    const int k = kWeight[static_cast<std::size_t>(std::clamp(index, 0, 5))];
    auto mix = [k](int d, int n) {
        return static_cast<int>(roundHalfEven((d * (20 - k) + n * k) / 20.0));
    };
    return rgb(mix(redOf(dial), redOf(needle)), mix(greenOf(dial), greenOf(needle)),
               mix(blueOf(dial), blueOf(needle)));
}

}  // namespace lv
