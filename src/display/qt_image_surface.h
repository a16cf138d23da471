#pragma once
#include <QImage>
#include <QPainter>
#include <memory>

#include "display/surface.h"

namespace lv {

// A picture area painted into an image, antialiased; the widget blits it.
// Logical units follow the user scale; line widths are pixels at the image's
// device pixel ratio, so a HiDPI window gets the same look, only sharper.
class ImageSurface : public Surface {
public:
    // `size` in device-independent pixels.
    explicit ImageSurface(QSize size = QSize(400, 300), qreal devicePixelRatio = 1.0);

    void resize(QSize size, qreal devicePixelRatio = 1.0);
    const QImage& image() const { return m_image; }

    int widthPixels() const override { return m_size.width(); }
    void clear() override;
    void circle(float x, float y, float radius, Colour outline) override;
    void arc(float x, float y, float radius, Colour outline, float start, float end) override;
    void line(float x1, float y1, float x2, float y2,
              std::optional<Colour> colour = std::nullopt) override;
    void point(float x, float y, std::optional<Colour> colour = std::nullopt) override;
    void text(float x, float y, const std::string& s, const TextStyle& style) override;

    // Not part of the seam: the window's readouts wipe their old text with it,
    // as the original printed spaces over it. Top-left corner at (x, y), sizes
    // in logical units.
    void fillRect(float x, float y, float width, float height, Colour colour);
    // Lines in this colour paint something out (the needle is erased by
    // overdrawing it in the dial colour). Antialiasing leaves a faint fringe of
    // the old line under a same-width line, so these go a pixel wider each side.
    void setEraseColour(std::optional<Colour> colour) { m_erase = colour; }
    // Points that give text this many device-independent pixels on this image.
    qreal pointsForPixels(qreal pixels) const;

    // Logical point to device-independent pixels, for tests and hit tests.
    QPointF toPixels(float x, float y) const;

    // What has been drawn on since the last call, in device-independent
    // pixels: the widget repaints that much and no more.
    QRect takeDirty();

private:
    QPainter& painter();
    QPen pen(Colour c) const;
    void applyFill(bool solid);
    qreal radiusPixels(float radius) const;
    // Adds a drawn area, grown by the pen's reach and the antialiased fringe.
    void touched(const QRectF& area, qreal penWidth = 0);

    QSize m_size;
    QImage m_image;
    std::unique_ptr<QPainter> m_painter;
    std::optional<Colour> m_erase;
    QRect m_dirty;
};

// 0x00BBGGRR to a Qt colour.
inline QColor toQColor(Colour c) {
    return QColor(redOf(c), greenOf(c), blueOf(c));
}

}  // namespace lv
