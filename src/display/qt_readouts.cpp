#include "display/qt_readouts.h"

#include <QFont>
#include <algorithm>
#include <cmath>
#include <vector>

#include "display/dial_face.h"
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
// The digital clock's lines share this much of the box's height; the time
// alone takes as much as a Base value does.
constexpr double kClockTextShare = 0.92;
constexpr double kTimeAloneShare = 0.6;
constexpr double kTimeWeight = 2.0;  // a date line's height is one
constexpr double kGlyphShare = 0.8;  // of a line's height, leaving the font its leading
constexpr double kClockWidthShare = 0.96;
constexpr double kMeridiemScale = 0.5;  // "AM"/"PM" against the digits' size

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

QFontMetricsF PanelReadouts::metricsAt(qreal pixels) const {
    const TextStyle s = style(pixels);
    QFont font(QString::fromStdString(s.font));
    font.setPointSizeF(std::max(1.0f, s.size));
    font.setBold(true);
    return QFontMetricsF(font, m_panel.metricsDevice());
}

qreal PanelReadouts::fitting(const std::string& text, qreal pixels, qreal widthPixels) const {
    const qreal wide = metricsAt(pixels).horizontalAdvance(QString::fromStdString(text));
    return wide > widthPixels && wide > 0 ? pixels * widthPixels / wide : pixels;
}

void PanelReadouts::wipe(const ReadoutBox& box) {
    m_panel.wipe(box.x, box.y, box.width, box.height, cfg().Panel_Color);
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

void PanelReadouts::Update_Clock(int hour, int minute, int, const CalendarDate& date) {
    const ReadoutBox box = clockBox();
    wipe(box);
    if (cfg().ClockType == kClockAnalog)
        analogClock(box, hour, minute);
    else
        digitalClock(box, clockTexts(cfg().ClockType, cfg().DateType, hour, minute, date));
}

void PanelReadouts::analogClock(const ReadoutBox& box, int hour, int minute) {
    const qreal high = boxPixelsHigh(box);
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
}

void PanelReadouts::digitalClock(const ReadoutBox& box, const ClockTexts& texts) {
    if (texts.time.empty()) return;
    // The time is what is read from across the room: it gets twice the height
    // of a date line, and "AM"/"PM" go small beside it so the digits keep
    // their size. Alone the time keeps the middle of the box, as the other
    // readouts keep theirs.
    std::vector<std::pair<std::vector<ClockPiece>, double>> lines{
        {{{texts.time, 1.0}}, kTimeWeight}};
    if (!texts.meridiem.empty())
        lines.front().first.push_back({" " + texts.meridiem, kMeridiemScale});
    for (const std::string* s : {&texts.weekday, &texts.date})
        if (!s->empty()) lines.push_back({{{*s, 1.0}}, 1.0});
    double weights = 0;
    for (const auto& l : lines) weights += l.second;
    const double used = lines.size() == 1 ? kTimeAloneShare : kClockTextShare;

    const qreal high = boxPixelsHigh(box);
    qreal top = high * (1 - used) / 2;  // pixels below the box's top edge
    for (const auto& [pieces, weight] : lines) {
        const qreal slot = high * used * weight / weights;
        clockLine(box, top, slot, pieces);
        top += slot;
    }
}

void PanelReadouts::clockLine(const ReadoutBox& box, qreal top, qreal slot,
                              const std::vector<ClockPiece>& pieces) {
    const QPointF unit = m_panel.toPixels(1, 1) - m_panel.toPixels(0, 0);
    const qreal boxWide = box.width * unit.x();
    auto wideAt = [&](qreal pixels) {
        qreal w = 0;
        for (const ClockPiece& p : pieces)
            w += metricsAt(pixels * p.scale).horizontalAdvance(QString::fromStdString(p.text));
        return w;
    };
    qreal pixels = slot * kGlyphShare;
    const qreal room = boxWide * kClockWidthShare, wide = wideAt(pixels);
    if (wide > room) pixels *= room / wide;

    // Centred in the box, the pieces on one baseline.
    const QFontMetricsF main = metricsAt(pixels);
    const qreal baseline = top + (slot - main.height()) / 2 + main.ascent();
    qreal x = (boxWide - wideAt(pixels)) / 2;
    for (const ClockPiece& p : pieces) {
        const qreal size = pixels * p.scale;
        const QFontMetricsF m = metricsAt(size);
        m_panel.text(box.x + static_cast<float>(x / unit.x()),
                     box.y + static_cast<float>((baseline - m.ascent()) / unit.y()), p.text,
                     style(size));
        x += m.horizontalAdvance(QString::fromStdString(p.text));
    }
}

void PanelReadouts::Update_PanelWord(const std::string& word) {
    m_word = word;
    wipe(kWordBox);
    if (word.empty()) return;
    const qreal unit = m_panel.toPixels(1, 0).x() - m_panel.toPixels(0, 0).x();
    const qreal wide = kWordBox.width * unit;
    // A fourteenth of the panel's width, as the words were always printed.
    const qreal size = fitting(word, 0.07 * kPanelScale.width * unit, wide);
    const qreal textWide = metricsAt(size).horizontalAdvance(QString::fromStdString(word));
    const float x = kWordBox.x + static_cast<float>((wide - textWide) / 2 / unit);
    m_panel.text(x, kWordBox.y, word, style(size));
}

void PanelReadouts::showPlayTime(const std::string&) {
    // Playback has no place on the window yet.
}

}  // namespace lv
