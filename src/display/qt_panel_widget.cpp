#include "display/qt_panel_widget.h"

#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

namespace lv {

PanelWidget::PanelWidget(QWidget* parent) : QWidget(parent), m_surface(size(), 1.0) {
    // Every pixel comes from the image: nothing for Qt to clear first.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMinimumSize(160, 60);
}

void PanelWidget::paintEvent(QPaintEvent* event) {
    QPainter p(this);
    const QImage& image = m_surface.image();
    const QRect picture(m_origin, image.deviceIndependentSize().toSize());
    if (!picture.contains(event->rect())) {
        const QRegion margins = QRegion(event->rect()).subtracted(picture);
        const QColor fill = toQColor(m_margin.value_or(m_surface.state().back));
        for (const QRect& r : margins) p.fillRect(r, fill);
    }
    // Only the part asked for: most repaints are one needle's strip.
    const QRect area = event->rect() & picture;
    if (area.isEmpty()) return;
    const qreal ratio = image.devicePixelRatio();
    const QRectF source(QPointF(area.topLeft() - m_origin) * ratio, QSizeF(area.size()) * ratio);
    p.drawImage(QRectF(area), image, source);
}

void PanelWidget::updateDirty() {
    const QRect dirty = m_surface.takeDirty();
    if (!dirty.isEmpty()) update(dirty.translated(m_origin));
}

void PanelWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    QSize picture = event->size();
    if (m_aspect > 0) {
        const QSize byWidth(picture.width(), qRound(picture.width() / m_aspect));
        const QSize byHeight(qRound(picture.height() * m_aspect), picture.height());
        picture = byWidth.height() <= picture.height() ? byWidth : byHeight;
    }
    m_origin = QPoint((event->size().width() - picture.width()) / 2,
                      (event->size().height() - picture.height()) / 2);
    m_surface.resize(picture, devicePixelRatioF());
    if (m_rebuild) m_rebuild();
    update();
}

}  // namespace lv
