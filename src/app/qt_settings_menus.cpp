// The main window's settings commands that open a dialog: Load Settings,
// Save Settings As and the meter setup.
#include <QFileDialog>

#include "app/qt_main_window.h"
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

}  // namespace lv
