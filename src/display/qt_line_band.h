#pragma once
#include <QPointF>
#include <QRegion>

namespace lv {

// The pixels a straight stroke from `a` to `b` can touch, as a chain of small
// rectangles along it: `reach` is how far paint spreads from the centre line
// (half the pen, round caps and the antialiased fringe). A long needle at 45
// degrees covers a tenth of its bounding box, and every pixel copied for it,
// on each frame, is one less to compose, blit and send to the screen.
QRegion lineBand(QPointF a, QPointF b, qreal reach);

}  // namespace lv
