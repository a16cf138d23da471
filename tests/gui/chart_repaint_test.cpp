#include <gtest/gtest.h>

#include <cmath>

#include "display/chart.h"
#include "display/qt_image_surface.h"

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
// was or now is, and the grid lines that moved, go to the screen; only what
// was drawn is wiped. Step by step, the
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
            long long area = 0;
            for (const QRect& r : told) area += static_cast<long long>(r.width()) * r.height();
            partial += area * 2 < static_cast<long long>(c.size.width()) * c.size.height();
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
        // The screen gets strips along the trace and the grid lines that
        // moved, not the chart.
        EXPECT_GT(partial, redraws * 9 / 10);
    }
}

}  // namespace
}  // namespace lv
