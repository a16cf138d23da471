#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "display/dial_face.h"
#include "display/needle_drawing.h"
#include "display/qt_image_surface.h"
#include "support/pixel_colour.h"

namespace lv {
namespace {

constexpr Colour kRed = rgb(255, 0, 0), kBlue = rgb(0, 0, 255), kGreen = rgb(0, 255, 0);

// x -1000..1000 left to right, y 1200 at the top down to -50 at the bottom;
// fills cover only what the pie or circle covers.
TEST(ImageSurface, PanelUnitsMapOntoThePictureAndFillsStayInside) {
    ImageSurface s(QSize(400, 250));
    s.setScale(kPanelScale);
    s.setBackColour(kBlue);
    s.clear();
    EXPECT_EQ(s.toPixels(-1000, 1200), QPointF(0, 0));
    EXPECT_EQ(s.toPixels(1000, -50), QPointF(400, 250));
    EXPECT_EQ(s.toPixels(0, 575), QPointF(200, 125));
    const auto at = [&](float x, float y) {
        return test::colourAt(s.image(), s.toPixels(x, y).toPoint());
    };
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

// The needle swept across its whole range on every face, at the default width
// and at the widest in a small window: outside the needle's own rectangle the
// picture is the fresh face to the pixel; the needle never shows outside a
// circular disc, and the hub ring stays above it.
TEST(LayeredFace, SweptNeedleLeavesTheFaceAsDrawn) {
    for (int width : {4, 8})
        for (std::int32_t dial : {0, 1, 2, 3, 4})
            for (std::int32_t scaleType : {0, 1}) {
                const std::string what = "dial " + std::to_string(dial) + " scale " +
                                         std::to_string(scaleType) + " width " +
                                         std::to_string(width);
                Settings cfg;
                cfg.DialType = dial;
                cfg.ScaleType = scaleType;
                cfg.Needle_Width = static_cast<std::int16_t>(width);
                MeterState st;
                NullDisplaySink sink;
                const QSize size = width == 8 ? QSize(320, 200) : QSize(640, 400);
                ImageSurface fresh(size), swept(size);
                PanelState freshState, sweptState;
                for (ImageSurface* s : {&fresh, &swept}) {
                    s->setScale(kPanelScale);
                    s->setBackColour(cfg.Panel_Color);
                    s->setEraseColour(cfg.Dial_Color);
                }
                PanelContext freshCtx{fresh, cfg,        st,
                                      sink,  freshState, [] { return ClockInputs{}; }};
                PanelContext ctx{swept, cfg, st, sink, sweptState, [] { return ClockInputs{}; }};
                Draw_Panel(freshCtx);
                const QPointF hub = fresh.toPixels(0, kCircularCentreY);
                const qreal discR = fresh.toPixels(kCircularDiscRadius, 0).x() - size.width() / 2.0;
                const qreal hubR = fresh.toPixels(35, 0).x() - size.width() / 2.0;
                const bool circular = isCircularDial(dial);
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
                    for (int y = 0; y < size.height(); ++y) {
                        if (std::memcmp(a.constScanLine(y), b.constScanLine(y), a.bytesPerLine()) ==
                            0)
                            continue;  // most rows: the same, cheaply
                        for (int x = 0; x < size.width(); ++x) {
                            if (a.pixel(x, y) == b.pixel(x, y)) continue;
                            const qreal d = std::hypot(x + 0.5 - hub.x(), y + 0.5 - hub.y());
                            outside += !needle.contains(x, y);
                            beyondDisc += circular && d > discR + 1;
                            onHub += circular && std::abs(d - hubR) < 0.5;
                        }
                    }
                    ASSERT_EQ(std::tuple(outside, beyondDisc, onHub), std::tuple(0, 0, 0))
                        << what << " value " << value << ": pixels changed outside the "
                        << "needle's rectangle, beyond the disc, on the hub ring";
                    const NeedleLine n = needleLine(value);
                    const QPointF mid =
                        swept.toPixels((n.innerX + n.outerX) / 2, (n.innerY + n.outerY) / 2);
                    const bool shown = !circular || std::hypot(mid.x() - hub.x(),
                                                               mid.y() - hub.y()) < discR - width;
                    EXPECT_TRUE(!shown ||
                                b.pixelColor(mid.toPoint()) == toQColor(cfg.MainNeedle_Color))
                        << what << " value " << value << ": the needle's middle in its colour";
                }
            }
}

}  // namespace
}  // namespace lv
