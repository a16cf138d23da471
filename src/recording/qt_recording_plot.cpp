#include "recording/qt_recording_plot.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

#include "recording/time_axis.h"

namespace lv::tool {

namespace {

struct Column {
    int lo = 0, hi = 0;       // needle range in this pixel column
    int first = 0, last = 0;  // needle at the column's first and last record
    double base = 0;          // Base at the column's last record
    bool used = false;
};

double baseValue(std::uint8_t code) {
    return ((code >> 1) + 8) / 20.0;
}

}  // namespace

bool plotRecording(const RecBuffer& buffer, const QString& title, const QString& pngPath, int width,
                   int height, QString* error) {
    const auto records = buffer.valid();
    if (records.empty()) {
        if (error) *error = "the recording holds no records";
        return false;
    }
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);

    const int left = 70, right = 20, top = 40, bottom = 40, gap = 30;
    const int plotW = width - left - right;
    const int needleH = (height - top - bottom - gap) * 2 / 3;
    const int baseH = height - top - bottom - gap - needleH;
    const QRect needleRect(left, top, plotW, needleH);
    const QRect baseRect(left, top + needleH + gap, plotW, baseH);
    const double totalMs = std::max<double>(1.0, records.back().TimeMs);

    // Thousands of records fall on one pixel column: draw each column's range.
    std::vector<Column> cols(static_cast<std::size_t>(plotW));
    int needleMin = records.front().NeedlePos, needleMax = needleMin;
    for (const lvdRecord& r : records) {
        const int x = std::clamp(static_cast<int>(r.TimeMs / totalMs * (plotW - 1)), 0, plotW - 1);
        Column& c = cols[static_cast<std::size_t>(x)];
        if (!c.used) c.lo = c.hi = c.first = r.NeedlePos;
        c.last = r.NeedlePos;
        c.lo = std::min<int>(c.lo, r.NeedlePos);
        c.hi = std::max<int>(c.hi, r.NeedlePos);
        c.base = baseValue(r.BaseCode);
        c.used = true;
        needleMin = std::min<int>(needleMin, r.NeedlePos);
        needleMax = std::max<int>(needleMax, r.NeedlePos);
    }
    if (needleMax == needleMin) ++needleMax;
    auto needleY = [&](int v) {
        return needleRect.bottom() -
               (v - needleMin) * double(needleRect.height()) / (needleMax - needleMin);
    };
    auto baseY = [&](double b) { return baseRect.bottom() - (b - 0.5) / 6.0 * baseRect.height(); };

    p.setPen(QColor(200, 200, 200));
    p.drawRect(needleRect);
    p.drawRect(baseRect);
    const TimeAxis axis = timeAxisFor(totalMs);
    QFont font = p.font();
    font.setPixelSize(12);
    p.setFont(font);
    for (double t : axis.ticks) {
        const double x = left + t * axis.unitMs / totalMs * (plotW - 1);
        p.setPen(QColor(225, 225, 225));
        p.drawLine(QPointF(x, top), QPointF(x, baseRect.bottom()));
        p.setPen(Qt::black);
        p.drawText(QRectF(x - 40, baseRect.bottom() + 4, 80, 16), Qt::AlignCenter,
                   QString::number(t, 'g', 4));
    }
    p.drawText(QRectF(left, height - 18, plotW, 16), Qt::AlignCenter,
               QString::fromStdString(axis.unit));
    p.drawText(QRectF(4, top, left - 8, 16), Qt::AlignRight, QString::number(needleMax));
    p.drawText(QRectF(4, needleRect.bottom() - 16, left - 8, 16), Qt::AlignRight,
               QString::number(needleMin));
    p.drawText(QRectF(4, needleRect.center().y() - 8, left - 8, 16), Qt::AlignRight, "needle");
    for (double b : {0.5, 2.0, 4.0, 6.5})
        p.drawText(QRectF(4, baseY(b) - 8, left - 8, 16), Qt::AlignRight,
                   QString::number(b, 'f', 1));
    p.drawText(QRectF(4, baseRect.top() - 20, left - 8, 16), Qt::AlignRight, "Base");
    font.setPixelSize(15);
    font.setBold(true);
    p.setFont(font);
    p.drawText(QRectF(left, 8, plotW, 24), Qt::AlignLeft | Qt::AlignVCenter, title);

    // One trace, whatever the density: a short recording leaves pixel
    // columns without a record, which the line bridges; a long one puts many
    // records in a column, whose range is drawn upright.
    const QPen needlePen(QColor(200, 30, 30), 1);
    const QPen basePen(QColor(20, 90, 170), 1.5);
    QPointF lastNeedle, lastBase;
    bool haveLast = false;
    for (int x = 0; x < plotW; ++x) {
        const Column& c = cols[static_cast<std::size_t>(x)];
        if (!c.used) continue;
        p.setPen(needlePen);
        const QPointF first(left + x, needleY(c.first));
        if (haveLast) p.drawLine(lastNeedle, first);
        p.drawLine(QPointF(left + x, needleY(c.lo)), QPointF(left + x, needleY(c.hi) - 0.5));
        const QPointF here(left + x, baseY(c.base));
        p.setPen(basePen);
        if (haveLast) p.drawLine(lastBase, here);
        lastNeedle = QPointF(left + x, needleY(c.last));
        lastBase = here;
        haveLast = true;
    }
    p.end();
    if (!image.save(pngPath, "PNG")) {
        if (error) *error = "cannot write " + pngPath;
        return false;
    }
    return true;
}

}  // namespace lv::tool
