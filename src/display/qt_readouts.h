#pragma once
#include <QFontMetricsF>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/display_sink.h"
#include "display/clock_text.h"
#include "display/qt_image_surface.h"
#include "settings/settings.h"

namespace lv {

// A corner of the dial area in panel units: top-left corner, width, height
// (height negative, as y grows upwards).
struct ReadoutBox {
    float x, y, width, height;
};

// Where the readouts sit on the dial area: the four corners, which both the
// sector face and the circular face leave free.
inline constexpr ReadoutBox kBaseBox{-990.0f, 280.0f, 420.0f, -325.0f};
inline constexpr ReadoutBox kBdBox{570.0f, 280.0f, 420.0f, -325.0f};
inline constexpr ReadoutBox kLeftTopBox{-990.0f, 1190.0f, 350.0f, -230.0f};
inline constexpr ReadoutBox kRightTopBox{640.0f, 1190.0f, 350.0f, -230.0f};
// "RECORD", "PLAY" or "PAUSE": low in the middle, under the scale and the hub.
inline constexpr ReadoutBox kWordBox{-340.0f, 95.0f, 680.0f, -140.0f};

// The window's display routines. Base, BD, knob, clock and lamp are painted on
// the dial area; the status text goes to whoever shows it (the status bar).
class PanelReadouts : public DisplaySink {
public:
    using StatusShower = std::function<void(const std::string& text, Colour colour)>;

    PanelReadouts(ImageSurface& panel, StatusShower status);
    // The settings usually belong to the session, which wants this sink when
    // it is built; so they are handed over afterwards, before the first draw.
    void setSettings(const Settings& cfg) { m_cfgp = &cfg; }

    void Update_BaseDisplay(const std::string& text) override;
    void Update_BdDisplay(const std::string& text) override;
    void Update_ModeDisplay(const std::string& text, Colour colour) override;
    void Update_SensKnob(int sensPos) override;
    void Update_LED(Colour colour) override;
    void Update_Clock(int hour, int minute, int second, const CalendarDate& date) override;
    void showPlayTime(const std::string& text) override;

    // A rebuilt face has no lamp on it: puts the last one back, if any.
    void redrawLamp();
    // The recorder's and the player's word on the panel; "" takes it away.
    void Update_PanelWord(const std::string& word);
    // A rebuilt face: puts the word back, if any.
    void redrawPanelWord() { Update_PanelWord(m_word); }

    ReadoutBox knobBox() const { return cfg().ClockLeft ? kRightTopBox : kLeftTopBox; }
    ReadoutBox clockBox() const { return cfg().ClockLeft ? kLeftTopBox : kRightTopBox; }

private:
    void wipe(const ReadoutBox& box);
    void caption(const ReadoutBox& box, const std::string& label, const std::string& value);
    void analogClock(const ReadoutBox& box, int hour, int minute);
    void digitalClock(const ReadoutBox& box, const ClockTexts& texts);
    // Texts side by side at `scale` times the line's type size.
    struct ClockPiece {
        std::string text;
        double scale;
    };
    // One line centred in the box, `top` and `slot` its place in pixels below
    // the box's top edge, shrunk to the box's width if need be.
    void clockLine(const ReadoutBox& box, qreal top, qreal slot,
                   const std::vector<ClockPiece>& pieces);
    float boxPixelsHigh(const ReadoutBox& box) const;
    TextStyle style(qreal pixels) const;
    // The readouts' bold font at `pixels`, measured on the panel's image.
    QFontMetricsF metricsAt(qreal pixels) const;
    // The largest size up to `pixels` at which `text` fits `widthPixels`.
    qreal fitting(const std::string& text, qreal pixels, qreal widthPixels) const;

    const Settings& cfg() const { return m_cfgp ? *m_cfgp : m_defaults; }

    ImageSurface& m_panel;
    const Settings* m_cfgp = nullptr;
    Settings m_defaults;
    StatusShower m_status;
    std::optional<Colour> m_lamp;
    std::string m_word;
};

}  // namespace lv
