#pragma once
#include <QWidget>
#include <functional>
#include <optional>

#include "display/qt_image_surface.h"

namespace lv {

// A picture area on screen: the model draws into the image surface whenever
// it likes, the widget only blits it. A new size needs a new image, and the
// image is then blank, so the owner is called back to draw it afresh.
class PanelWidget : public QWidget {
    Q_OBJECT
public:
    explicit PanelWidget(QWidget* parent = nullptr);

    ImageSurface& surface() { return m_surface; }
    // Called after every change of size, with the surface already resized.
    void setRebuild(std::function<void()> rebuild) { m_rebuild = std::move(rebuild); }

    // Width over height to keep the picture at; 0 fills the whole widget. The
    // dial's artwork mixes round circles with stretched coordinates, so it only
    // holds together at its own shape; the margins take the background colour.
    void setAspect(double widthOverHeight) { m_aspect = widthOverHeight; }
    // What fills the margins beside a picture held at its shape; without one,
    // the picture's own background colour.
    void setMarginColour(std::optional<Colour> colour) { m_margin = colour; }
    // Repaints what has been drawn on the picture since the last call, before
    // it returns: a moving needle costs its own strip of pixels, not the
    // whole picture, and no turn of the event loop of its own.
    void repaintDirty();
    // Where the picture's top-left corner sits in the widget.
    QPoint imageOrigin() const { return m_origin; }

    QSize sizeHint() const override { return QSize(400, 250); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    ImageSurface m_surface;
    std::function<void()> m_rebuild;
    double m_aspect = 0;
    QPoint m_origin;
    std::optional<Colour> m_margin;
};

}  // namespace lv
