#pragma once
#include <QDialog>
#include <array>
#include <cstdint>
#include <functional>

#include "calibration/dial_calibration.h"

class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace lv {

class Prompter;
class Pump;
class SerialPort;

// frmScale, "lv Dial Calibration": the operator picks a mark of the meter's
// printed scale, moves the meter's own needle onto it with "+" and "-", and
// uploads the resulting correction table. Construction loads the list and
// talks to the meter at once (scale mode, the first mark); the caller runs
// enterCalibration before and leaveCalibration after.
class ScaleDialog : public QDialog {
    Q_OBJECT
public:
    ScaleDialog(SerialPort& port, Pump& pump, Prompter& prompter,
                std::array<std::int16_t, 12>& DialCalibration, int ScaleType,
                std::function<void(std::int32_t angle)> showNeedle,
                std::function<void()> saveSessionConfig, QWidget* parent = nullptr);

    const DialCalibrator& calibrator() const { return m_model; }
    bool uploading() const { return m_uploading; }

public slots:
    // Escape and EXIT come here too, so every way out asks the same question.
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPushButton* button(const char* name, const QString& caption);
    void buildLayout();
    void refresh();
    bool mayClose();
    void upload();
    void setBusy(bool busy);

    SerialPort& m_port;
    Pump& m_pump;
    Prompter& m_prompter;
    DialCalibrator m_model;
    std::function<void()> m_saveSessionConfig;
    bool m_uploading = false;
    bool m_refreshing = false;
    int m_rowBeforePress = -1;  // the selected line when the mouse went down on the list

    QListWidget* m_lstDial = nullptr;
    QLabel* m_lblMark = nullptr;
    QPushButton* m_cmdCycle = nullptr;
    QPushButton* m_cmdUp = nullptr;
    QPushButton* m_cmdDn = nullptr;
    QPushButton* m_cmdReset = nullptr;
    QPushButton* m_cmdSave = nullptr;
    QPushButton* m_cmdExit = nullptr;
    QPushButton* m_command2 = nullptr;
    QProgressBar* m_pbUpgrade = nullptr;
};

}  // namespace lv
