#include "recording/qt_record_panel.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "display/qt_image_surface.h"

namespace lv {

namespace {

// The strip along the top edge that shows how much of a file has loaded, as a
// share of the bar's height.
constexpr double kLoadStripShare = 0.3;
constexpr int kFiftieths = 50;
// Room to hit a button and read a label at a glance, in device-independent
// pixels (Qt scales them on HiDPI screens); a larger font grows the rows.
constexpr int kButtonHeight = 32;
constexpr int kIconSide = 18;
constexpr int kBarHeight = 20;

// An icon drawn at the sizes a 1x, 2x and 3x screen ask for, so it stays
// sharp on HiDPI screens without a bitmap file.
QIcon drawnIcon(const std::function<void(QPainter&, const QRectF&)>& draw) {
    QIcon icon;
    for (const int side : {16, 32, 48}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        draw(p, QRectF(0, 0, side, side));
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

QIcon recordIcon() {
    return drawnIcon([](QPainter& p, const QRectF& r) {
        const double inset = r.width() * 0.2;
        p.setPen(QPen(QColor(120, 0, 0), r.width() / 16.0));
        p.setBrush(QColor(215, 30, 30));
        p.drawEllipse(r.adjusted(inset, inset, -inset, -inset));
    });
}

// A cog: a toothed ring with a hole, in the text colour of the style.
QIcon settingsIcon(const QColor& colour) {
    return drawnIcon([colour](QPainter& p, const QRectF& r) {
        constexpr int kTeeth = 8;
        const QPointF c = r.center();
        const double outer = r.width() * 0.46, inner = r.width() * 0.34, hole = r.width() * 0.14;
        QPainterPath path;
        for (int i = 0; i < kTeeth * 4; ++i) {
            // Each tooth: rise, top, fall, valley; a quarter of the pitch each.
            const double angle = (i - 0.5) * std::numbers::pi / (kTeeth * 2);
            const double radius = (i % 4 == 0 || i % 4 == 1) ? outer : inner;
            const QPointF pt(c.x() + radius * std::cos(angle), c.y() + radius * std::sin(angle));
            if (i == 0)
                path.moveTo(pt);
            else
                path.lineTo(pt);
        }
        path.closeSubpath();
        path.addEllipse(c, hole, hole);
        path.setFillRule(Qt::OddEvenFill);
        p.setPen(Qt::NoPen);
        p.setBrush(colour);
        p.drawPath(path);
    });
}

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

// ---------------------------------------------------------------- the bar

FilePositionBar::FilePositionBar(QWidget* parent) : QWidget(parent) {
    setObjectName("picFilePosition");
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

QSize FilePositionBar::sizeHint() const {
    return {240, std::max(kBarHeight, fontMetrics().height())};
}

QSize FilePositionBar::minimumSizeHint() const {
    return {60, sizeHint().height()};
}

void FilePositionBar::setLoadProgress(int fiftieths) {
    m_fiftieths = std::clamp(fiftieths, 0, kFiftieths);
    update();
}

void FilePositionBar::setPosition(double playFraction, double endFraction) {
    m_play = std::clamp(playFraction, 0.0, 1.0);
    m_end = std::clamp(endFraction, 0.0, 1.0);
    update();
}

double FilePositionBar::fractionAt(double x) const {
    // The first and the last pixel are the two ends, so a click reaches both.
    const double span = width() - 1;
    return span > 0 ? std::clamp(x / span, 0.0, 1.0) : 0.0;
}

double FilePositionBar::xAt(double fraction) const {
    return fraction * (width() - 1) + 0.5;
}

void FilePositionBar::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    const QColor base = palette().color(group, QPalette::Base);
    const QColor frame = palette().color(group, QPalette::Mid);
    const QColor highlight = palette().color(group, QPalette::Highlight);
    const QColor strip = palette().color(group, QPalette::Dark);

    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    p.setPen(QPen(frame, 1));
    p.setBrush(base);
    p.drawRoundedRect(box, 3, 3);

    // What Play covers: from the start to the play end.
    QColor range = highlight;
    range.setAlpha(50);
    p.setPen(Qt::NoPen);
    p.setBrush(range);
    p.drawRect(
        QRectF(box.left() + 1, box.top() + 1, xAt(m_end) - box.left() - 1, box.height() - 2));

    // Loading, filled from the left in fiftieths, hanging from the top edge.
    if (m_fiftieths > 0) {
        p.setBrush(strip);
        p.drawRect(QRectF(box.left() + 1, box.top() + 1,
                          (box.width() - 2) * m_fiftieths / kFiftieths,
                          std::max(2.0, box.height() * kLoadStripShare)));
    }

    // The play end: a bar across the full height.
    const double endX = xAt(m_end);
    p.setPen(QPen(QColor(190, 30, 30), 2));
    p.drawLine(QPointF(endX, box.top() + 1), QPointF(endX, box.bottom() - 1));

    // The play marker: a line with a small pointer on top.
    const double playX = xAt(m_play);
    p.setPen(QPen(highlight.darker(130), 2));
    p.drawLine(QPointF(playX, box.top() + 1), QPointF(playX, box.bottom() - 1));
    const double tip = std::min(5.0, box.height() / 3);
    p.setPen(Qt::NoPen);
    p.setBrush(highlight.darker(130));
    p.drawPolygon(QPolygonF({QPointF(playX - tip, box.top()), QPointF(playX + tip, box.top()),
                             QPointF(playX, box.top() + tip)}));
}

void FilePositionBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    emit pressed(fractionAt(event->position().x()));
}

void FilePositionBar::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return QWidget::mouseMoveEvent(event);
    emit moved(fractionAt(event->position().x()));
}

void FilePositionBar::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QWidget::mouseReleaseEvent(event);
    emit released(fractionAt(event->position().x()));
}

// ---------------------------------------------------------- elided label

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(QStringLiteral("Wm…")),
            QLabel::minimumSizeHint().height()};
}

QSize ElidedLabel::sizeHint() const {
    const QSize full = QLabel::sizeHint();
    return {std::min(full.width(), fontMetrics().averageCharWidth() * 28), full.height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QRect area = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width());
    style()->drawItemText(&p, area, static_cast<int>(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}

// ---------------------------------------------------------------- the panel

RecordPanel::RecordPanel(QWidget* parent) : QWidget(parent) {
    setObjectName("picRecord");
    // As tall as its two rows need at the present font, as wide as it is given.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    QStyle* st = style();
    m_cmdRecord =
        addButton("cmdRecord", "Record", recordIcon(), "Record (R)", &RecordPanel::recordClicked);
    m_cmdStop = addButton("cmdStop", "Stop", st->standardIcon(QStyle::SP_MediaStop), "Stop (S)",
                          &RecordPanel::stopClicked);
    m_cmdPlay = addButton("cmdPlay", "Play", st->standardIcon(QStyle::SP_MediaPlay),
                          "Play or pause (P)", &RecordPanel::playClicked);
    m_cmdRev = addButton("cmdRev", {}, st->standardIcon(QStyle::SP_MediaSeekBackward),
                         "Skip back (,)", &RecordPanel::revClicked);
    m_cmdFwd = addButton("cmdFwd", {}, st->standardIcon(QStyle::SP_MediaSeekForward),
                         "Skip forward (.)", &RecordPanel::fwdClicked);
    m_cmdLoop = addButton("cmdLoop", "Single", st->standardIcon(QStyle::SP_BrowserReload),
                          "Play once or in a loop", &RecordPanel::loopClicked);
    m_cmdSave = addButton("cmdSave", "Save As", st->standardIcon(QStyle::SP_DialogSaveButton),
                          "Save the recording", &RecordPanel::saveClicked);
    m_cmdLoad =
        addButton("cmdLoad", "Load", st->standardIcon(QStyle::SP_DialogOpenButton),
                  "Load a recording (O)\nRight click: recent files (L)", &RecordPanel::loadClicked);
    m_cmdRecSettings =
        addButton("cmdRecSettings", {}, settingsIcon(palette().color(QPalette::ButtonText)),
                  "Recording Settings", &RecordPanel::settingsClicked);

    m_lblPlayTime = addLabel(new QLabel("0:00", this), "lblPlayTime", "Time played");
    QFont timeFont = m_lblPlayTime->font();
    timeFont.setBold(true);
    timeFont.setPointSizeF(timeFont.pointSizeF() * 1.3);
    m_lblPlayTime->setFont(timeFont);
    auto* slash = new QLabel("/", this);
    slash->setForegroundRole(QPalette::PlaceholderText);
    m_lblTotalTime = addLabel(new QLabel("0:00", this), "lblTotalTime", "Length of the recording");
    m_lblTag = addLabel(new QLabel(this), "lblTag", "Tags set with the T key");
    m_lblTag->setVisible(false);

    m_lblRecMode = addLabel(new QLabel(this), "lblRecMode");
    QFont modeFont = m_lblRecMode->font();
    modeFont.setBold(true);
    m_lblRecMode->setFont(modeFont);
    // The mode as a tag in the highlight colour, so it reads as a state rather
    // than as a caption of the name beside it.
    m_lblRecMode->setAutoFillBackground(true);
    m_lblRecMode->setBackgroundRole(QPalette::Highlight);
    m_lblRecMode->setForegroundRole(QPalette::HighlightedText);
    m_lblRecMode->setContentsMargins(6, 1, 6, 1);
    m_lblNaming = addLabel(new QLabel(this), "lblNaming", "Names of new recordings");
    m_lblLoadedFile = addLabel(new ElidedLabel("No File Loaded", this), "lblLoadedFile");
    m_lblLoadedFile->setToolTip("No File Loaded");
    m_lblLoadedFile->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_lblLoadedFile->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    m_lblLoadedFile->installEventFilter(this);
    m_cmdLoad->installEventFilter(this);

    m_picFilePosition = new FilePositionBar(this);
    connect(m_picFilePosition, &FilePositionBar::pressed, this, &RecordPanel::positionPressed);
    connect(m_picFilePosition, &FilePositionBar::moved, this, &RecordPanel::positionMoved);
    connect(m_picFilePosition, &FilePositionBar::released, this, &RecordPanel::positionReleased);

    auto* transport = new QHBoxLayout;
    transport->setSpacing(5);
    for (QWidget* w : {m_cmdRecord, m_cmdStop, m_cmdPlay, m_cmdRev, m_cmdFwd, m_cmdLoop})
        transport->addWidget(w);
    transport->addSpacing(8);
    transport->addWidget(m_lblPlayTime);
    transport->addWidget(slash);
    transport->addWidget(m_lblTotalTime);
    transport->addSpacing(8);
    transport->addWidget(m_lblTag);
    transport->addStretch(1);
    for (QWidget* w : {m_cmdSave, m_cmdLoad, m_cmdRecSettings}) transport->addWidget(w);

    auto* file = new QHBoxLayout;
    file->setSpacing(8);
    file->addWidget(m_lblRecMode);
    file->addWidget(m_lblNaming);
    file->addWidget(m_picFilePosition, 1);
    file->addWidget(m_lblLoadedFile);

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(8, 7, 8, 7);
    rows->setSpacing(6);
    rows->addLayout(transport);
    rows->addLayout(file);
}

QPushButton* RecordPanel::addButton(const char* name, const QString& caption, const QIcon& icon,
                                    const QString& tip, void (RecordPanel::*clicked)()) {
    auto* button = new QPushButton(icon, caption, this);
    button->setObjectName(name);
    button->setToolTip(tip);
    // The window takes the keyboard shortcuts; a click must not move the
    // focus to a button that would swallow the space bar.
    button->setFocusPolicy(Qt::NoFocus);
    button->setAutoDefault(false);
    button->setIconSize(QSize(kIconSide, kIconSide));
    button->setMinimumHeight(std::max(kButtonHeight, button->sizeHint().height()));
    if (!caption.isEmpty()) {
        // The style's minimum width for a captioned button is wider than these
        // short captions need; let a narrow window shrink them down to their
        // contents instead of pushing the panel wider than the window.
        const int text = button->fontMetrics().horizontalAdvance(caption);
        button->setMinimumWidth(kIconSide + text + 16);
    }
    if (caption.isEmpty()) button->setAccessibleName(tip);
    connect(button, &QPushButton::clicked, this, clicked);
    return button;
}

QLabel* RecordPanel::addLabel(QLabel* label, const char* name, const QString& tip) {
    label->setObjectName(name);
    if (!tip.isEmpty()) label->setToolTip(tip);
    return label;
}

bool RecordPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress &&
        static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
        // A disabled control sees mouse events only through this filter.
        if (watched == m_cmdLoad && m_cmdLoad->isEnabled()) {
            emit loadListRequested();
            return true;
        }
        if (watched == m_lblLoadedFile && m_lblLoadedFile->isEnabled()) {
            emit loadedFileSaveAsRequested();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

QPoint RecordPanel::loadListAnchor() const {
    return m_cmdLoad->mapToGlobal(QPoint(0, m_cmdLoad->height()));
}

void RecordPanel::setLoadedFile(const std::string& caption, const std::string& tooltip) {
    m_lblLoadedFile->setText(qs(caption));
    m_lblLoadedFile->setToolTip(qs(tooltip));
}

void RecordPanel::setMode(const std::string& caption, const std::string& tooltip) {
    m_lblRecMode->setText(qs(caption));
    m_lblRecMode->setToolTip(qs(tooltip));
}

void RecordPanel::setNaming(const std::string& pattern) {
    m_lblNaming->setText(qs(pattern));
}

void RecordPanel::setSaveCaption(const std::string& caption) {
    m_cmdSave->setText(qs(caption));
}

void RecordPanel::setPlayTime(const std::string& text, Colour colour) {
    m_lblPlayTime->setText(qs(text));
    QPalette pal = m_lblPlayTime->palette();
    pal.setColor(QPalette::WindowText, toQColor(colour));
    m_lblPlayTime->setPalette(pal);
}

void RecordPanel::setTotalTime(const std::string& text) {
    m_lblTotalTime->setText(qs(text));
}

void RecordPanel::setTag(const std::string& text) {
    m_lblTag->setText(qs(text));
}

void RecordPanel::setTagVisible(bool visible) {
    m_lblTag->setVisible(visible);
}

void RecordPanel::setEnabled(const Enabled& enabled) {
    m_enabled = enabled;
    m_cmdRecord->setEnabled(enabled.record);
    m_cmdStop->setEnabled(enabled.stop);
    m_cmdPlay->setEnabled(enabled.play);
    m_cmdLoop->setEnabled(enabled.loop);
    m_cmdFwd->setEnabled(enabled.fwd);
    m_cmdRev->setEnabled(enabled.rev);
    m_cmdSave->setEnabled(enabled.save);
    m_cmdLoad->setEnabled(enabled.load);
    m_cmdRecSettings->setEnabled(enabled.settings);
    m_picFilePosition->setEnabled(enabled.positionBar);
}

void RecordPanel::setLoopCaption(const std::string& caption) {
    m_cmdLoop->setText(qs(caption));
}

void RecordPanel::setLoadProgress(int fiftieths) {
    m_picFilePosition->setLoadProgress(fiftieths);
}

void RecordPanel::setPosition(double playFraction, double endFraction) {
    m_picFilePosition->setPosition(playFraction, endFraction);
}

void RecordPanel::setPanelWord(const std::string& word) {
    emit panelWordChanged(qs(word));
}

}  // namespace lv
