#include "display/qt_image_surface.h"

#include <QFont>
#include <QPainterPath>
#include <cmath>

namespace lv {

namespace {
constexpr double kRadToDeg = 180.0 / 3.14159265358979323846;
}

ImageSurface::ImageSurface(QSize size, qreal devicePixelRatio) {
    resize(size, devicePixelRatio);
}

void ImageSurface::resize(QSize size, qreal devicePixelRatio) {
    m_painter.reset();
    m_size = size.expandedTo(QSize(1, 1));
    m_image = QImage(m_size * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    m_image.setDevicePixelRatio(devicePixelRatio);
    m_image.fill(toQColor(state().back));
    touched(QRectF(QPointF(0, 0), m_size));
}

QPainter& ImageSurface::painter() {
    // One painter for the image's life: the face is drawn in many small steps.
    if (!m_painter) {
        m_painter = std::make_unique<QPainter>(&m_image);
        m_painter->setRenderHint(QPainter::Antialiasing);
        m_painter->setRenderHint(QPainter::TextAntialiasing);
    }
    return *m_painter;
}

QPointF ImageSurface::toPixels(float x, float y) const {
    const UserScale& s = scale();
    return QPointF((x - s.left) / s.width * m_size.width(),
                   (y - s.top) / s.height * m_size.height());
}

qreal ImageSurface::radiusPixels(float radius) const {
    return std::abs(radius / scale().width * m_size.width());
}

QPen ImageSurface::pen(Colour c) const {
    QPen p(toQColor(c));
    p.setWidthF(std::max(1, state().lineWidth));
    p.setCapStyle(Qt::RoundCap);
    return p;
}

void ImageSurface::applyFill(bool solid) {
    if (solid)
        painter().setBrush(toQColor(state().fill));
    else
        painter().setBrush(Qt::NoBrush);
}

void ImageSurface::touched(const QRectF& area, qreal penWidth) {
    const qreal reach = penWidth / 2 + 2;
    m_dirty |= area.normalized().adjusted(-reach, -reach, reach, reach).toAlignedRect();
}

QRect ImageSurface::takeDirty() {
    const QRect dirty = m_dirty & QRect(QPoint(0, 0), m_size);
    m_dirty = QRect();
    return dirty;
}

void ImageSurface::clear() {
    m_painter.reset();
    m_image.fill(toQColor(state().back));
    touched(QRectF(QPointF(0, 0), m_size));
}

void ImageSurface::circle(float x, float y, float radius, Colour outline) {
    QPainter& p = painter();
    p.setPen(pen(outline));
    applyFill(state().fillStyle == FillStyle::Solid);
    const qreal r = radiusPixels(radius);
    p.drawEllipse(toPixels(x, y), r, r);
    touched(QRectF(toPixels(x, y) - QPointF(r, r), QSizeF(2 * r, 2 * r)), p.pen().widthF());
}

void ImageSurface::arc(float x, float y, float radius, Colour outline, float start, float end) {
    QPainter& p = painter();
    const bool edgeStart = start < 0, edgeEnd = end < 0;
    const double a0 = std::abs(start), a1 = std::abs(end);
    double span = a1 - a0;
    if (span < 0) span += 2 * 3.14159265358979323846;
    const QPointF c = toPixels(x, y);
    const qreal r = radiusPixels(radius);
    const QRectF box(c.x() - r, c.y() - r, 2 * r, 2 * r);
    // Qt counts angles counter-clockwise on screen, as the picture's y is up.
    // Starting at the centre makes arcTo draw the edge out to the arc.
    QPainterPath path;
    if (edgeStart)
        path.moveTo(c);
    else
        path.arcMoveTo(box, a0 * kRadToDeg);
    path.arcTo(box, a0 * kRadToDeg, span * kRadToDeg);
    if (edgeEnd) path.lineTo(c);
    const bool pie = edgeStart && edgeEnd;
    if (pie) path.closeSubpath();
    p.setPen(pen(outline));
    applyFill(pie && state().fillStyle == FillStyle::Solid);
    p.drawPath(path);
    touched(path.boundingRect(), p.pen().widthF());
}

void ImageSurface::line(float x1, float y1, float x2, float y2, std::optional<Colour> colour) {
    QPainter& p = painter();
    const Colour c = colour.value_or(state().fore);
    QPen linePen = pen(c);
    if (m_erase == c) linePen.setWidthF(linePen.widthF() + 2);
    p.setPen(linePen);
    p.drawLine(toPixels(x1, y1), toPixels(x2, y2));
    touched(QRectF(toPixels(x1, y1), toPixels(x2, y2)), linePen.widthF());
}

void ImageSurface::point(float x, float y, std::optional<Colour> colour) {
    QPainter& p = painter();
    const QColor c = toQColor(colour.value_or(state().fore));
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    const qreal r = std::max(1, state().lineWidth) / 2.0;
    p.drawEllipse(toPixels(x, y), r, r);
    touched(QRectF(toPixels(x, y) - QPointF(r, r), QSizeF(2 * r, 2 * r)));
}

void ImageSurface::text(float x, float y, const std::string& s, const TextStyle& style) {
    QPainter& p = painter();
    QFont font(QString::fromStdString(style.font));
    font.setPointSizeF(std::max(1.0f, style.size));
    font.setBold(style.bold);
    p.setFont(font);
    p.setPen(toQColor(style.colour));
    const QPointF at = toPixels(x, y);
    QRectF drawn;
    p.drawText(QRectF(at, QSizeF(m_size.width(), m_size.height())), Qt::AlignLeft | Qt::AlignTop,
               QString::fromStdString(s), &drawn);
    touched(drawn);
}

void ImageSurface::fillRect(float x, float y, float width, float height, Colour colour) {
    QPainter& p = painter();
    const QRectF area = QRectF(toPixels(x, y), toPixels(x + width, y + height)).normalized();
    p.fillRect(area, toQColor(colour));
    touched(area);
}

qreal ImageSurface::pointsForPixels(qreal pixels) const {
    return pixels * 72.0 / std::max(1, m_image.logicalDpiY());
}

}  // namespace lv
