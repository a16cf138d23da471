#include <gtest/gtest.h>

#include <cmath>

#include "display/dial_face.h"
#include "display/needle_drawing.h"
#include "display/qt_image_surface.h"

namespace lv {
namespace {

constexpr Colour kRed = rgb(255, 0, 0), kBlue = rgb(0, 0, 255), kGreen = rgb(0, 255, 0);

class ImageSurfaceTest : public ::testing::Test {
protected:
    ImageSurfaceTest() : s(QSize(400, 250)) {
        s.setScale(kPanelScale);
        s.setBackColour(kBlue);
        s.clear();
    }
    Colour at(float x, float y) const {
        const QPointF p = s.toPixels(x, y);
        const QColor c = s.image().pixelColor(int(p.x()), int(p.y()));
        return rgb(c.red(), c.green(), c.blue());
    }
    ImageSurface s;
};

// x -1000..1000 left to right, y 1200 at the top down to -50 at the bottom.
TEST_F(ImageSurfaceTest, PanelUnitsMapOntoThePicture) {
    EXPECT_EQ(s.toPixels(-1000, 1200), QPointF(0, 0));
    EXPECT_EQ(s.toPixels(1000, -50), QPointF(400, 250));
    EXPECT_EQ(s.toPixels(0, 575), QPointF(200, 125));
}

TEST_F(ImageSurfaceTest, PieAndCirclesFillOnlyWhatTheyCover) {
    // The traditional fan: 28.9 to 151.1 degrees about (0, 0), radius 1110.
    s.setFillStyle(FillStyle::Solid);
    s.setFillColour(kRed);
    s.arc(0, 0, 1110, kRed, -0.5042f, -2.6374f);
    EXPECT_EQ(at(0, 900), kRed) << "straight up, inside the fan";
    EXPECT_EQ(at(800, 600), kRed) << "37 degrees, inside";
    EXPECT_EQ(at(900, 150), kBlue) << "9 degrees, below the right edge";
    EXPECT_EQ(at(0, 1150), kBlue) << "beyond the radius";

    s.clear();
    s.setLineWidth(3);
    s.setFillStyle(FillStyle::Transparent);
    s.circle(0, 600, 300, kGreen);
    EXPECT_EQ(at(0, 600), kBlue);
    EXPECT_EQ(at(300, 600), kGreen);
    s.setFillStyle(FillStyle::Solid);
    s.circle(0, 600, 100, kGreen);
    EXPECT_EQ(at(0, 600), kRed);
}

TEST_F(ImageSurfaceTest, NeedleAtThreeOClockOnTheDrawnFace) {
    Settings cfg;
    MeterState st;
    NullDisplaySink sink;
    PanelState panel;
    s.setBackColour(cfg.Panel_Color);
    PanelContext ctx{s, cfg, st, sink, panel, [] { return ClockInputs{}; }};
    Draw_Panel(ctx);
    Update_Needle(ctx, 16384);
    EXPECT_EQ(at(750, 0), cfg.MainNeedle_Color) << "a quarter turn clockwise lies along +x";
    EXPECT_EQ(at(0, 750), cfg.Dial_Color) << "the fan straight up, no needle there";
}

}  // namespace
}  // namespace lv
