#include "about/qt_about_dialog.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>
#include <exception>
#include <numbers>

namespace lv {

namespace {

// The icon's geometry on a 64-unit square, as in data/lv_Analog.svg.
constexpr double kIconUnits = 64.0;
constexpr QPointF kPivot{32.0, 55.0};
constexpr double kFanRadius = 38.0, kHubRadius = 16.0, kScaleRadius = 33.0;
constexpr double kFanFrom = 28.89, kFanTo = 151.11;     // degrees, anticlockwise from 3 o'clock
constexpr double kScaleFrom = 35.0, kScaleStep = 11.0;  // eleven ticks to 145 degrees
constexpr double kNeedleAngle = 62.0, kLampAngle = 103.75;
const QColor kPanel(0x2c, 0xa9, 0x99), kScale(0x00, 0x80, 0xc0), kNeedle(0xe0, 0x00, 0x00),
    kLamp(0x00, 0xc0, 0x00);

QPointF onDial(double degrees, double radius) {
    const double a = degrees * std::numbers::pi / 180.0;
    return {kPivot.x() + radius * std::cos(a), kPivot.y() - radius * std::sin(a)};
}

QRectF circle(double radius) {
    return {kPivot.x() - radius, kPivot.y() - radius, 2 * radius, 2 * radius};
}

constexpr int kIconSide = 72;
constexpr int kDisclaimerWidth = 420;

}  // namespace

QPixmap meterIcon(int side) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(side / kIconUnits, side / kIconUnits);

    QPainterPath tile;
    tile.addRoundedRect(QRectF(2, 2, 60, 60), 11, 11);
    p.setClipPath(tile);
    p.fillRect(QRectF(0, 0, kIconUnits, kIconUnits), kPanel);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawPie(circle(kFanRadius), qRound(kFanFrom * 16), qRound((kFanTo - kFanFrom) * 16));
    p.setBrush(kPanel);
    p.drawEllipse(circle(kHubRadius));
    p.setClipping(false);

    QPen scale(kScale, 1.8, Qt::SolidLine, Qt::RoundCap);
    p.setPen(scale);
    p.setBrush(Qt::NoBrush);
    const double scaleTo = kScaleFrom + 10 * kScaleStep;
    p.drawArc(circle(kScaleRadius), qRound(kScaleFrom * 16), qRound((scaleTo - kScaleFrom) * 16));
    for (int k = 0; k <= 10; ++k) {
        const double a = kScaleFrom + k * kScaleStep;
        p.drawLine(onDial(a, kScaleRadius), onDial(a, kScaleRadius - (k % 2 == 0 ? 5 : 3)));
    }

    p.setPen(QPen(Qt::white, 0.9));
    p.setBrush(kLamp);
    p.drawEllipse(onDial(kLampAngle, kScaleRadius), 2.6, 2.6);
    p.setPen(QPen(kNeedle, 3.0, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(onDial(kNeedleAngle, 17.0), onDial(kNeedleAngle, 34.5));
    return pixmap;
}

AboutDialog::AboutDialog(AboutInfo info, Prompter& prompter, SystemInfoSources sources,
                         QWidget* parent)
    : QDialog(parent), m_info(std::move(info)), m_prompter(prompter) {
    setObjectName("frmAbout");
    setWindowTitle(QString::fromStdString(aboutCaption()));
    m_showSystemInfo = [sources = std::move(sources), version = m_info.versionText](QWidget* p) {
        SystemInfoDialog dialog(gatherSystemInfo(version, sources), p);
        dialog.exec();
        return true;
    };

    auto* icon = new QLabel(this);
    icon->setObjectName("picIcon");
    const qreal dpr = devicePixelRatioF();
    QPixmap pixmap = meterIcon(qRound(kIconSide * dpr));
    pixmap.setDevicePixelRatio(dpr);
    icon->setPixmap(pixmap);
    icon->setAlignment(Qt::AlignTop);

    auto* title = new QLabel(kProgramTitle, this);
    title->setObjectName("lblTitle");
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    title->setFont(big);
    auto* description = new QLabel("Display and recorder for the lv3 meter", this);
    description->setObjectName("lblDescription");

    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(12);
    const struct {
        const char* caption;
        const char* captionName;
        const char* name;
        const std::string& value;
    } rows[] = {
        {"Software Version:", "lblSoftCaption", "lblSoft", m_info.versionText},
        {"Firmware Version:", "lblFirmCaption", "lblFirm", m_info.firmware},
        {"Boot Loader Version:", "lblBootCaption", "lblBoot", m_info.boot},
        {"Hardware Serial Number:", "lblhardCaption", "lblhard", m_info.hardware},
    };
    int row = 0;
    for (const auto& r : rows) {
        auto* caption = new QLabel(r.caption, this);
        caption->setObjectName(r.captionName);
        grid->addWidget(caption, row, 0);
        grid->addWidget(valueLabel(r.name, r.value), row, 1);
        ++row;
    }
    grid->setColumnStretch(1, 1);
    if (m_info.firmware.empty() && m_info.boot.empty() && m_info.hardware.empty()) {
        auto* noMeter = new QLabel("No meter has answered yet.", this);
        noMeter->setObjectName("lblNoMeter");
        noMeter->setForegroundRole(QPalette::PlaceholderText);
        grid->addWidget(noMeter, row, 0, 1, 2);
    }

    auto* rule = new QFrame(this);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);

    auto* disclaimer = new QLabel(QString::fromStdString(disclaimerText()), this);
    disclaimer->setObjectName("lblDisclaimer");
    disclaimer->setWordWrap(true);
    disclaimer->setMinimumWidth(kDisclaimerWidth);
    QFont small = disclaimer->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    disclaimer->setFont(small);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cmdSysInfo = buttons->addButton("&System Info...", QDialogButtonBox::ActionRole);
    cmdSysInfo->setObjectName("cmdSysInfo");
    cmdSysInfo->setAutoDefault(false);
    QPushButton* cmdOK = buttons->addButton("OK", QDialogButtonBox::AcceptRole);
    cmdOK->setObjectName("cmdOK");
    cmdOK->setDefault(true);
    connect(cmdSysInfo, &QPushButton::clicked, this, [this] { StartSysInfo(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* heading = new QVBoxLayout;
    heading->setSpacing(2);
    heading->addWidget(title);
    heading->addWidget(description);
    heading->addSpacing(14);
    heading->addLayout(grid);
    auto* top = new QHBoxLayout;
    top->setSpacing(18);
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addLayout(heading, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->addLayout(top);
    layout->addSpacing(10);
    layout->addWidget(rule);
    layout->addWidget(disclaimer);
    layout->addSpacing(6);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QLabel* AboutDialog::valueLabel(const char* name, const std::string& text) {
    auto* label = new QLabel(QString::fromStdString(text), this);
    label->setObjectName(name);
    // Versions are read out to whoever helps with a problem: let them be copied.
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

bool AboutDialog::StartSysInfo() {
    bool shown = false;
    try {
        shown = m_showSystemInfo && m_showSystemInfo(this);
    } catch (const std::exception&) {
        shown = false;
    }
    if (!shown) m_prompter.ask(kSystemInfoTitle, kSystemInfoUnavailable, Buttons::Ok, Icon::None);
    return shown;
}

}  // namespace lv
