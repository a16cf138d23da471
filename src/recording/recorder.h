#pragma once
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "common/display_sink.h"
#include "common/prompter.h"
#include "common/pump.h"
#include "common/vb_date.h"
#include "device/recorder_tap.h"
#include "recording/record_panel_sink.h"
#include "recording/recording_state.h"
#include "recording/recovery_journal.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// The recorder's clocks while recording, for the window's display and tests.
struct RecorderTiming {
    std::int32_t FrameCount = 0;    // frames since the start (no sound) or within this audio second
    std::int32_t AudioSeconds = 0;  // whole seconds of sound less the lead-in
    std::int16_t SamplesLastSecond = 0;  // frames the previous audio second held
    std::int64_t AudioPosition = 0;      // bytes, as the sound track last said
};

// Records a live session: one record per frame into the record buffer, the
// room's sound beside it, and the files by the recording mode. Driven by the
// Record, Stop and Save buttons, the tag key, the frame path (RecorderTap and
// recordFrame) and the window's half-second tick.
//
// The sound track sets the time of every record. When there is no sound to
// be had, or the device goes away, the operator is told once and the frames
// themselves keep the time, 20 ms each, so a recording never stops or hangs
// for want of sound.
class Recorder : public RecorderTap {
public:
    using Clock = std::function<LocalDateTime()>;

    Recorder(RecordingState& state, AudioTracks& tracks, MeterState& st, Settings& cfg,
             DisplaySink& display, RecordPanelSink& panel, Pump& pump, Prompter& prompter,
             Clock now);
    ~Recorder() override;
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Sends the meter its start command ("U"), when a meter is in use. Record
    // and Stop both send it; the exit's stop does not.
    void setMeterStart(std::function<void()> send) { m_meterStart = std::move(send); }

    // Where the recovery journal is kept (the data folder). Without one,
    // nothing is journalled.
    void setRecoveryFolder(std::filesystem::path dataFolder);
    const RecoveryJournal& journal() const { return m_journal; }
    // Called whenever SuffixNum has moved on, so that it reaches the settings
    // file at once: a crash must not hand out a number that is in use.
    void setNumberingSaver(std::function<void()> save) { m_saveNumbering = std::move(save); }

    // Record: true when recording has started. Refused while recording or
    // playing, when the operator keeps an unsaved recording, and when the
    // automatic modes' save folder is missing or their prefix would name a
    // file elsewhere (the operator is told).
    bool cmdRecord_Click();
    // Stop: waits for the next whole second of sound (never much more than
    // one), cuts the lead-in, and saves or labels by the recording mode.
    // Pressed during the lead-in, it takes effect as soon as that ends.
    void cmdStop_Click();
    // Save: the window passes the path from "Save Recording As" when the
    // caption is "Save As"; with the caption "Save", nullopt saves under the
    // automatic name. False when nothing was saved (a failure is shown).
    bool cmdSave_Click(std::optional<std::string> chosenPath);
    // The loaded-file label's Save As: the records as they stand, no stamp.
    bool saveAsFromLabel(const std::string& path);
    // Unload: closes the sound, empties the buffer, forgets the journal.
    void Flush_RecBuffer();
    // The tag key: counts while recording.
    void tag();
    // Every ~500 ms from the window: keeps the journal on disk and shows a
    // pending message about the sound outside the frame path.
    void tick();
    // SIGTERM or SIGINT: stops as Stop does, asks and tells nothing, and
    // keeps an unsaved recording's journal for the next start.
    void stopForExit();
    // Forgets this recorder's own journal, e.g. when the operator closes
    // without saving. One left by an earlier run is never touched here.
    void discardJournal();

    // The frame path (RecorderTap), then recordFrame once the needle is known.
    void countFrame() override;
    void showElapsed() override;
    void resetElapsed() override;
    void takeFrame(int letterCode, int bdTenths) override;
    // Appends the record of the frame taken last; once per frame.
    void recordFrame(std::int32_t needleValue, char letter);
    // The same with the letter takeFrame was given.
    void recordFrame(std::int32_t needleValue) { recordFrame(needleValue, m_clock.letter); }

    bool recording() const { return m_phase != Phase::Idle; }
    bool withSound() const { return m_withSound; }
    const std::string& saveCaption() const { return m_saveCaption; }
    const RecorderTiming& timing() const { return m_timing; }

private:
    enum class Phase { Idle, LeadIn, Recording };

    bool takesFrames() const;
    int note(int audioResult);
    bool saveFolderReady();
    bool prefixReady();
    void nameRecording();
    bool freeSaveName();
    void countedUp();
    bool saveUnderAutoName();
    void endEmptyRecording();
    int openTracks();
    void labelForMode();
    void usePlaceholder();
    int waitForLeadIn();
    void waitForWholeSecond();
    void giveUpSound(int code, bool midSession);
    void showSoundMessage();
    void onCapture(std::string_view pcm);
    RecoveryJournal::Header journalHeader() const;
    void openJournal();
    void showPlayTime(std::int64_t seconds, Colour colour);
    void setSaveCaption(const std::string& caption);
    bool writeRecording(const std::string& base, bool withStamp);
    void tell(const std::string& title, const std::string& text, Icon icon);

    RecordingState& m_state;
    AudioTracks& m_tracks;
    MeterState& m_st;
    Settings& m_cfg;
    DisplaySink& m_display;
    RecordPanelSink& m_panel;
    Pump& m_pump;
    Prompter& m_prompter;
    Clock m_now;
    std::function<void()> m_meterStart;

    Phase m_phase = Phase::Idle;
    bool m_stopping = false;
    bool m_stopRequested = false;  // Stop during the lead-in
    bool m_exiting = false;        // no one is there to answer a box
    bool m_withSound = false;
    bool m_framesFromStart = false;  // no sound lead-in: frames count from Record on
    RecorderTiming m_timing;
    struct {
        std::int64_t lastSeconds = 0;  // audio seconds last shown
        std::int32_t eventLines = 0;   // frames counted since the last showElapsed
        std::int32_t baseMs = 0;       // the frames' time origin: 0, or where the sound was lost
        bool frameDue = false;         // takeFrame seen, its record not yet made
        char letter = 'O';             // that frame's type letter
    } m_clock;
    std::int64_t m_shownSeconds = -1;  // what the play-time label shows
    std::string m_saveCaption = "Save As";

    std::string m_soundMessage;  // to show once, outside the frame path
    bool m_soundWarned = false;

    std::function<void()> m_saveNumbering;
    std::filesystem::path m_recoveryFolder;
    RecoveryJournal m_journal;
    bool m_journalOwned = false;  // the journal's files are this recorder's
    std::string m_pendingAudio;  // the lead-in's sound, until the journal opens
    int m_framesSinceFlush = 0;
};

}  // namespace lv
