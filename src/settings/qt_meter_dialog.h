#pragma once
#include <QDialog>
#include <cstdint>
#include <initializer_list>

#include "settings/settings.h"

class QButtonGroup;
class QCheckBox;
class QGroupBox;

namespace lv {

// frmMeter: the dial, scale, clock and date choices. Every click writes its
// setting straight away and says so, so the window behind can redraw while the
// dialog is still open.
class MeterDialog : public QDialog {
    Q_OBJECT
public:
    explicit MeterDialog(Settings& settings, QWidget* parent = nullptr);

    // Shows the settings as they are now (also done each time the dialog is
    // shown); writes nothing.
    void load();

signals:
    void settingsChanged();

protected:
    void showEvent(QShowEvent* event) override;

private:
    // A frame holding an option group: one radio button per caption, all named
    // `name` and told apart by their "Index" property, as a control array.
    static QButtonGroup* optionGroup(QGroupBox* frame, const char* name,
                                     std::initializer_list<const char*> captions);
    void enableDate();

    Settings& m_settings;
    QGroupBox* m_framDate = nullptr;
    QButtonGroup* m_optDial = nullptr;
    QButtonGroup* m_optScale = nullptr;
    QButtonGroup* m_optClock = nullptr;
    QButtonGroup* m_optDateType = nullptr;
    QCheckBox* m_chkClockLeft = nullptr;
};

}  // namespace lv
