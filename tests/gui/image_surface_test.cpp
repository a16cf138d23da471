#include <gtest/gtest.h>

#include <cmath>
#include <string>

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

// The needle swept across its whole range on every face, at the default width
// and at the widest in a small window: outside the needle's own rectangle the
// picture is the fresh face to the pixel; the needle never shows outside a
// circular disc, and the hub ring stays above it.
TEST(LayeredFace, SweptNeedleLeavesTheFaceAsDrawn) {
    for (int width : {4, 8})
        for (std::int32_t dial : {0, 1, 2, 3, 4})
            for (std::int32_t scaleType : {0, 1}) {
                Settings cfg;
                cfg.DialType = dial;
                cfg.ScaleType = scaleType;
                cfg.Needle_Width = static_cast<std::int16_t>(width);
                MeterState st;
                NullDisplaySink sink;
                const QSize size = width == 8 ? QSize(320, 200) : QSize(640, 400);
                auto faceOn = [&](ImageSurface& s, PanelState& ps) {
                    s.setScale(kPanelScale);
                    s.setBackColour(cfg.Panel_Color);
                    s.setEraseColour(cfg.Dial_Color);
                    return PanelContext{s, cfg, st, sink, ps, [] { return ClockInputs{}; }};
                };
                ImageSurface fresh(size), swept(size);
                PanelState freshState, sweptState;
                PanelContext freshCtx = faceOn(fresh, freshState);
                PanelContext ctx = faceOn(swept, sweptState);
                Draw_Panel(freshCtx);
                const std::string what = "dial " + std::to_string(dial) + " scale " +
                                         std::to_string(scaleType) + " width " +
                                         std::to_string(width);
                const QPointF hub = fresh.toPixels(0, kCircularCentreY);
                const qreal discR = fresh.toPixels(kCircularDiscRadius, 0).x() - size.width() / 2.0;
                const qreal hubR = fresh.toPixels(35, 0).x() - size.width() / 2.0;
                for (std::int32_t value = -10500; value <= 10500; value += 350) {
                    Update_Needle(ctx, value);
                    // An unknown dial's lamp takes whatever line width is in force.
                    if (dial != 4) {
                        Update_LED(swept, dial, cfg.Dial_Color);
                        Update_LED(fresh, dial, cfg.Dial_Color);
                    }
                    const QImage a = fresh.image(), b = swept.image();
                    const QRect needle = swept.needleRect();
                    int outside = 0, beyondDisc = 0, onHub = 0;
                    for (int y = 0; y < size.height(); ++y)
                        for (int x = 0; x < size.width(); ++x) {
                            if (a.pixel(x, y) == b.pixel(x, y)) continue;
                            const qreal d = std::hypot(x + 0.5 - hub.x(), y + 0.5 - hub.y());
                            if (!needle.contains(x, y)) ++outside;
                            if (isCircularDial(dial) && d > discR + 1) ++beyondDisc;
                            if (isCircularDial(dial) && std::abs(d - hubR) < 0.5) ++onHub;
                        }
                    ASSERT_EQ(outside, 0) << what << " value " << value;
                    ASSERT_EQ(beyondDisc, 0) << what << " value " << value;
                    ASSERT_EQ(onHub, 0) << what << " value " << value;
                    const NeedleLine n = needleLine(value);
                    const QPointF mid =
                        swept.toPixels((n.innerX + n.outerX) / 2, (n.innerY + n.outerY) / 2);
                    const bool shown =
                        !isCircularDial(dial) ||
                        std::hypot(mid.x() - hub.x(), mid.y() - hub.y()) < discR - width;
                    if (shown) {
                        ASSERT_EQ(b.pixelColor(mid.toPoint()), toQColor(cfg.MainNeedle_Color))
                            << what << " value " << value;
                    }
                }
            }
}

}  // namespace
}  // namespace lv
