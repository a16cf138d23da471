#include "display/qt_round_line.h"

namespace lv {

void drawRoundLine(QPainter& p, QPointF a, QPointF b, const QPen& pen) {
    const QPen pen0 = p.pen();
    const QBrush brush0 = p.brush();
    QPen flat = pen;
    flat.setCapStyle(Qt::FlatCap);
    p.setPen(flat);
    p.drawLine(a, b);
    const qreal r = pen.widthF() / 2;
    p.setPen(Qt::NoPen);
    p.setBrush(pen.color());
    p.drawEllipse(a, r, r);
    if (b != a) p.drawEllipse(b, r, r);
    p.setBrush(brush0);
    p.setPen(pen0);
}

}  // namespace lv
