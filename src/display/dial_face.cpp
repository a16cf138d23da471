#include "display/dial_face.h"

#include <cmath>

namespace lv {

namespace {

constexpr double q = kHalfTurn / 2;  // 12 o'clock in the sector geometry
constexpr double S = kScaleSpan;     // widened once; every use below is in double

float f(double v) {
    return static_cast<float>(v);
}

// The dial-coloured fan with its centre blanked, common to both traditional
// scales; they differ only in the line width left in force afterwards.
void traditionalFan(Surface& s, const Settings& cfg, int lineWidth) {
    s.setLineWidth(lineWidth);
    s.setForeColour(cfg.Panel_Color);
    s.setFillColour(cfg.Dial_Color);
    s.setFillStyle(FillStyle::Solid);
    s.arc(0, 0, 1110, cfg.Panel_Color, f(-(q - S / 1.8)), f(-(q + S / 1.8)));
    s.setFillColour(cfg.Panel_Color);
    s.circle(0, 0, 465, cfg.Panel_Color);
}

void traditionalScale(Surface& s, const Settings& cfg) {
    traditionalFan(s, cfg, 1);

    s.setLineWidth(2);
    s.arc(0, 0, 1020, cfg.Scale_Color, f(q - S / 2), f(q + S / 2));
    // The outer line stops short of the vertical and resumes a little left of
    // it: the lamp of the traditional face sits in that gap.
    s.arc(0, 0, 1070, cfg.Scale_Color, f(q - S / 2), f(q + S / 10));
    s.arc(0, 0, 1070, cfg.Scale_Color, f(kOuterArcResume), f(q + S / 2));

    // The 0.01 lets the last tick through despite the accumulated step.
    const double last = kQuarterTurn + S / 2 + 0.01;
    int n = 0;
    for (double a = kQuarterTurn - S / 2; a <= last; a += S / 20, ++n) {
        const double r = (n % 2 != 0) ? 1040 : 1020;
        s.line(f(std::cos(a) * 1070), f(std::sin(a) * 1070), f(std::cos(a) * r), f(std::sin(a) * r),
               cfg.Scale_Color);
    }
}

void simpleTraditionalScale(Surface& s, const Settings& cfg) {
    traditionalFan(s, cfg, 2);

    s.arc(0, 0, 1020, cfg.Scale_Color, f(q + S / 2), f(q + 1.05 * S / 2));
    s.arc(0, 0, 1020, cfg.Scale_Color, f(q - 1.05 * S / 2), f(q - S / 2));
    s.arc(0, 0, 1020, cfg.Scale_Color, f(q + (S / 2) * 15 / 64), f(q + (S / 2) * 17 / 64));

    const double last = kQuarterTurn + S / 2 + 0.01;
    for (double a = kQuarterTurn - S / 2; a <= last; a += S / 8)
        s.line(f(std::cos(a) * 1020), f(std::sin(a) * 1020), f(std::cos(a) * 1050),
               f(std::sin(a) * 1050), cfg.Scale_Color);
}

void circularDiscAndHub(Surface& s, const Settings& cfg) {
    s.setLineWidth(1);
    s.setForeColour(cfg.Dial_Color);
    s.setFillColour(cfg.Dial_Color);
    s.setFillStyle(FillStyle::Solid);
    s.circle(0, kCircularCentreY, kCircularDiscRadius, cfg.Dial_Color);

    s.setForeColour(cfg.Scale_Color);
    s.setFillColour(cfg.Scale_Color);
    s.setLineWidth(3);
    s.setFillStyle(FillStyle::Transparent);
    // The needle crosses the disc: the hub ring lies above it.
    s.beginLayer(Layer::Top);
    s.circle(0, kCircularCentreY, 35, cfg.Scale_Color);
    s.beginLayer(Layer::Face);
}

// Ticks clockwise from 12 o'clock. The angle runs in single precision, so
// whether the closing tick at a full turn is reached depends on its rounding;
// when it is, it lands on the first.
void circularTicks(Surface& s, int divisions, float inner, float outer,
                   std::optional<Colour> colour) {
    const float end = static_cast<float>(kFullTurn);
    const float step = static_cast<float>(kFullTurn / divisions);
    for (float b = 0; b <= end; b += step) {
        const double sb = std::sin(double(b)), cb = std::cos(double(b));
        s.line(f(sb * inner), f(kCircularCentreY + cb * inner), f(sb * outer),
               f(kCircularCentreY + cb * outer), colour);
    }
}

void circularScale(Surface& s, const Settings& cfg) {
    circularDiscAndHub(s, cfg);
    s.setLineWidth(2);
    s.setFillStyle(FillStyle::Transparent);
    s.circle(0, kCircularCentreY, 550, cfg.Scale_Color);
    circularTicks(s, 40, 550, 575, std::nullopt);
}

void simpleCircularScale(Surface& s, const Settings& cfg) {
    circularDiscAndHub(s, cfg);
    s.setLineWidth(2);
    s.setFillStyle(FillStyle::Transparent);
    circularTicks(s, 16, 535, 560, cfg.Scale_Color);
}

}  // namespace

std::optional<ClockTime> panelClock(std::int16_t runMode, const ClockInputs& in) {
    if (runMode != kRunPlayback) return in.now;
    if (in.startTimeSecs == 0 || in.unitsPerSecond <= 0) return std::nullopt;
    const std::int64_t total = in.playPosition / in.unitsPerSecond + in.startTimeSecs;
    ClockTime t;
    t.hour = static_cast<int>(total / 3600);
    t.minute = static_cast<int>((total / 60) % 60);
    t.second = 0;
    t.date = in.now.date;
    return t;
}

void drawFace(Surface& panel, const Settings& cfg) {
    const bool simple = cfg.ScaleType == kScaleSimple;
    if (cfg.ScaleType != kScaleTraditional && !simple) return;
    if (isTraditionalDial(cfg.DialType))
        simple ? simpleTraditionalScale(panel, cfg) : traditionalScale(panel, cfg);
    else if (isCircularDial(cfg.DialType))
        simple ? simpleCircularScale(panel, cfg) : circularScale(panel, cfg);
}

void Draw_Panel(PanelContext& ctx) {
    // The window paints the Base and knob areas in Panel_Color too.
    ctx.panel.setBackColour(ctx.cfg.Panel_Color);
    ctx.state.redraw = true;
    ctx.panel.clear();
    ctx.panel.beginLayer(Layer::Face);
    drawFace(ctx.panel, ctx.cfg);
    ctx.panel.beginLayer(Layer::Top);

    const MeterState& st = ctx.st;
    ctx.display.Update_BaseDisplay(st.ShownBase);
    ctx.display.Update_BdDisplay(st.ShownBd);
    ctx.display.Update_ModeDisplay(st.ShownStatus, st.StatusColour);
    if (ctx.clock) {
        if (const auto t = panelClock(st.RunMode, ctx.clock()))
            ctx.display.Update_Clock(t->hour, t->minute, t->second, t->date);
    }
    ctx.display.Update_SensKnob(st.SensPos);
}

}  // namespace lv
