#include <gtest/gtest.h>

#include "display/dial_face.h"
#include "display/qt_readouts.h"
#include "support/pixel_colour.h"

namespace lv {
namespace {

constexpr Colour kStale = rgb(255, 0, 255);  // what an earlier clock left behind

// Ink: any pixel not in the panel's colour.
class ClockReadoutTest : public ::testing::Test {
protected:
    ClockReadoutTest() : panel(QSize(800, 500)), readouts(panel, {}) {
        panel.setScale(kPanelScale);
        panel.setBackColour(cfg.Panel_Color);
        panel.clear();
        readouts.setSettings(cfg);
    }
    // Ink between two fractions of the box's height (0 top), or anywhere outside it.
    int ink(const ReadoutBox& box, double from, double to, bool outside = false) const {
        const QPointF a = panel.toPixels(box.x, box.y);
        const QPointF b = panel.toPixels(box.x + box.width, box.y + box.height);
        const QImage& img = panel.image();
        int n = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x) {
                const bool in = x >= a.x() && x < b.x() && y >= a.y() && y < b.y();
                const double down = (y - a.y()) / (b.y() - a.y());
                const bool wanted = outside ? !in : in && down >= from && down < to;
                n += wanted && test::colourAt(img, {x, y}) != cfg.Panel_Color;
            }
        return n;
    }
    Settings cfg;
    ImageSurface panel;
    PanelReadouts readouts;
};

TEST_F(ClockReadoutTest, DrawsTheChosenClockInsideItsBox) {
    // Clock and date type, on the left; ink expected in the upper half, in the bottom fifth
    // (the analogue dial reaches down).
    const std::tuple<int, int, bool, bool, bool> cases[] = {
        {0, 1, false, false, false}, {1, 1, false, true, true},  {2, 2, true, true, true},
        {3, 0, true, true, false},   {3, 5, false, true, false}, {-1, 2, true, false, false}};
    for (const auto& [clockType, dateType, left, time, date] : cases) {
        SCOPED_TRACE(testing::Message() << clockType << "/" << dateType << "/" << left);
        std::tie(cfg.ClockType, cfg.DateType, cfg.ClockLeft) =
            std::tuple(clockType, dateType, left);
        const ReadoutBox box = readouts.clockBox();
        panel.fillRect(box.x, box.y, box.width, box.height, kStale);
        readouts.Update_Clock(0, 5, 0, {2026, 11, 22});
        EXPECT_EQ(std::pair(ink(box, 0, 0.5) > 0, ink(box, 0.8, 1) > 0), std::pair(time, date));
        EXPECT_EQ(ink(box, 0, 1, true), 0) << "nothing outside the box";
        panel.clear();
    }
}

// The base readout: a number adds ink to the caption, and its wipe takes it all away.
TEST_F(ClockReadoutTest, BaseNumberIsWipedWhole) {
    readouts.Update_BaseDisplay("");
    const int caption = ink(kBaseBox, 0, 1);
    EXPECT_GT(caption, 0);
    readouts.Update_BaseDisplay("12.25");
    EXPECT_GT(ink(kBaseBox, 0, 1), caption + 100);
    readouts.Update_BaseDisplay("");
    EXPECT_EQ(ink(kBaseBox, 0, 1), caption);
}

}  // namespace
}  // namespace lv
