#include "display/qt_line_band.h"

#include <QRect>
#include <algorithm>
#include <cmath>

namespace lv {

namespace {
// How far a piece may run across its short side before it is cut again: small
// enough that little lies off the stroke, large enough that the rectangles
// stay few (each one is a blit of its own).
constexpr qreal kPiece = 24;
}  // namespace

QRegion lineBand(QPointF a, QPointF b, qreal reach) {
    const QPointF d = b - a;
    const qreal across = std::min(std::abs(d.x()), std::abs(d.y()));
    const int pieces = std::max(1, static_cast<int>(std::ceil(across / kPiece)));
    QRegion band;
    for (int i = 0; i < pieces; ++i) {
        const QPointF from = a + d * (qreal(i) / pieces), to = a + d * (qreal(i + 1) / pieces);
        band += QRectF(from, to).normalized().adjusted(-reach, -reach, reach, reach).toAlignedRect();
    }
    return band;
}

}  // namespace lv
