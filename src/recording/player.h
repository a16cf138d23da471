#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "common/display_sink.h"
#include "common/prompter.h"
#include "common/pump.h"
#include "recording/play_pacing.h"
#include "recording/record_panel_sink.h"
#include "recording/recording_state.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

enum class PlayState { Idle, Playing, Paused };

// What a key means to the window once the player has had it: Handled when the
// player acted; the others are for the recorder or open dialogs.
enum class PlayerKey {
    None,           // not a playback key, or its control is disabled
    Handled,        // "P", "S" during playback, ",", "."
    Record,         // "R": the Record button
    StopRecording,  // "S" while the player is idle: the recorder's Stop
    Tag,            // "T": a tag, while recording
    Load,           // "O": the Load button
    LoadFromList,   // "L": the Load button's list of files
};

// The play-time label's colour outside recording.
inline constexpr Colour kPlayTimeColour = 0;
// The window's timers: the step while playing, and the one-shot skip timer
// that restarts the sound once a run of quick skips has ended.
inline constexpr int kPlayStepMs = kStepPollMs;
inline constexpr int kSkipTimerMs = 800;
// How long the lag lamp stays on after playback fell behind.
inline constexpr double kLagLampSeconds = 0.1;

// Loads a recording with its sound and plays it back on the display, paced by
// the sound's position. The window owns the timers: while playing() it runs
// step() again msToNextStep() after each step, and it calls tmrSkip_Timer() kSkipTimerMs after the
// last restartSkipTimer.
class Player {
public:
    // Shows one record's needle value: the needle, and the chart when shown.
    using ShowNeedle = std::function<void(std::int32_t needle)>;
    // Writes a line to the meter; empty when no meter port is in use.
    using SendToMeter = std::function<void(const std::string& line)>;
    // (Re)starts the one-shot skip timer.
    using RestartSkipTimer = std::function<void()>;

    Player(RecordingState& rs, AudioTracks& tracks, MeterState& st, Settings& cfg,
           DisplaySink& display, RecordPanelSink& panel, Prompter& prompter, Pump& pump,
           ShowNeedle showNeedle, SendToMeter sendToMeter = {},
           RestartSkipTimer restartSkipTimer = {});

    // The .lvd file and the sound beside it (or the placeholder with audio
    // off). False after a message box told why not, or while another load runs.
    // The file and its sound are checked first; only a file that passes
    // replaces the recording in memory, after unload has emptied it.
    bool Load_File(const std::string& path, const std::function<void()>& unload = {});

    void cmdPlay_Click();  // play from the play start, pause, or resume
    void cmdStop_Click();
    // Stop on the way out: the meter is told nothing.
    void stopForExit();
    void cmdLoop_Click();  // toggles PlayLoopEnable; caption "Loop" / "Single"
    void cmdFwd_Click();
    void cmdRev_Click();
    void tmrSkip_Timer();
    void Restart_Loop();

    // The position bar, at a fraction 0..1 of its width (clamped). Idle, a
    // release sets the play end; playing, a press (and a drag) seeks.
    void positionBarPress(double fraction);
    void positionBarRelease(double fraction);

    // A key pressed on the main window, with the controls as they are enabled.
    PlayerKey keyPressed(char key, const RecordPanelSink::Enabled& enabled = {});

    // One pacing step: hands on the record due by the sound's position.
    void step();
    // How long the window may wait before the next step: until the next
    // record is due, so the pacing wakes once a record and not on a fixed beat.
    int msToNextStep() const;

    PlayState state() const { return m_state; }
    bool playing() const { return m_state == PlayState::Playing; }  // the step timer runs
    bool active() const { return m_state != PlayState::Idle; }
    std::int64_t PlayedSeconds() const { return m_playedSeconds; }
    // Records passed over since Play because a later one was already due.
    std::int64_t skippedRecords() const { return m_skipped; }
    // How far the sound was past each record handed on (negative: before it),
    // in ms, since the player was made: the figure playback is judged by.
    struct Lateness {
        std::int64_t earliest = 0;
        std::int64_t worst = 0;
        std::int64_t records = 0;
    };
    const Lateness& lateness() const { return m_lateness; }

private:
    AudioTrack* chooseAudio(const std::string& base);
    // The message for a sound file that is not there; empty when it is.
    std::string missingAudio(const std::string& base) const;
    bool loadFailed(const std::string& title, const std::string& text, Icon icon,
                    const BoxDetail& detail = {});
    bool ready() const;  // a recording and its track to play
    void startFromPlayStart();
    void stopPlayback(bool restartMeter);
    // Starts the sound again at a device position: after a skip, a resume,
    // a seek on the position bar.
    void playOnFrom(std::int64_t position);
    void endOfRange();
    void applyRecord(const lvdRecord& record);
    void lagLampCheck();
    // After a command's code: when it says the sound device is missing or
    // gone, plays on with the placeholder and tells the operator once.
    bool soundLost(int code);
    bool showPlayedSeconds(std::int64_t seconds);  // true when the label changed
    void showRecordingClock(std::int64_t seconds);
    void showPosition();
    void showStatus(const std::string& text, Colour colour);
    std::int32_t recordIndexInRange(std::int32_t index) const;
    std::int64_t positionOfRecord(std::int32_t index);  // also makes it CurRecord
    void skipTo(std::int32_t index);

    RecordingState& m_rs;
    AudioTracks& m_tracks;
    MeterState& m_st;
    Settings& m_cfg;
    DisplaySink& m_display;
    RecordPanelSink& m_panel;
    Prompter& m_prompter;
    Pump& m_pump;
    ShowNeedle m_showNeedle;
    SendToMeter m_sendToMeter;
    RestartSkipTimer m_restartSkipTimer;

    PlayState m_state = PlayState::Idle;
    bool m_loading = false;                  // events run while a file loads
    AudioMode m_mode = AudioMode::NotReady;  // as last answered by the track
    std::int64_t m_audioPosition = 0;        // where the sound is, or resumes from
    std::int64_t m_playedSeconds = 0;
    std::int64_t m_skipped = 0;
    Lateness m_lateness;
    bool m_toldSoundLost = false;
    bool m_skipPending = false;   // a skip waits for the skip timer to restart the sound
    bool m_startingStep = false;  // the first step since the sound (re)started
    int m_idleSteps = 0;          // steps in a row that found no record due
    int m_lampCode = -1;          // recorded lamp state last drawn; -1 draws the next one
    bool m_lagLampOn = false;
    double m_lagSince = 0;  // Timer() when the lag lamp went on
    // The status line from before playback, put back on Stop.
    std::string m_statusText, m_shownStatus;
    Colour m_statusColour = 0;
};

}  // namespace lv
