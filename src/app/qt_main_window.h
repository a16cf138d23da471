#pragma once
#include <QElapsedTimer>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>
#include <filesystem>
#include <memory>
#include <string>

#include "app/clock_watchdog.h"
#include "app/frame_pacer.h"
#include "app/qt_live_session.h"
#include "app/qt_main_menus.h"
#include "app/qt_recording_controller.h"
#include "common/qt_prompter.h"
#include "display/chart.h"
#include "display/dial_face.h"
#include "display/qt_panel_widget.h"
#include "display/qt_readouts.h"
#include "settings/session_config.h"
#include "settings/settings_file.h"

namespace lv {

class SplashForm;

// What the window is started with.
struct StartOptions {
    std::filesystem::path dataFolder;
    std::string versionText;  // major.minor.revision
    LiveSession::CandidateList candidates;
    std::filesystem::path exeDir;  // where read-only files (dummy.mp3) are looked for first
};

// frmMain: the dial area with needle, lamp and readouts, the chart under it,
// the status line and the menus. It conducts; the drawing is the model's.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(StartOptions options, QWidget* parent = nullptr);
    ~MainWindow() override;

    // The start-up: program files, window placement, the search for the
    // meter (with the splash), menus from the settings, the face, the link.
    void Form_Load();
    // Closes as Quit does, asking nothing (signals, --exit-after).
    void closeUnattended();
    // Where recordings go while SavePath names no folder; before Form_Load.
    // Without it they go to recordings/ in the data folder.
    void setRecordingsFolder(std::string folder) { m_recordingsFolder = std::move(folder); }
    bool started() const { return m_started; }

    LiveSession& session() { return m_session; }
    SettingsStore& store() { return m_store; }
    const Settings& settings() const { return m_store.values; }
    MainMenus& menus() { return *m_menus; }
    QtPrompter& prompter() { return m_prompter; }
    PanelWidget* panel() const { return m_panel; }
    PanelWidget* chart() const { return m_chart; }
    RecordPanel* recordPanel() const { return m_recordPanel; }
    RecordingController& recording() { return *m_recording; }
    QString statusText() const { return m_status->text(); }
    // Repaints that carried at least one new reading.
    long framesDrawn() const { return m_frames; }

    // One reading's worth of drawing: the needle, then the chart.
    void showSample(std::int32_t needle);
    // The layout step: chart shown or not and its height, background, and a
    // fresh face and chart.
    void relayout();
    // What a redraw puts on the clock: the computer's time, or the
    // recording's at the play position.
    ClockInputs clockInputs() const;

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    MenuHooks menuHooks();
    void rebuildPanel();
    void rebuildChart();
    void tickClock();
    void flush();
    void refreshPortMenu();
    void loadSettingsFile();
    void saveSettingsFileAs();
    void meterSetup();
    void dialCalibration();
    // lv_Analog.cfg as things stand: at exit and after a calibration upload.
    std::optional<SessionConfigError> writeSessionConfig();
    void placeWindow();
    void startRecording();
    void splashText(const std::string& text);

    StartOptions m_options;
    std::string m_recordingsFolder;
    SettingsStore m_store;
    SessionConfig m_sessionConfig;
    QtPrompter m_prompter;
    PanelWidget* m_panel;
    PanelWidget* m_chart;
    RecordPanel* m_recordPanel;
    QLabel* m_status;
    PanelReadouts m_readouts;
    LiveSession m_session;
    std::unique_ptr<MainMenus> m_menus;
    std::unique_ptr<SplashForm> m_splash;
    std::unique_ptr<RecordingController> m_recording;
    ClockWatchdog m_watchdog;
    PanelState m_panelState;
    PanelContext m_ctx;
    ChartState m_chartState;
    QTimer m_repaint;
    QTimer m_clock;
    bool m_dirty = false;
    bool m_flushPending = false;  // a flush is queued or timed
    QElapsedTimer m_frameClock;
    FramePacer m_pacer;
    bool m_started = false;
    bool m_unattended = false;
    bool m_closed = false;
    // The meter is in its dial calibration: closing takes it out again.
    bool m_calibrating = false;
    long m_frames = 0;
};

}  // namespace lv
