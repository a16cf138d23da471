#pragma once
#include <QDialog>
#include <QPixmap>
#include <functional>

#include "about/about_text.h"
#include "about/qt_system_info.h"
#include "common/prompter.h"

class QLabel;
class QPushButton;

namespace lv {

// The program's icon (a meter dial with its needle) drawn at `side` pixels,
// the same picture as data/lv_Analog.svg.
QPixmap meterIcon(int side);

// frmAbout: the program's version, the meter's firmware, boot loader and
// hardware texts, the disclaimer, "OK" and "System Info...".
class AboutDialog : public QDialog {
    Q_OBJECT
public:
    // Shows the system information; false when it could not.
    using SystemInfoShower = std::function<bool(QWidget* parent)>;

    AboutDialog(AboutInfo info, Prompter& prompter, SystemInfoSources sources = {},
                QWidget* parent = nullptr);

    // Replaces the system information dialog (tests; another platform's viewer).
    void setSystemInfoShower(SystemInfoShower shower) { m_showSystemInfo = std::move(shower); }

    // cmdSysInfo: the system information, or "System Information Is
    // Unavailable At This Time" when it cannot be shown. True when shown.
    bool StartSysInfo();

private:
    QLabel* valueLabel(const char* name, const std::string& text);

    AboutInfo m_info;
    Prompter& m_prompter;
    SystemInfoShower m_showSystemInfo;
};

}  // namespace lv
