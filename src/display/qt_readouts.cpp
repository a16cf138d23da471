#include "display/qt_readouts.h"

#include <QFont>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "display/needle_drawing.h"
#include "signal/sens_table.h"

namespace lv {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kCaptionShare = 0.26;  // of the box's height, for "Base" and "BD"
constexpr double kValueShare = 0.5;     // ... and for the number under it
// The knob turns through three quarters of a circle, centred on 12 o'clock.
constexpr double kKnobSweep = 1.5 * kPi;
constexpr int kKnobLastPos = 63;

}  // namespace

PanelReadouts::PanelReadouts(ImageSurface& panel, StatusShower status)
    : m_panel(panel), m_status(std::move(status)) {}

float PanelReadouts::boxPixelsHigh(const ReadoutBox& box) const {
    return static_cast<float>(
        std::abs(m_panel.toPixels(0, box.y).y() - m_panel.toPixels(0, box.y + box.height).y()));
}

TextStyle PanelReadouts::style(qreal pixels) const {
    TextStyle s;
    s.bold = true;
    s.colour = cfg().Text_Color;
    s.size = static_cast<float>(m_panel.pointsForPixels(pixels));
    return s;
}

qreal PanelReadouts::fitting(const std::string& text, qreal pixels, qreal widthPixels) const {
    const TextStyle s = style(pixels);
    QFont font(QString::fromStdString(s.font));
    font.setPointSizeF(std::max(1.0f, s.size));
    font.setBold(true);
    const qreal wide =
        QFontMetricsF(font, &m_panel.image()).horizontalAdvance(QString::fromStdString(text));
    return wide > widthPixels && wide > 0 ? pixels * widthPixels / wide : pixels;
}

void PanelReadouts::wipe(const ReadoutBox& box) {
    m_panel.fillRect(box.x, box.y, box.width, box.height, cfg().Panel_Color);
}

void PanelReadouts::caption(const ReadoutBox& box, const std::string& label,
                            const std::string& value) {
    wipe(box);
    const qreal high = boxPixelsHigh(box);
    const qreal wide = m_panel.toPixels(box.x + box.width, 0).x() - m_panel.toPixels(box.x, 0).x();
    m_panel.text(box.x, box.y, label, style(high * kCaptionShare));
    const float below = box.y + box.height * static_cast<float>(kCaptionShare + 0.08);
    m_panel.text(box.x, below, value, style(fitting(value, high * kValueShare, wide)));
}

void PanelReadouts::Update_BaseDisplay(const std::string& text) {
    caption(kBaseBox, "Base", text);
}

void PanelReadouts::Update_BdDisplay(const std::string& text) {
    caption(kBdBox, "BD", text);
}

void PanelReadouts::Update_ModeDisplay(const std::string& text, Colour colour) {
    if (m_status) m_status(text, colour);
}

void PanelReadouts::Update_SensKnob(int sensPos) {
    const ReadoutBox box = knobBox();
    wipe(box);
    const qreal high = boxPixelsHigh(box);
    // Radii are measured along x; the pointer's y is stretched like the
    // panel's own units, so it stays on the circle whatever the window's shape.
    const QPointF unit = m_panel.toPixels(1, 1) - m_panel.toPixels(0, 0);
    const float r = static_cast<float>(high * 0.4 / unit.x());
    const float yPerX = static_cast<float>(unit.x() / -unit.y());
    const float cx = box.x + r * 1.1f, cy = box.y + box.height / 2;

    m_panel.setLineWidth(2);
    m_panel.setFillColour(cfg().Dial_Color);
    m_panel.setFillStyle(FillStyle::Solid);
    m_panel.circle(cx, cy, r, cfg().Scale_Color);
    const double a =
        (std::clamp(sensPos, 0, kKnobLastPos) / double(kKnobLastPos) - 0.5) * kKnobSweep;
    m_panel.setLineWidth(3);
    m_panel.line(cx, cy, cx + float(std::sin(a)) * r * 0.85f,
                 cy + float(std::cos(a)) * r * 0.85f * yPerX, cfg().Text_Color);
    const std::string label = sensLabel(sensPos);
    const float textX = cx + r * 1.3f;
    const qreal wide = m_panel.toPixels(box.x + box.width, 0).x() - m_panel.toPixels(textX, 0).x();
    m_panel.text(textX, box.y + box.height * 0.25f, label,
                 style(fitting(label, high * 0.45, wide)));
}

void PanelReadouts::Update_LED(Colour colour) {
    lv::Update_LED(m_panel, cfg().DialType, colour);
    m_lamp = colour;
}

void PanelReadouts::redrawLamp() {
    if (m_lamp) lv::Update_LED(m_panel, cfg().DialType, *m_lamp);
}

void PanelReadouts::Update_Clock(int hour, int minute, int, const CalendarDate&) {
    const ReadoutBox box = clockBox();
    wipe(box);
    const qreal high = boxPixelsHigh(box);
    if (cfg().ClockType == 1) {
        const QPointF unit = m_panel.toPixels(1, 1) - m_panel.toPixels(0, 0);
        const float r = static_cast<float>(high * 0.45 / unit.x());
        const float yPerX = static_cast<float>(unit.x() / -unit.y());
        const float cx = box.x + box.width / 2, cy = box.y + box.height / 2;
        m_panel.setLineWidth(2);
        m_panel.setFillColour(cfg().Dial_Color);
        m_panel.setFillStyle(FillStyle::Solid);
        m_panel.circle(cx, cy, r, cfg().Scale_Color);
        auto hand = [&](double turns, float length, int width) {
            const double a = turns * 2 * kPi;
            m_panel.setLineWidth(width);
            m_panel.line(cx, cy, cx + float(std::sin(a)) * r * length,
                         cy + float(std::cos(a)) * r * length * yPerX, cfg().Text_Color);
        };
        hand(((hour % 12) + minute / 60.0) / 12.0, 0.55f, 3);
        hand(minute / 60.0, 0.85f, 2);
        return;
    }
    char text[16];
    if (cfg().ClockType == 2)
        std::snprintf(text, sizeof text, "%d:%02d", (hour + 11) % 12 + 1, minute);
    else
        std::snprintf(text, sizeof text, "%02d:%02d", hour, minute);
    const qreal wide = m_panel.toPixels(box.x + box.width, 0).x() - m_panel.toPixels(box.x, 0).x();
    m_panel.text(box.x, box.y + box.height * 0.2f, text, style(fitting(text, high * 0.5, wide)));
}

void PanelReadouts::showPlayTime(const std::string&) {
    // Playback has no place on the window yet.
}

}  // namespace lv
