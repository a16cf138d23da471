// The main window's settings commands that open a dialog: Load Settings,
// Save Settings As, the meter setup and the dial calibration.
#include <QFileDialog>
#include <utility>

#include "app/qt_main_window.h"
#include "calibration/qt_scale_dialog.h"
#include "calibration/upload.h"
#include "display/needle_drawing.h"
#include "settings/qt_meter_dialog.h"

namespace lv {

namespace {
const QString kIniFilter = "ini file (*.ini)";
}  // namespace

void MainWindow::loadSettingsFile() {
    const QString current = QString::fromStdString(m_store.SettingsFilePath);
    const QString chosen =
        QFileDialog::getOpenFileName(this, "Load Settings File", current, kIniFilter);
    // Cancelling leaves the preset name, so the file in use is read again.
    m_store.SettingsFilePath = chosen.isEmpty() ? current.toStdString() : chosen.toStdString();
    LoadSettings(m_store);
    m_menus->syncFromSettings();
    relayout();
}

void MainWindow::saveSettingsFileAs() {
    QFileDialog dialog(this, "Save Settings As", QString::fromStdString(m_store.SettingsFilePath),
                       kIniFilter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDefaultSuffix("ini");
    dialog.selectFile(QString::fromStdString(m_store.SettingsFilePath));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    SaveSettingsAs(m_store, dialog.selectedFiles().constFirst().toStdString());
}

void MainWindow::meterSetup() {
    MeterDialog dialog(m_store.values, this);
    // Each choice shows on the dial at once, behind the dialog.
    connect(&dialog, &MeterDialog::settingsChanged, this, &MainWindow::relayout);
    dialog.exec();
}

void MainWindow::dialCalibration() {
    SerialPort& port = m_session.port();
    // The calibration talks to the meter's own dial: without a meter there
    // is nothing to calibrate.
    if (!port.isOpen() || m_session.busy()) {
        m_prompter.ask("Dial Calibration",
                       "Dial Calibration needs a meter. Connect the meter (Connection, "
                       "Connect) and try again.",
                       Buttons::Ok, Icon::Information);
        return;
    }
    Pump& pump = m_session.pump();
    enterCalibration(port, pump);
    m_calibrating = true;
    {
        ScaleDialog dialog(
            port, pump, m_prompter, m_sessionConfig.DialCalibration, m_store.values.ScaleType,
            [this](std::int32_t angle) {
                Update_Needle(m_ctx, angle);
                m_panel->repaintDirty();
            },
            [this] {
                if (const auto error = writeSessionConfig())
                    m_prompter.ask(error->title, error->text, Buttons::Ok, Icon::Critical,
                                   {.informative = error->detail});
            },
            this);
        dialog.exec();
    }
    // An exit asked for meanwhile has taken the meter out of it already.
    if (!std::exchange(m_calibrating, false)) return;
    leaveCalibration(port, pump);
    relayout();
}

}  // namespace lv
