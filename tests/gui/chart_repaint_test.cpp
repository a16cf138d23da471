#include <gtest/gtest.h>

#include <QPainter>
#include <cmath>

#include "display/chart.h"
#include "display/qt_image_surface.h"
#include "display/qt_line_band.h"

namespace lv {
namespace {

struct ChartCase {
    const char* name;
    QSize size;
    qreal ratio;
    std::string penWidth;
    bool grid;
    std::string timescale;
};

// The chart is drawn whole at every step, but only the strips where a trace
// was or now is go to the screen, and only they are wiped. Step by step, the
// picture must be the one a fresh sheet would show, and every pixel that
// changed must lie in the area handed to the screen.
TEST(ChartRepaint, OnlyTheTracesStripsChangeAndThePictureIsAsIfDrawnAfresh) {
    const ChartCase cases[] = {
        {"default", {640, 180}, 1, "2", false, "8"},
        {"odd width, thin pen, slow", {333, 120}, 1, "1", false, "24"},
        {"wide pen, grid", {500, 150}, 1, "3", true, "8"},
        {"HiDPI", {300, 100}, 2, "2", false, "16"},
    };
    for (const ChartCase& c : cases) {
        SCOPED_TRACE(c.name);
        Settings cfg;
        cfg.GraphPenWidth_Index = c.penWidth;
        cfg.GridX = cfg.GridY = c.grid;
        cfg.GraphTimescale = c.timescale;
        ChartState cs;
        ImageSurface chart(c.size, c.ratio);
        std::int16_t gainIndex = 1;
        int redraws = 0, partial = 0;
        for (int i = 0; i < 700; ++i) {
            // A swing with steps in it: the offset moves, and once the gain changes.
            if (i == 450) gainIndex = 2;
            const auto value = static_cast<std::int32_t>(32768 + 20000 * std::sin(i / 40.0) +
                                                         (i / 90 % 2) * 9000);
            const ChartState before = cs;
            const QImage was = chart.image().copy();
            Update_Graph(cs, chart, cfg, value, c.size.width(), gainIndex, 1.0);
            const QRegion told = chart.takeDirty();
            const QImage now = chart.image();
            if (told.isEmpty()) {
                ASSERT_EQ(was, now) << "step " << i << ": changed with nothing to repaint";
                continue;
            }
            ++redraws;
            partial += told.boundingRect() != QRect(QPoint(0, 0), c.size) ||
                       told.rectCount() > 1;
            // The same step onto a sheet that holds nothing yet.
            ImageSurface fresh(c.size, c.ratio);
            fresh.setBackColour(cfg.GraphSheet_Color);
            fresh.clear();
            fresh.setScale(chartScale(c.size.width()));
            fresh.setLineWidth(chart.state().lineWidth);
            ChartState same = before;
            if (!same.reinit) {
                Update_Graph(same, fresh, cfg, value, c.size.width(), gainIndex, 1.0);
                ASSERT_EQ(now, fresh.image()) << "step " << i << ": not as drawn afresh";
            }
            for (int y = 0; y < now.height(); ++y) {
                for (int x = 0; x < now.width(); ++x) {
                    if (was.pixel(x, y) == now.pixel(x, y)) continue;
                    ASSERT_TRUE(told.contains(QPoint(int(x / c.ratio), int(y / c.ratio))))
                        << "step " << i << ": pixel " << x << "," << y << " changed unseen";
                }
            }
        }
        EXPECT_GT(redraws, 100);
        // Without a grid the screen gets strips along the trace, not the chart.
        if (!c.grid) {
            EXPECT_GT(partial, redraws * 9 / 10);
        }
    }
}

// Every pixel the needle's pen paints lies in its band, and a long diagonal
// needle's band is a small part of its bounding box.
TEST(LineBand, HoldsTheWholeStrokeAndLittleElse) {
    struct Case {
        QPointF a, b;
        int width;
        double mostOfBox;  // the band's share of the box, at most
    };
    const Case cases[] = {
        {{320, 380}, {60, 40}, 4, 0.2},    // long, steep
        {{320, 380}, {600, 300}, 8, 0.4},  // long, flat, wide pen
        {{320, 380}, {320, 20}, 4, 1.0},   // upright: the box is the band
        {{10.3, 5.7}, {40.9, 33.2}, 1, 1.0},
        {{600, 20}, {20, 390}, 2, 0.15},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.a.x() << "," << c.a.y() << " to " << c.b.x() << ","
                                        << c.b.y() << " width " << c.width);
        QImage img(640, 400, QImage::Format_ARGB32_Premultiplied);
        img.fill(Qt::transparent);
        QPainter p(&img);
        p.setRenderHint(QPainter::Antialiasing);
        QPen pen(Qt::black);
        pen.setWidthF(c.width);
        pen.setCapStyle(Qt::RoundCap);
        p.setPen(pen);
        p.drawLine(c.a, c.b);
        p.end();
        const QRegion band = lineBand(c.a, c.b, c.width / 2.0 + 2);
        int outside = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x)
                outside += qAlpha(img.pixel(x, y)) != 0 && !band.contains(QPoint(x, y));
        EXPECT_EQ(outside, 0);
        long long area = 0;
        for (const QRect& r : band) area += qint64(r.width()) * r.height();
        const QRect box = band.boundingRect();
        EXPECT_LE(area, c.mostOfBox * box.width() * box.height() + 1);
    }
}

}  // namespace
}  // namespace lv
