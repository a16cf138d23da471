#include "settings/qt_meter_dialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "common/qt_option_group.h"
#include "display/clock_text.h"
#include "settings/dial_types.h"

namespace lv {

MeterDialog::MeterDialog(Settings& settings, QWidget* parent)
    : QDialog(parent), m_settings(settings) {
    setObjectName("frmMeter");
    setWindowTitle("Meter Setup");

    auto* framMeter = new QGroupBox("Dial", this);
    framMeter->setObjectName("framMeter");
    auto* framScale = new QGroupBox("Scale", this);
    framScale->setObjectName("FramScale");
    auto* framClock = new QGroupBox("Clock", this);
    framClock->setObjectName("framClock");
    m_framDate = new QGroupBox("Date", this);
    m_framDate->setObjectName("framDate");

    m_optDial = optionGroup(
        framMeter, "optDial",
        {kDialTypeCaptions[0], kDialTypeCaptions[1], kDialTypeCaptions[2], kDialTypeCaptions[3]});
    m_optScale = optionGroup(framScale, "optScale", {"Traditional", "Simple"});
    m_optClock = optionGroup(framClock, "optClock", {"None", "Analog", "12 Hour", "24 Hour"});
    m_optDateType = optionGroup(m_framDate, "optDateType", {"Hide", "Short", "Long"});
    m_chkClockLeft = new QCheckBox("On Left", framClock);
    m_chkClockLeft->setObjectName("chkClockLeft");
    framClock->layout()->addWidget(m_chkClockLeft);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cmdClose = buttons->addButton("Close", QDialogButtonBox::RejectRole);
    cmdClose->setObjectName("cmdClose");

    auto* grid = new QGridLayout(this);
    grid->addWidget(framMeter, 0, 0);
    grid->addWidget(framClock, 0, 1);
    grid->addWidget(framScale, 1, 0);
    grid->addWidget(m_framDate, 1, 1);
    grid->addWidget(buttons, 2, 0, 1, 2);
    grid->setSizeConstraint(QLayout::SetFixedSize);

    // Clicks only: loading sets the buttons without clicking them, so it
    // writes nothing.
    connect(m_optDial, &QButtonGroup::idClicked, this, [this](int index) {
        m_settings.DialType = index;
        emit settingsChanged();
    });
    connect(m_optScale, &QButtonGroup::idClicked, this, [this](int index) {
        m_settings.ScaleType = index;
        emit settingsChanged();
    });
    connect(m_optClock, &QButtonGroup::idClicked, this, [this](int index) {
        m_settings.ClockType = index;
        enableDate();
        emit settingsChanged();
    });
    connect(m_optDateType, &QButtonGroup::idClicked, this, [this](int index) {
        m_settings.DateType = index;
        emit settingsChanged();
    });
    connect(m_chkClockLeft, &QCheckBox::clicked, this, [this](bool checked) {
        m_settings.ClockLeft = checked;
        emit settingsChanged();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    load();
}

QButtonGroup* MeterDialog::optionGroup(QGroupBox* frame, const char* name,
                                       std::initializer_list<const char*> captions) {
    auto* group = new QButtonGroup(frame);
    auto* column = new QVBoxLayout(frame);
    int index = 0;
    for (const char* caption : captions) addOption(group, column, name, caption, index++);
    return group;
}

void MeterDialog::load() {
    selectOption(m_optDial, m_settings.DialType);
    selectOption(m_optScale, m_settings.ScaleType);
    selectOption(m_optClock, m_settings.ClockType);
    selectOption(m_optDateType, m_settings.DateType);
    m_chkClockLeft->setChecked(m_settings.ClockLeft);
    enableDate();
}

void MeterDialog::showEvent(QShowEvent* event) {
    // The settings may have been replaced since the dialog last showed them
    // (Load Settings).
    load();
    QDialog::showEvent(event);
}

void MeterDialog::enableDate() {
    // Only a digital clock has room for a date under it.
    const std::int32_t clock = m_settings.ClockType;
    m_framDate->setEnabled(clock == kClock12Hour || clock == kClock24Hour);
}

}  // namespace lv
