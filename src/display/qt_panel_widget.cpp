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
    const QRect picture(m_origin, m_surface.size());
    const QRegion asked = event->region();
    const QRegion margins = asked.subtracted(picture);
    if (!margins.isEmpty()) {
        const QColor fill = toQColor(m_margin.value_or(m_surface.state().back));
        for (const QRect& r : margins) p.fillRect(r, fill);
    }
    // Only the pieces asked for: most repaints are a needle's band.
    const QRegion area = (asked & picture).translated(-m_origin);
    if (area.isEmpty()) return;
    p.translate(m_origin);
    m_surface.paint(p, area);
}

void PanelWidget::repaintDirty() {
    const QRegion dirty = m_surface.takeDirty();
    if (!dirty.isEmpty()) repaint(dirty.translated(m_origin));
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
