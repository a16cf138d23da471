#include "app/qt_splash.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace lv {

namespace {

constexpr int kWidth = 420;
constexpr int kHeight = 220;
constexpr int kMargin = 28;

const QColor kPanelTop(0x26, 0x2b, 0x30);
const QColor kPanelBottom(0x15, 0x18, 0x1b);
const QColor kEdge(0x44, 0x4b, 0x52);
const QColor kAccent(0xd9, 0xa4, 0x41);  // the needle's amber, also the progress line
const QColor kScale(0x6b, 0x74, 0x7c);
const QColor kTitle(0xee, 0xf1, 0xf3);
const QColor kVersion(0x93, 0x9c, 0xa4);

QLabel* makeLabel(QWidget* parent, const char* name, double points, QFont::Weight weight,
                  const QColor& colour) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    QFont f = label->font();
    f.setPointSizeF(points);
    f.setWeight(weight);
    label->setFont(f);
    QPalette p = label->palette();
    p.setColor(QPalette::WindowText, colour);
    label->setPalette(p);
    return label;
}

}  // namespace

SplashForm::SplashForm(const QString& version, QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint) {
    setObjectName("frmLvSplash");
    setWindowTitle("lv_Analog");
    m_scale = std::max(1.0, logicalDpiY() / 96.0);
    setFixedSize(px(kWidth), px(kHeight));

    m_productName = makeLabel(this, "lblProductName", 26, QFont::DemiBold, kTitle);
    m_productName->setText("lv_Analog");
    m_version = makeLabel(this, "lblVersion", 9, QFont::Normal, kVersion);
    m_version->setText("Version " + version);
    m_progress = makeLabel(this, "lblProgress", 10, QFont::Normal, kAccent);
    // A fixed line height keeps the layout still as the captions come and go.
    m_progress->setFixedHeight(m_progress->fontMetrics().height());

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(px(kMargin), px(26), px(kMargin), px(18));
    column->setSpacing(px(2));
    column->addWidget(m_productName);
    column->addWidget(m_version);
    column->addStretch(1);
    column->addWidget(m_progress);

    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void SplashForm::setProgress(const QString& text) {
    m_progress->setText(text);
    if (layout()) layout()->activate();
    m_progress->repaint();
}

void SplashForm::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);

    QLinearGradient panel(0, 0, 0, height());
    panel.setColorAt(0, kPanelTop);
    panel.setColorAt(1, kPanelBottom);
    p.fillRect(rect(), panel);
    p.fillRect(QRect(0, 0, width(), px(3)), kAccent);
    p.setPen(QPen(kEdge, 1));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));

    // A rule above the progress line.
    const double ruleY = m_progress->geometry().top() - px(10) + 0.5;
    p.setPen(QPen(kEdge, 1));
    p.drawLine(QPointF(px(kMargin), ruleY), QPointF(width() - px(kMargin), ruleY));

    // A small scale with its needle, the instrument in miniature.
    const QPointF centre(width() - px(96), ruleY - px(20));
    const double radius = px(74);
    constexpr double kFrom = 150, kTo = 30;  // degrees, counter-clockwise from 3 o'clock
    const QRectF arcBox(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    p.setPen(QPen(kScale, px(1.5), Qt::SolidLine, Qt::FlatCap));
    p.drawArc(arcBox, qRound(kTo * 16), qRound((kFrom - kTo) * 16));
    auto at = [&](double degrees, double r) {
        const double a = degrees * std::numbers::pi / 180;
        return QPointF(centre.x() + r * std::cos(a), centre.y() - r * std::sin(a));
    };
    for (int i = 0; i <= 12; ++i) {
        const double a = kFrom - i * (kFrom - kTo) / 12;
        const bool major = i % 3 == 0;
        p.setPen(QPen(kScale, px(major ? 1.5 : 1), Qt::SolidLine, Qt::FlatCap));
        p.drawLine(at(a, radius - px(major ? 10 : 6)), at(a, radius));
    }
    p.setPen(QPen(kAccent, px(2), Qt::SolidLine, Qt::RoundCap));
    p.drawLine(at(68, px(6)), at(68, radius - px(4)));
    p.setPen(Qt::NoPen);
    p.setBrush(kAccent);
    p.drawEllipse(centre, px(4.5), px(4.5));
}

}  // namespace lv
