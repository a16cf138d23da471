#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include <QPainter>

#include "display/dial_face.h"
#include "display/needle_drawing.h"
#include "display/qt_image_surface.h"
#include "display/qt_round_line.h"

namespace lv {
namespace {

// The needle swept across its whole range on every face, at the default width
// and at the widest in a small window: outside the needle's own band the
// picture is the fresh face to the pixel; the needle never shows outside a
// circular disc, and the hub ring stays above it.
TEST(LayeredFace, SweptNeedleLeavesTheFaceAsDrawn) {
    for (int k = 0; k < 20; ++k) {
        const int width = k < 10 ? 4 : 8, dial = k / 2 % 5, scaleType = k % 2;
        SCOPED_TRACE(testing::Message()
                     << "dial " << dial << " scale " << scaleType << " width " << width);
        Settings cfg;
        std::tie(cfg.DialType, cfg.ScaleType, cfg.Needle_Width) =
            std::tuple(dial, scaleType, std::int16_t(width));
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
        const auto noClock = [] { return ClockInputs{}; };
        PanelContext freshCtx{fresh, cfg, st, sink, freshState, noClock};
        PanelContext ctx{swept, cfg, st, sink, sweptState, noClock};
        Draw_Panel(freshCtx);
        const QPointF hub = fresh.toPixels(0, kCircularCentreY);
        const qreal discR = fresh.toPixels(kCircularDiscRadius, 0).x() - size.width() / 2.0;
        const qreal hubR = fresh.toPixels(35, 0).x() - size.width() / 2.0;
        const bool circular = isCircularDial(dial);
        for (std::int32_t value = -10500; value <= 10500; value += 350) {
            Update_Needle(ctx, value);
            // An unknown dial's lamp takes whatever line width is in force.
            if (dial != 4)
                for (ImageSurface* s : {&fresh, &swept}) Update_LED(*s, dial, cfg.Dial_Color);
            const QImage a = fresh.image(), b = swept.image();
            const QRegion needle = swept.needleArea();
            int outside = 0, beyondDisc = 0, onHub = 0;
            for (int y = 0; y < size.height(); ++y) {
                const int bytes = a.bytesPerLine();  // most rows: the same, cheaply
                if (std::memcmp(a.constScanLine(y), b.constScanLine(y), bytes) == 0) continue;
                for (int x = 0; x < size.width(); ++x) {
                    if (a.pixel(x, y) == b.pixel(x, y)) continue;
                    const qreal d = std::hypot(x + 0.5 - hub.x(), y + 0.5 - hub.y());
                    outside += !needle.contains(QPoint(x, y));
                    beyondDisc += circular && d > discR + 1;
                    onHub += circular && std::abs(d - hubR) < 0.5;
                }
            }
            ASSERT_EQ(std::tuple(outside, beyondDisc, onHub), std::tuple(0, 0, 0))
                << "value " << value << ": pixels changed outside the "
                << "needle's band, beyond the disc, on the hub ring";
            const NeedleLine n = needleLine(value);
            const QPointF mid =
                swept.toPixels((n.innerX + n.outerX) / 2, (n.innerY + n.outerY) / 2);
            const bool shown =
                !circular || std::hypot(mid.x() - hub.x(), mid.y() - hub.y()) < discR - width;
            // The pixel that holds the middle: rounding would pick one up to a
            // pixel's diagonal away, on the antialiased edge.
            const QPoint middle(int(std::floor(mid.x())), int(std::floor(mid.y())));
            EXPECT_TRUE(!shown || b.pixelColor(middle) == toQColor(cfg.MainNeedle_Color))
                << "value " << value << ": the needle's middle in its colour";
            if (circular) continue;
            // Wherever nothing lies above it, the needle is the whole stroke on
            // the face, antialiased fringe and all: its band cuts none of it off.
            QImage whole = fresh.face().copy();
            QPainter p(&whole);
            p.setRenderHint(QPainter::Antialiasing);
            QPen pen(toQColor(cfg.MainNeedle_Color));
            pen.setWidth(width);
            pen.setCapStyle(Qt::RoundCap);
            drawRoundLine(p, swept.toPixels(n.innerX, n.innerY), swept.toPixels(n.outerX, n.outerY),
                          pen);
            p.end();
            int cut = 0;
            const QRect box = needle.boundingRect().adjusted(-3, -3, 3, 3) & whole.rect();
            for (int y = box.top(); y <= box.bottom(); ++y)
                for (int x = box.left(); x <= box.right(); ++x)
                    cut += a.pixel(x, y) == fresh.face().pixel(x, y) &&
                           whole.pixel(x, y) != b.pixel(x, y);
            EXPECT_EQ(cut, 0) << "value " << value << ": the needle differs from its whole stroke";
        }
    }
}

}  // namespace
}  // namespace lv
