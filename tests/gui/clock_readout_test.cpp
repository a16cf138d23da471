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
    struct Case {
        std::int32_t clockType, dateType;
        bool left, time, date;  // ink expected in the upper half, in the bottom fifth
    } const cases[] = {
        {0, 1, false, false, false}, {1, 1, false, true, true},  // the dial reaches down
        {2, 0, false, true, false},  {2, 2, true, true, true},    {3, 0, true, true, false},
        {3, 1, false, true, true},   {3, -1, false, true, false}, {3, 5, false, true, false},
        {9, 1, false, false, false}, {-1, 2, true, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.clockType << "/" << c.dateType << "/" << c.left);
        cfg.ClockType = c.clockType;
        cfg.DateType = c.dateType;
        cfg.ClockLeft = c.left;
        const ReadoutBox box = readouts.clockBox();
        panel.fillRect(box.x, box.y, box.width, box.height, kStale);
        readouts.Update_Clock(0, 5, 0, {2026, 11, 22});
        EXPECT_EQ(ink(box, 0, 0.5) > 0, c.time);
        EXPECT_EQ(ink(box, 0.8, 1) > 0, c.date);
        EXPECT_EQ(ink(box, 0, 1, true), 0) << "nothing outside the box";
        panel.clear();
    }
}

TEST_F(ClockReadoutTest, LongDateUsesTwoLinesAndMoreInkThanShort) {
    cfg.ClockType = 2;
    auto dateInk = [&](std::int32_t dateType) {
        cfg.DateType = dateType;
        panel.clear();
        readouts.Update_Clock(23, 59, 0, {2026, 11, 22});
        return std::pair{ink(readouts.clockBox(), 0.5, 0.75), ink(readouts.clockBox(), 0.75, 1)};
    };
    const auto [shortMiddle, shortBottom] = dateInk(1);
    const auto [longMiddle, longBottom] = dateInk(2);
    EXPECT_GT(longMiddle, shortMiddle) << "the weekday takes the middle band";
    EXPECT_GT(shortBottom, 0);
    EXPECT_GT(longBottom, 0);
}

}  // namespace
}  // namespace lv
