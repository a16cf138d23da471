#pragma once
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QRegion>
#include <array>
#include <memory>

#include "display/straight_lines.h"
#include "display/strip_area.h"
#include "display/surface.h"

namespace lv {

// A picture area painted into an image, antialiased; the widget blits it.
// Logical units follow the user scale; line widths are pixels at the image's
// device pixel ratio, so a HiDPI window gets the same look, only sharper.
//
// Once told about layers it keeps three: the face (drawn once per rebuild),
// the needle (one line, remembered rather than painted in), and the top
// (readouts, lamp, hub ring). The screen is painted from them, only where
// something changed; painting the needle out shows the face again, whatever
// the face looks like there. Without layers (the chart) everything goes
// straight onto the one image.
class ImageSurface : public Surface {
public:
    // `size` in device-independent pixels.
    explicit ImageSurface(QSize size = QSize(400, 300), qreal devicePixelRatio = 1.0);
    ~ImageSurface() override;

    void resize(QSize size, qreal devicePixelRatio = 1.0);
    // The composed picture, brought up to date first.
    const QImage& image() const;

    int widthPixels() const override { return m_size.width(); }
    // In device-independent pixels.
    QSize size() const { return m_size; }
    void clear() override;
    void circle(float x, float y, float radius, Colour outline) override;
    void arc(float x, float y, float radius, Colour outline, float start, float end) override;
    void line(float x1, float y1, float x2, float y2,
              std::optional<Colour> colour = std::nullopt) override;
    void point(float x, float y, std::optional<Colour> colour = std::nullopt) override;
    void text(float x, float y, const std::string& s, const TextStyle& style) override;
    void beginLayer(Layer layer, std::optional<Opening> opening = std::nullopt) override;

    // Not part of the seam: a filled rectangle, top-left corner at (x, y),
    // sizes in logical units.
    void fillRect(float x, float y, float width, float height, Colour colour);
    // Takes away what lies above the needle in a rectangle, so that the face
    // (and the needle) show there again; without layers, fills it in `colour`.
    void wipe(float x, float y, float width, float height, Colour colour);
    // Needle lines in this colour paint the needle out.
    void setEraseColour(std::optional<Colour> colour) { m_erase = colour; }
    // Points that give text this many device-independent pixels on this image.
    qreal pointsForPixels(qreal pixels) const;

    // Logical point to device-independent pixels, for tests and hit tests.
    QPointF toPixels(float x, float y) const;

    // What has changed since the last call, in device-independent pixels:
    // the widget repaints that much and no more. Without layers a wipe counts
    // only where something had been drawn since the last one, so a chart
    // redrawn whole costs the screen the strip along its trace.
    QRegion takeDirty();
    // Paints the picture's `region` (device-independent pixels) with `p`. With
    // layers it is composed straight onto the painter: the screen's copy is
    // the only one made of it.
    void paint(QPainter& p, const QRegion& region) const;
    // The device text is measured for, without composing the picture.
    const QPaintDevice* metricsDevice() const { return &m_image; }
    // The face layer alone (a null image before any layer was used).
    const QImage& face() const { return m_face; }
    // Where the needle shown lies, pen included; empty when none is shown.
    QRegion needleArea() const { return m_needle ? m_needle->area : QRegion(); }

private:
    enum Target { Shown, FaceImage, TopImage, kTargets };
    struct NeedleShown {
        QPointF a, b;
        QPen pen;
        QRegion area;
        bool clip = false;  // reaches beyond the opening: the surround goes over it
    };

    QPainter& painter(Target t) const;
    QImage& target(Target t) const;
    // Where the primitives go now.
    Target drawTarget() const;
    QPen pen(Colour c) const;
    void applyFill(QPainter& p, bool solid) const;
    qreal radiusPixels(float radius) const;
    // Adds a drawn area, grown by the pen's reach and the antialiased fringe.
    void touched(const QRectF& area, qreal penWidth = 0);
    // Marks an area for the next repaint; with layers, the composed image is
    // then out of date as well.
    void changed(const QRegion& area);
    bool layered() const { return !m_face.isNull(); }
    QRect grown(const QRectF& area, qreal penWidth) const;
    void ensureLayers();
    // Whether the strips cover half the picture or more: then it is cheaper
    // handled as one piece.
    bool mostOf(const StripArea& area) const;
    // Fills the strips' rectangles of the shown image (32-bit, opaque).
    void fillStrips(const StripArea& area, const QColor& colour);
    void fillArea(const QRect& area, const QColor& colour);
    void endPainters();
    // A needle-layer primitive: the erase colour takes the needle away, any
    // other colour (a line) becomes the needle.
    bool needleErased(Colour c);
    void showNeedle(QPointF a, QPointF b, Colour c);
    // Trace segments that join end to start in one pen go out as one polyline.
    void flushPolyline() const;
    void straightLine(QPointF a, QPointF b, const QPen& linePen) const;
    // The face with the opening cut out of it, made when a needle first
    // reaches beyond the opening.
    void surroundFor(QPointF centre, qreal radius);
    // The layers' pixels in `region`, onto `p`.
    void paintLayers(QPainter& p, const QRegion& region) const;
    // Brings the image shown up to date with the layers.
    void compose() const;

    QSize m_size;
    mutable QImage m_image;
    mutable QImage m_face;
    mutable QImage m_top;
    QImage m_surround;
    QRectF m_surroundAt;  // centre and radius it was cut for
    mutable std::array<std::unique_ptr<QPainter>, kTargets> m_painters;
    std::optional<Layer> m_layer;
    std::optional<Opening> m_opening;
    std::optional<NeedleShown> m_needle;
    std::optional<Colour> m_erase;
    QRegion m_topArea;              // where the top layer has anything
    mutable bool m_stale = false;  // the layers changed since the image was composed
    QRegion m_dirty;
    // Without layers: where anything but the background lies, and what
    // changed since the last repaint, strip by strip.
    StripArea m_drawn;
    StripArea m_changedStrips;
    StraightLines m_lines;  // ... and a grid's lines, apart
    Colour m_wipedWith = 0;  // the background of the last wipe
    mutable QPolygonF m_poly;  // segments waiting to be drawn ...
    mutable QPen m_polyPen;    // ... in this pen
};

// 0x00BBGGRR to a Qt colour.
inline QColor toQColor(Colour c) {
    return QColor(redOf(c), greenOf(c), blueOf(c));
}

}  // namespace lv
