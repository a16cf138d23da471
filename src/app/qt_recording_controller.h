#pragma once
#include <QObject>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "common/prompter.h"
#include "common/pump.h"
#include "device/needle_test.h"
#include "device/serial_port.h"
#include "recording/player.h"
#include "audio/qt_audio_track.h"
#include "recording/qt_record_panel.h"
#include "recording/recent_files.h"
#include "recording/recorder.h"
#include "recording/recording_state.h"
#include "audio/silent_track.h"
#include "settings/settings_file.h"
#include "signal/meter_state.h"

class QWidget;
class QKeyEvent;

namespace lv {

// Recording and playback in the window: the two tracks, the recorder, the
// player, their timers and the recording panel's buttons and keys.
class RecordingController : public QObject {
    Q_OBJECT
public:
    struct Wiring {
        QWidget* window;
        SettingsStore& store;
        MeterState& st;
        DisplaySink& display;
        Pump& pump;
        Prompter& prompter;
        SerialPort& port;
        std::string dummyPath;
        // The needle, and the chart when shown, for one played record.
        Player::ShowNeedle showNeedle;
        // Writes a line to the meter while a meter port is in use.
        std::function<bool(const std::string&)> sendToMeter;
    };

    RecordingController(RecordPanel& panel, Wiring wiring, QObject* parent = nullptr);
    ~RecordingController() override;

    Recorder& recorder() { return *m_recorder; }
    Player& player() { return *m_player; }
    RecordingState& state() { return m_rs; }

    // mnuConnectNeedleTest: starts or stops the needle test; whether it runs.
    bool needleTest(bool on);
    bool toggleTestAudio() { return m_test->toggleTestAudio(); }
    // Loads a recording and plays it (the command line's --play).
    void playFile(const QString& path);
    // Loads a recording, ready to play (the command line's FILE, Open Recent).
    void openFile(const QString& path);
    // The File menu: Open..., Save, Save As..., Export.
    void open() { load(); }
    void saveFromMenu() { save(); }
    void saveAsFromMenu();
    void exportRecording();
    // The records as CSV at `csv`, and the picture beside it as .png: what
    // lvdtool csv and plot write. False, having said why, when it failed.
    bool exportTo(const QString& csv);
    // Newest first, full paths.
    QStringList recentFiles() const;
    // Where Open starts: the folder last loaded from or saved to, else the
    // recordings folder.
    QString loadStartFolder() const;
    // The frame path's call once a live needle is known.
    void liveNeedle(std::int32_t needle);
    // The main window's key press; true when it was one of the recording keys.
    bool keyPressed(QKeyEvent* event);
    // Start-up: offers a session a crash left behind.
    void offerRecovery();
    // The watchdog's Stop.
    void pressStop();
    // What the exit sequence needs to know, and its two steps of ours.
    bool recordingInProgress() const;
    bool recordingNotSaved() const { return m_rs.RecNotSaved; }
    void keepForRecovery();
    // Closing with the operator's leave: a recording in progress stops and
    // nothing is kept for recovery.
    void discardRecording();
    void closeAudio();

private:
    void record();
    void stop();
    void save();
    void saveRecordingAs();
    void load();
    void loadFromList();
    void loadFile(const QString& path);
    void saveAsFromLabel();
    void settings();
    void syncTimers();
    void rememberRecent(const QString& path);
    // After anything that may have saved: the saved file becomes the one
    // shown, remembered and named in the title.
    void noteSaved(const std::string& baseBefore);
    void showLoadedInTitle(const QString& path);
    // The default recordings folder is made when first needed.
    void makeSaveFolder() const;
    void tellInStatusLine(const QString& text);

    RecordPanel& m_panel;
    Wiring m_w;
    QtAudioTrack m_sound;
    SilentTrack m_placeholder;
    AudioTracks m_tracks;
    RecordingState m_rs;
    std::unique_ptr<Recorder> m_recorder;
    std::unique_ptr<Player> m_player;
    std::unique_ptr<NeedleTest> m_test;
    QTimer m_testStep;  // the needle test's steps while it runs
    QTimer m_step;      // the player's pacing while playing
    QTimer m_skip;      // tmrSkip
    QTimer m_tick;      // the recorder's journal flush
    RecentFiles m_recent;
};

}  // namespace lv
