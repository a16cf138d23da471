#pragma once
#include <QPainter>
#include <QPen>
#include <QPointF>

namespace lv {

// A straight line with round ends, as `pen` gives it. Qt's raster engine
// sends a round-capped line through its general stroker, about five times
// the cost of its own line rasterizer, which it keeps for flat and square
// ends: so the line goes flat-ended and each end gets a disc of the pen's
// width. The needle is drawn this way 50 times a second.
void drawRoundLine(QPainter& p, QPointF a, QPointF b, const QPen& pen);

}  // namespace lv
