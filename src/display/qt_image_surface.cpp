#include "display/qt_image_surface.h"

#include <QFont>
#include <algorithm>
#include <cmath>

#include "display/qt_line_band.h"
#include "display/qt_round_line.h"

namespace lv {

namespace {
constexpr double kRadToDeg = 180.0 / 3.14159265358979323846;
// The antialiased fringe reaches this far beyond a shape's geometry.
constexpr qreal kFringe = 2;
// A repaint area with more pieces than this is repainted as its bounding box:
// past it, a blit per piece costs more than the pixels it saves.
constexpr int kMostDirtyPieces = 64;
// A straight line along an axis at least this long is kept as a line of its
// own, not in the strips it crosses: a chart's grid.
constexpr qreal kLongLine = 64;
// Qt's raster engine hands a blit of more rows than about 96, under a clip
// that is not one rectangle (a paint event's usually is not), to its worker
// threads and waits for them: dearer than the copy for the sizes here.
constexpr int kBlitRows = 64;

// Half-open edges, as the strips and lines keep them, to a rectangle.
QRect spanned(int left, int top, int right, int bottom) {
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1));
}
QRect spanned(const StraightLines::Line& l) {
    return spanned(l.left, l.top, l.right, l.bottom);
}

// Copies `area` (device-independent pixels) of `image` to the same place.
void blit(QPainter& p, const QRect& area, const QImage& image) {
    const qreal ratio = image.devicePixelRatio();
    for (int top = area.top(); top <= area.bottom(); top += kBlitRows) {
        const QRect r(area.left(), top, area.width(), std::min(kBlitRows, area.bottom() + 1 - top));
        p.drawImage(QRectF(r), image, QRectF(QPointF(r.topLeft()) * ratio, QSizeF(r.size()) * ratio));
    }
}
}  // namespace

ImageSurface::ImageSurface(QSize size, qreal devicePixelRatio) {
    resize(size, devicePixelRatio);
}

ImageSurface::~ImageSurface() {
    endPainters();
}

void ImageSurface::endPainters() {
    for (auto& p : m_painters) p.reset();
}

void ImageSurface::resize(QSize size, qreal devicePixelRatio) {
    endPainters();
    m_size = size.expandedTo(QSize(1, 1));
    // Opaque: the window's backing store takes it as a plain copy, where an
    // image with alpha would be blended pixel by pixel on every repaint.
    m_image = QImage(m_size * devicePixelRatio, QImage::Format_RGB32);
    m_image.setDevicePixelRatio(devicePixelRatio);
    m_image.fill(toQColor(state().back));
    // A new size starts without layers; the next face drawn brings them back.
    m_face = QImage();
    m_top = QImage();
    m_surround = QImage();
    m_layer.reset();
    m_needle.reset();
    m_topArea = QRegion();
    m_stale = false;
    m_poly.clear();
    m_dirty = QRect(QPoint(0, 0), m_size);
    m_drawn.reset(m_size.width());
    m_changedStrips.reset(m_size.width());
    m_lines.reset();
    m_wipedWith = state().back;
}

QImage& ImageSurface::target(Target t) const {
    return t == FaceImage ? m_face : t == TopImage ? m_top : m_image;
}

QPainter& ImageSurface::painter(Target t) const {
    // One painter per image for its life: the face is drawn in many small steps.
    auto& p = m_painters[t];
    if (!p) {
        p = std::make_unique<QPainter>(&target(t));
        p->setRenderHint(QPainter::Antialiasing);
        p->setRenderHint(QPainter::TextAntialiasing);
    }
    return *p;
}

ImageSurface::Target ImageSurface::drawTarget() const {
    if (!m_layer) return Shown;
    return *m_layer == Layer::Face ? FaceImage : TopImage;
}

void ImageSurface::ensureLayers() {
    if (!m_face.isNull()) return;
    m_face = m_image.copy();
    m_top = QImage(m_image.size(), QImage::Format_ARGB32_Premultiplied);
    m_top.setDevicePixelRatio(m_image.devicePixelRatio());
    m_top.fill(Qt::transparent);
}

void ImageSurface::beginLayer(Layer layer, std::optional<Opening> opening) {
    flushPolyline();
    ensureLayers();
    m_layer = layer;
    m_opening = layer == Layer::Needle ? opening : std::nullopt;
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

void ImageSurface::applyFill(QPainter& p, bool solid) const {
    if (solid)
        p.setBrush(toQColor(state().fill));
    else
        p.setBrush(Qt::NoBrush);
}

QRect ImageSurface::grown(const QRectF& area, qreal penWidth) const {
    const qreal reach = penWidth / 2 + kFringe;
    return area.normalized().adjusted(-reach, -reach, reach, reach).toAlignedRect() &
           QRect(QPoint(0, 0), m_size);
}

void ImageSurface::touched(const QRectF& area, qreal penWidth) {
    const QRect r = grown(area, penWidth);
    if (!m_layer) {
        m_drawn.add(r.left(), r.top(), r.right() + 1, r.bottom() + 1);
        m_changedStrips.add(r.left(), r.top(), r.right() + 1, r.bottom() + 1);
        return;
    }
    changed(r);
    if (m_layer == Layer::Face) m_surround = QImage();
    if (m_layer == Layer::Top) m_topArea += r;
}

void ImageSurface::changed(const QRegion& area) {
    m_dirty += area;
    if (m_dirty.rectCount() > kMostDirtyPieces) m_dirty = m_dirty.boundingRect();
    if (m_layer) m_stale = true;
}

QRegion ImageSurface::takeDirty() {
    flushPolyline();
    const QRegion dirty = m_dirty & QRect(QPoint(0, 0), m_size);
    m_dirty = QRegion();
    QRegion strips;
    if (!mostOf(m_changedStrips)) {
        m_changedStrips.forEach([&strips](int left, int top, int right, int bottom) {
            strips += spanned(left, top, right, bottom);
        });
    } else if (!m_changedStrips.empty()) {
        strips = QRect(QPoint(0, 0), m_size);  // most of it: in one piece
    }
    m_changedStrips.clear();
    m_lines.takeChanged([&strips](const StraightLines::Line& l) {
        strips += spanned(l);
    });
    return dirty + (strips & QRect(QPoint(0, 0), m_size));
}

const QImage& ImageSurface::image() const {
    compose();
    return m_image;
}

void ImageSurface::clear() {
    m_poly.clear();  // a trace not drawn yet would only be wiped
    const QColor back = toQColor(state().back);
    const QRect all(QPoint(0, 0), m_size);
    if (layered()) {
        endPainters();
        m_image.fill(back);
        m_face.fill(back);
        m_top.fill(Qt::transparent);
        m_needle.reset();
        m_surround = QImage();
        m_topArea = QRegion();
        changed(all);
        return;
    }
    // A chart is wiped for every step of its trace, and only what was drawn
    // since the last wipe differs from the background: that much is filled,
    // unless the background itself changed. The painter stays (one ended and
    // begun again each time costs more than the fill); the image is its own,
    // so no copy is made under it. Not a fill through the painter either: Qt
    // hands one that large to its worker threads and waits for them.
    // A copy of the picture still held elsewhere would take the painter's
    // buffer with it when the image detaches for the fill.
    if (!m_image.isDetached()) endPainters();
    if (state().back == m_wipedWith) {
        // A trace over most of the strips: then one fill of the whole is faster.
        if (mostOf(m_drawn)) {
            m_image.fill(back);
        } else {
            fillStrips(m_drawn, back);
            for (const StraightLines::Line& l : m_lines.drawn())
                fillArea(spanned(l), back);
        }
        m_changedStrips.add(m_drawn);
    } else {
        m_image.fill(back);
        m_dirty = all;
    }
    m_drawn.clear();
    m_lines.wiped();
    m_wipedWith = state().back;
}

bool ImageSurface::mostOf(const StripArea& area) const {
    return area.area() * 2 >= static_cast<long long>(m_size.width()) * m_size.height();
}

void ImageSurface::fillStrips(const StripArea& area, const QColor& colour) {
    area.forEach([&](int left, int top, int right, int bottom) {
        fillArea(spanned(left, top, right, bottom), colour);
    });
}

void ImageSurface::fillArea(const QRect& area, const QColor& colour) {
    const qreal ratio = m_image.devicePixelRatio();
    const QRect r = QRectF(QPointF(area.topLeft()) * ratio, QSizeF(area.size()) * ratio)
                        .toAlignedRect() & m_image.rect();
    const quint32 pixel = colour.rgb();
    uchar* bits = m_image.bits();
    const qsizetype stride = m_image.bytesPerLine();
    for (int y = r.top(); y <= r.bottom(); ++y)
        std::fill_n(reinterpret_cast<quint32*>(bits + y * stride) + r.left(), r.width(), pixel);
}

bool ImageSurface::needleErased(Colour c) {
    if (m_layer != Layer::Needle || m_erase != c) return false;
    if (m_needle) changed(m_needle->area);
    m_needle.reset();
    return true;
}

void ImageSurface::showNeedle(QPointF a, QPointF b, Colour c) {
    const qreal reach = std::max(1, state().lineWidth) / 2.0 + kFringe;
    NeedleShown n{a, b, pen(c), lineBand(a, b, reach) & QRect(QPoint(0, 0), m_size), {}};
    if (m_opening) {
        // Only a line that reaches out of the opening is clipped to it.
        const QPointF centre = toPixels(m_opening->x, m_opening->y);
        const qreal r = radiusPixels(m_opening->radius);
        const qreal reach = n.pen.widthF() / 2 + 1;
        auto outside = [&](QPointF p) {
            return std::hypot(p.x() - centre.x(), p.y() - centre.y()) + reach > r;
        };
        if (outside(a) || outside(b)) {
            n.clip = true;
            surroundFor(centre, r);
        }
    }
    if (m_needle) changed(m_needle->area);
    changed(n.area);
    m_needle = std::move(n);
}

void ImageSurface::surroundFor(QPointF centre, qreal radius) {
    if (!m_surround.isNull() && m_surroundAt == QRectF(centre, QSizeF(radius, radius))) return;
    m_surround = m_face.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter p(&m_surround);
    p.setRenderHint(QPainter::Antialiasing);
    p.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::black);
    p.drawEllipse(centre, radius, radius);
    m_surroundAt = QRectF(centre, QSizeF(radius, radius));
}

void ImageSurface::compose() const {
    flushPolyline();
    if (!m_stale) return;
    m_stale = false;
    paintLayers(painter(Shown), QRect(QPoint(0, 0), m_size));
}

void ImageSurface::paint(QPainter& p, const QRegion& region) const {
    flushPolyline();
    if (layered()) {
        paintLayers(p, region);
        return;
    }
    for (const QRect& r : region) blit(p, r, m_image);
}

void ImageSurface::paintLayers(QPainter& p, const QRegion& region) const {
    // The layers were drawn to by painters of their own: finish those first.
    m_painters[FaceImage].reset();
    m_painters[TopImage].reset();
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setCompositionMode(QPainter::CompositionMode_Source);
    for (const QRect& r : region) blit(p, r, m_face);
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    if (m_needle && region.intersects(m_needle->area)) {
        // The stroke lies inside its band, and the painter is already held
        // to the region: a clip of our own would only add to the cost.
        drawRoundLine(p, m_needle->a, m_needle->b, m_needle->pen);
        // The face around the opening laid back over the needle: cheaper
        // than clipping to a round path, and the rim stays antialiased.
        if (m_needle->clip)
            for (const QRect& r : region & m_needle->area) blit(p, r, m_surround);
    }
    for (const QRect& r : region & m_topArea) blit(p, r, m_top);
    p.restore();
}

void ImageSurface::flushPolyline() const {
    if (m_poly.size() < 2) {
        m_poly.clear();
        return;
    }
    QPainter& p = painter(Shown);
    const qreal wide = m_polyPen.widthF();
    if (m_poly.size() == 2) {
        straightLine(m_poly[0], m_poly[1], m_polyPen);
    } else if (wide <= 1) {
        p.setPen(m_polyPen);
        p.drawPolyline(m_poly);
    } else {
        // Qt's general stroker takes about a millisecond for a wide
        // antialiased trace of 200 points; hairlines side by side, across and
        // along, cost a tenth of that and come out as wide.
        QPen hair = m_polyPen;
        hair.setWidthF(1);
        p.setPen(hair);
        const qreal half = (wide - 1) / 2;
        for (qreal d = -half; d <= half + 0.01; d += 1) {
            p.drawPolyline(m_poly.translated(0, d));
            if (d != 0) p.drawPolyline(m_poly.translated(d, 0));
        }
    }
    m_poly.clear();
}

void ImageSurface::circle(float x, float y, float radius, Colour outline) {
    flushPolyline();
    if (needleErased(state().fillStyle == FillStyle::Solid ? state().fill : outline)) return;
    QPainter& p = painter(drawTarget());
    p.setPen(pen(outline));
    applyFill(p, state().fillStyle == FillStyle::Solid);
    const qreal r = radiusPixels(radius);
    p.drawEllipse(toPixels(x, y), r, r);
    touched(QRectF(toPixels(x, y) - QPointF(r, r), QSizeF(2 * r, 2 * r)), p.pen().widthF());
}

void ImageSurface::arc(float x, float y, float radius, Colour outline, float start, float end) {
    flushPolyline();
    const bool edgeStart = start < 0, edgeEnd = end < 0;
    const bool pie = edgeStart && edgeEnd;
    if (needleErased(pie && state().fillStyle == FillStyle::Solid ? state().fill : outline)) return;
    QPainter& p = painter(drawTarget());
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
    if (pie) path.closeSubpath();
    p.setPen(pen(outline));
    applyFill(p, pie && state().fillStyle == FillStyle::Solid);
    p.drawPath(path);
    touched(path.boundingRect(), p.pen().widthF());
}

void ImageSurface::line(float x1, float y1, float x2, float y2, std::optional<Colour> colour) {
    const Colour c = colour.value_or(state().fore);
    const QPointF a = toPixels(x1, y1), b = toPixels(x2, y2);
    if (m_layer == Layer::Needle) {
        if (!needleErased(c)) showNeedle(a, b, c);
        return;
    }
    const QPen linePen = pen(c);
    if (!m_layer) {
        // Without layers a chart's trace comes as segments end to start.
        if (!m_poly.isEmpty() && m_poly.back() == a && linePen == m_polyPen) {
            m_poly << b;
        } else if (m_poly.size() > 2 && linePen != m_polyPen) {
            // A grid line across a trace: the trace goes on after it.
            straightLine(a, b, linePen);
        } else {
            flushPolyline();
            m_poly << a << b;
            m_polyPen = linePen;
        }
    } else {
        QPainter& p = painter(drawTarget());
        p.setPen(linePen);
        p.drawLine(a, b);
    }
    const QRectF box = QRectF(a, b).normalized();
    if (!m_layer && (box.width() == 0 || box.height() == 0) &&
        std::max(box.width(), box.height()) >= kLongLine) {
        const QRect r = grown(box, linePen.widthF());
        if (m_lines.add({r.left(), r.top(), r.right() + 1, r.bottom() + 1, linePen.color().rgb()}))
            return;
    }
    touched(box, linePen.widthF());
}

void ImageSurface::straightLine(QPointF a, QPointF b, const QPen& linePen) const {
    QPainter& p = painter(Shown);
    const qreal w = linePen.widthF();
    if (w >= 1 && (a.x() == b.x() || a.y() == b.y())) {
        // A wide line along an axis is a rectangle: far cheaper to fill than to stroke.
        p.fillRect(QRectF(a, b).normalized().adjusted(-w / 2, -w / 2, w / 2, w / 2),
                   linePen.color());
        return;
    }
    drawRoundLine(p, a, b, linePen);
}

void ImageSurface::point(float x, float y, std::optional<Colour> colour) {
    flushPolyline();
    QPainter& p = painter(drawTarget());
    const QColor c = toQColor(colour.value_or(state().fore));
    const qreal r = std::max(1, state().lineWidth) / 2.0;
    const QPointF at = toPixels(x, y);
    if (m_layer == Layer::Top) {
        // A lamp drawn again in another colour leaves no fringe of the old one.
        p.setCompositionMode(QPainter::CompositionMode_Clear);
        p.setPen(Qt::NoPen);
        p.setBrush(Qt::black);
        p.drawEllipse(at, r + 1, r + 1);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    p.drawEllipse(at, r, r);
    touched(QRectF(at - QPointF(r, r), QSizeF(2 * r, 2 * r)), 2);
}

void ImageSurface::text(float x, float y, const std::string& s, const TextStyle& style) {
    flushPolyline();
    QPainter& p = painter(drawTarget());
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
    flushPolyline();
    QPainter& p = painter(drawTarget());
    const QRectF area = QRectF(toPixels(x, y), toPixels(x + width, y + height)).normalized();
    p.fillRect(area, toQColor(colour));
    touched(area);
}

void ImageSurface::wipe(float x, float y, float width, float height, Colour colour) {
    if (!m_layer) {
        fillRect(x, y, width, height, colour);
        return;
    }
    flushPolyline();
    const QRect area =
        QRectF(toPixels(x, y), toPixels(x + width, y + height)).normalized().toAlignedRect() &
        QRect(QPoint(0, 0), m_size);
    QPainter& p = painter(TopImage);
    p.save();
    p.setCompositionMode(QPainter::CompositionMode_Clear);
    p.fillRect(area, Qt::transparent);
    p.restore();
    m_topArea -= area;
    changed(area);
}

qreal ImageSurface::pointsForPixels(qreal pixels) const {
    return pixels * 72.0 / std::max(1, m_image.logicalDpiY());
}

}  // namespace lv
