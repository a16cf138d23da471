#include "recording/recorder.h"

#include "recording/play_time.h"
#include "recording/rec_setup.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include "device/link_status.h"
#include "recording/frame_record.h"
#include "recording/lvd_file.h"
#include "recording/naming.h"
#include "recording/start_stamp.h"

namespace lv {

namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kWaveBytesPerSec = 44100;   // 22050 Hz, 16-bit, mono
constexpr std::int32_t kPlaceholderPerSec = 1000;  // the placeholder counts milliseconds
constexpr std::int32_t kFrameMs = 20;
constexpr std::int32_t kFramesPerSecond = 50;
constexpr std::int32_t kLateEarlyMs = 10;

// Waiting on the sound: how often its position is asked, how long it may
// stand still before it is given up, and an end even to slow progress.
constexpr double kPollSeconds = 0.01;
constexpr double kLeadInStallSeconds = 3.0;
constexpr double kLeadInLimitSeconds = 10.0;
// The next whole second is never more than one away.
constexpr double kStopWaitLimitSeconds = 1.5;
// Frames that may pass without a new second of sound before the device is
// taken as gone: three seconds of a sound track standing still.
constexpr std::int32_t kStalledFrames = 3 * kFramesPerSecond;

// At least once a second the journal reaches the disk, also without a tick.
constexpr int kJournalFlushFrames = kFramesPerSecond;
// The lead-in's sound waits in memory for the journal; more than a few
// seconds of it means something else went wrong.
constexpr std::size_t kPendingAudioLimit = 10 * kWaveBytesPerSec;

constexpr Colour kPlayTimeRecording = rgb(255, 0, 0);
constexpr Colour kPlayTimeIdle = 0;
const std::string kBuffer = "Buffer";
const std::string kNoFileLoaded = "No File Loaded";
const std::string kSave = "Save";
const std::string kSaveAs = "Save As";

// Codes after which the sound track will not come back by itself.
bool soundGone(int code) {
    return code == kAudioNoDevice || code == kAudioDeviceLost || code == kAudioNotOpen;
}

// The chosen file less its extension, whatever it is: the base of both files.
// A dot in a folder's name or at the start of the file's name is no extension.
std::string baseOf(const std::string& chosen) {
    const fs::path p(chosen);
    const std::string name = p.filename().string();
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return chosen;
    return chosen.substr(0, chosen.size() - (name.size() - dot));
}

RecordPanelSink::Enabled whileRecording() {
    RecordPanelSink::Enabled e;
    e.record = e.play = e.fwd = e.rev = e.save = e.load = e.settings = e.positionBar = false;
    return e;
}

RecordPanelSink::Enabled afterRecording(bool hasData) {
    RecordPanelSink::Enabled e;
    e.stop = false;
    e.play = e.fwd = e.rev = e.save = hasData;
    return e;
}

}  // namespace

Recorder::Recorder(RecordingState& state, AudioTracks& tracks, MeterState& st, Settings& cfg,
                   DisplaySink& display, RecordPanelSink& panel, Pump& pump, Prompter& prompter,
                   Clock now)
    : m_state(state),
      m_tracks(tracks),
      m_st(st),
      m_cfg(cfg),
      m_display(display),
      m_panel(panel),
      m_pump(pump),
      m_prompter(prompter),
      m_now(std::move(now)) {}

Recorder::~Recorder() {
    // The sink points back here; the journal's files stay for a recovery.
    m_tracks.sound.setCaptureSink({});
}

void Recorder::setRecoveryFolder(fs::path dataFolder) {
    m_recoveryFolder = std::move(dataFolder);
}

int Recorder::note(int audioResult) {
    m_state.lastAudioError = audioResult;
    return audioResult;
}

void Recorder::tell(const std::string& title, const std::string& text, Icon icon) {
    if (!m_exiting) m_prompter.ask(title, text, Buttons::Ok, icon);
}

void Recorder::showPlayTime(std::int64_t seconds, Colour colour) {
    m_shownSeconds = seconds;
    m_panel.setPlayTime(playTimeText(seconds), colour);
}

void Recorder::setSaveCaption(const std::string& caption) {
    m_saveCaption = caption;
    m_panel.setSaveCaption(caption);
}

void Recorder::usePlaceholder() {
    note(m_tracks.placeholder.close());
    note(m_tracks.placeholder.openFile(m_tracks.dummyPath, AudioKind::Compressed));
    m_state.track = &m_tracks.placeholder;
    m_state.AudioBytesPerSec = kPlaceholderPerSec;
}

bool Recorder::saveFolderReady() {
    const std::int32_t mode = m_cfg.RecordingMode;
    std::error_code ec;
    if ((mode != kModeAutoName && mode != kModeAutoSave) || m_cfg.SavePath.empty() ||
        fs::is_directory(fs::path(m_cfg.SavePath), ec))
        return true;
    tell("Record",
         "The save folder\n" + m_cfg.SavePath +
             "\ndoes not exist, so the recording could not be named or saved.\n\nCreate the "
             "folder, or choose another in the Recording Settings, then record again.",
         Icon::Critical);
    return false;
}

bool Recorder::prefixReady() {
    if (!isAutomaticMode(m_cfg.RecordingMode) || prefixStaysInFolder(m_cfg.SavePrefix)) return true;
    tell("Validate Filename",
         "Error: Invalid Prefix name " + m_cfg.SavePrefix +
             "\n\nA prefix names files in the save folder only. Choose another in the "
             "Recording Settings, then record again.",
         Icon::Critical);
    return false;
}

void Recorder::countedUp() {
    if (m_saveNumbering) m_saveNumbering();
}

void Recorder::nameRecording() {
    if (!isAutomaticMode(m_cfg.RecordingMode)) {
        m_state.SaveName = autoName(m_cfg, m_now());
        return;
    }
    bool counted = false;
    m_state.SaveName = freeAutoName(m_cfg, m_now(), counted);
    if (counted) countedUp();
}

bool Recorder::freeSaveName() {
    // A file that has appeared under the name since the recording started
    // (another program, a copy) is never written over: the name moves on.
    if (m_cfg.SavePath + m_state.SaveName == m_state.loadedBase ||
        !nameTaken(m_cfg.SavePath, m_state.SaveName))
        return false;
    if (m_cfg.SuffixType == kSuffixNumber) {
        bool counted = false;
        m_state.SaveName = freeAutoName(m_cfg, m_now(), counted);
        if (counted) countedUp();
    } else {
        // The start's date and time stay in the name.
        m_state.SaveName = freeVariant(m_cfg.SavePath, m_state.SaveName);
    }
    return true;
}

int Recorder::openTracks() {
    // The previous recording's sound goes either way.
    note(m_tracks.sound.close());
    const int rc = m_cfg.AudioEnable ? note(m_tracks.sound.openNewWave()) : kAudioNotOpen;
    m_withSound = rc == kAudioOk;
    if (!m_withSound) {
        usePlaceholder();
        return m_cfg.AudioEnable ? rc : kAudioOk;
    }
    m_state.track = &m_tracks.sound;
    m_state.AudioBytesPerSec = kWaveBytesPerSec;
    m_tracks.sound.setCaptureSink([this](std::string_view pcm) { onCapture(pcm); });
    return kAudioOk;
}

void Recorder::labelForMode() {
    const std::int32_t mode = m_cfg.RecordingMode;
    if (mode == kModeManual) m_panel.setMode(recordingModeCaption(mode), kBuffer);
    if (mode == kModeManual || mode == kModeAutoName) m_panel.setLoadedFile(kBuffer, kBuffer);
    if (mode == kModeAutoSave) m_panel.setLoadedFile(m_state.SaveName, "");
}

bool Recorder::cmdRecord_Click() {
    if (m_phase != Phase::Idle || m_st.RunMode == kRunPlayback || !saveFolderReady() ||
        !prefixReady())
        return false;
    if (m_state.RecNotSaved && m_cfg.RecPromptEnable &&
        m_prompter.ask("Warning", "Previous recording not saved, Continue?", Buttons::YesNo,
                       Icon::None) != Answer::Yes)
        return false;

    if (m_meterStart) m_meterStart();
    m_phase = Phase::LeadIn;
    m_stopRequested = false;
    m_framesFromStart = false;
    m_panel.setEnabled(whileRecording());
    m_state.buffer.clear();
    m_state.RecNotSaved = m_state.RecHasData = false;
    m_state.TagCount = 0;
    m_panel.setTag("");
    m_timing = {};
    m_clock = {};
    m_pendingAudio.clear();
    m_soundMessage.clear();

    int soundProblem = openTracks();
    nameRecording();
    labelForMode();
    if (m_withSound) {
        if (const int rc = note(m_tracks.sound.record()); rc != kAudioOk) {
            soundProblem = rc;
            giveUpSound(rc, false);
        }
    }

    m_st.RunMode = kRunRecording;
    showPlayTime(0, kPlayTimeRecording);
    m_panel.setPanelWord("RECORD");
    m_st.StatusText = std::string(kStatusRecording);
    showStatus(m_st, m_display, kStatusRecording, m_cfg.Text_Color);

    // The frames start a full second into the sound, so the first record
    // lines up with the start of the saved wave once the lead-in is cut.
    if (m_withSound) {
        if (const int rc = waitForLeadIn(); rc != kAudioOk) {
            soundProblem = rc;
            giveUpSound(rc, false);
        }
    } else {
        // Without sound nothing is cut afterwards: the frames of this second
        // are the recording's first, stamped from 20 ms on.
        openJournal();
        m_framesFromStart = true;
        SDelay(m_pump, 1);
    }
    if (soundProblem != kAudioOk) {
        showStatus(m_st, m_display, kStatusAudioOff, kStatusErrorColour);
        m_soundMessage = "No sound can be recorded: " + audioErrorText(soundProblem) +
                         "\n\nThe recording goes on without sound.";
        showSoundMessage();
    }

    m_state.buffer.markStart(m_now());
    if (m_framesFromStart) {
        if (m_journal.isOpen()) m_journal.updateHeader(journalHeader());
    } else {
        m_timing.FrameCount = 0;
        m_clock.eventLines = 0;
        openJournal();
    }
    m_phase = Phase::Recording;
    if (m_stopRequested) cmdStop_Click();
    return true;
}

int Recorder::waitForLeadIn() {
    const double start = m_pump.Timer();
    double lastMove = start;
    std::int64_t last = -1;
    while (!m_stopRequested) {
        std::int64_t pos = 0;
        const int rc = note(m_tracks.sound.position(pos));
        if (rc == kAudioOk) {
            m_timing.AudioPosition = pos;
            if (pos >= kWaveBytesPerSec) return kAudioOk;
            if (pos != last) {
                last = pos;
                lastMove = m_pump.Timer();
            }
        } else if (soundGone(rc)) {
            return rc;
        }
        if (secondsSince(m_pump, lastMove) >= kLeadInStallSeconds ||
            secondsSince(m_pump, start) >= kLeadInLimitSeconds)
            return kAudioDeviceLost;  // it never came
        m_pump.wait(kPollSeconds);
    }
    return kAudioOk;
}

void Recorder::giveUpSound(int code, bool midSession) {
    m_withSound = false;
    m_tracks.sound.setCaptureSink({});
    note(m_tracks.sound.stop());
    note(m_tracks.sound.close());
    usePlaceholder();
    m_pendingAudio.clear();
    if (m_journal.isOpen()) m_journal.updateHeader(journalHeader());
    if (!midSession) return;
    showStatus(m_st, m_display, kStatusAudioOff, kStatusErrorColour);
    m_soundMessage =
        "The sound device stopped working during the recording: " + audioErrorText(code) +
        "\n\nThe recording goes on without sound. The sound recorded so far is "
        "not kept, so the recording will be saved without it.";
}

void Recorder::showSoundMessage() {
    if (m_soundMessage.empty()) return;
    const std::string text = std::exchange(m_soundMessage, {});
    if (m_soundWarned) return;
    // Set before asking: frames and ticks keep coming while the box is up.
    m_soundWarned = true;
    tell("Record", text, Icon::Exclamation);
}

void Recorder::onCapture(std::string_view pcm) {
    if (m_journal.isOpen())
        m_journal.appendAudio(pcm);
    else if (m_phase == Phase::LeadIn && m_pendingAudio.size() + pcm.size() <= kPendingAudioLimit)
        m_pendingAudio.append(pcm);
}

RecoveryJournal::Header Recorder::journalHeader() const {
    return {m_state.buffer.StartTimeSecs,       m_state.buffer.StartDays,
            m_state.AudioBytesPerSec,           m_cfg.DialType,
            m_withSound ? kWaveBytesPerSec : 0, m_state.SaveName};
}

void Recorder::openJournal() {
    m_framesSinceFlush = 0;
    if (!m_recoveryFolder.empty()) {
        // Our own earlier recording was given up by the operator; one an
        // earlier run left (start-up could not keep it) is kept now, or left alone.
        if (m_journalOwned) discardJournal();
        RecoveryJournal::preserve(m_recoveryFolder,
                                  m_recoveryFolder / RecoveryJournal::kRecoveredFolder, m_cfg);
        // A journal that cannot be written costs the safety net, not the recording.
        m_journalOwned = m_journal.open(m_recoveryFolder, journalHeader());
        if (m_journalOwned && m_withSound) m_journal.appendAudio(m_pendingAudio);
    }
    m_pendingAudio.clear();
}

bool Recorder::takesFrames() const {
    return m_phase == Phase::Recording || (m_phase == Phase::LeadIn && m_framesFromStart);
}

void Recorder::countFrame() {
    if (!takesFrames()) return;
    ++m_timing.FrameCount;
    ++m_clock.eventLines;
}

void Recorder::showElapsed() {
    if (!takesFrames()) return;
    const std::int32_t lines = std::exchange(m_clock.eventLines, 0);
    if (!m_withSound) {
        const std::int64_t seconds =
            (m_clock.baseMs + std::int64_t{m_timing.FrameCount} * kFrameMs) / 1000;
        if (seconds != m_shownSeconds) showPlayTime(seconds, kPlayTimeRecording);
        return;
    }
    std::int64_t pos = 0;
    const int rc = note(m_tracks.sound.position(pos));
    if (rc == kAudioOk) {
        m_timing.AudioPosition = pos;
        const std::int64_t seconds = pos / kWaveBytesPerSec;
        if (seconds > m_clock.lastSeconds) {
            m_clock.lastSeconds = seconds;
            m_timing.AudioSeconds = static_cast<std::int32_t>(seconds - 1);
            m_timing.FrameCount = 1;
            showPlayTime(m_timing.AudioSeconds, kPlayTimeRecording);
        }
    }
    if (soundGone(rc) || m_timing.FrameCount > kStalledFrames) {
        // The frames take over the time from the last record, the lines of
        // this event included.
        m_clock.baseMs = m_state.buffer.RecCount > 0 ? m_state.buffer.TotalTimeMs : 0;
        m_timing.FrameCount = lines;
        giveUpSound(soundGone(rc) ? rc : kAudioDeviceLost, true);
    }
}

void Recorder::resetElapsed() {
    m_clock.lastSeconds = 0;
}

void Recorder::takeFrame(int letterCode, int) {
    // The record waits for the needle, which the frame path computes next.
    if (!takesFrames()) return;
    m_clock.frameDue = true;
    m_clock.letter = static_cast<char>(letterCode);
}

void Recorder::recordFrame(std::int32_t needleValue, char letter) {
    if (!takesFrames() || !std::exchange(m_clock.frameDue, false)) return;
    const std::int32_t frames = m_timing.FrameCount;
    std::int32_t timeMs = m_clock.baseMs + frames * kFrameMs;
    if (m_withSound) {
        timeMs = (frames - 1) * kFrameMs + m_timing.AudioSeconds * 1000;
        // A second that held fewer frames than it should moves its successor's
        // first frame a little earlier, more frames a little later.
        if (frames == 1 && m_timing.SamplesLastSecond != kFramesPerSecond)
            timeMs += m_timing.SamplesLastSecond < kFramesPerSecond ? -kLateEarlyMs : kLateEarlyMs;
    }
    RecBuffer& buffer = m_state.buffer;
    buffer.append(recordOfFrame(m_st, m_cfg, needleValue, letter, timeMs, buffer.CurRecord));
    m_timing.SamplesLastSecond = static_cast<std::int16_t>(
        std::min<std::int32_t>(frames, std::numeric_limits<std::int16_t>::max()));

    if (m_journal.isOpen()) {
        m_journal.appendRecord(buffer.CurRecord);
        if (++m_framesSinceFlush >= kJournalFlushFrames) {
            m_framesSinceFlush = 0;
            m_journal.flush();
        }
    }
}

void Recorder::waitForWholeSecond() {
    std::int64_t pos = 0;
    if (note(m_tracks.sound.position(pos)) != kAudioOk) return;
    m_timing.AudioPosition = pos;
    const std::int64_t second = pos / kWaveBytesPerSec;
    const double start = m_pump.Timer();
    while (secondsSince(m_pump, start) < kStopWaitLimitSeconds) {
        m_pump.wait(kPollSeconds);
        if (!m_withSound) return;  // given up by a frame meanwhile
        const int rc = note(m_tracks.sound.position(pos));
        if (rc == kAudioOk) {
            m_timing.AudioPosition = pos;
            if (pos / kWaveBytesPerSec > second) return;
        } else if (soundGone(rc)) {
            giveUpSound(rc, true);
            return;
        }
    }
}

void Recorder::cmdStop_Click() {
    if (m_phase == Phase::LeadIn) {
        m_stopRequested = true;
        return;
    }
    if (m_phase != Phase::Recording || m_stopping) return;
    m_stopping = true;
    if (m_meterStart && !m_exiting) m_meterStart();
    RecordPanelSink::Enabled busy = whileRecording();
    busy.stop = false;
    m_panel.setEnabled(busy);

    const bool hadSound = m_withSound;
    if (m_withSound) waitForWholeSecond();
    // Frames that came during the wait are part of the recording; from here on none are.
    m_phase = Phase::Idle;
    m_stopping = false;
    m_clock.frameDue = false;
    m_tracks.sound.setCaptureSink({});
    if (m_withSound) {
        note(m_tracks.sound.stop());
        note(m_tracks.sound.seek(0));
        note(m_tracks.sound.deleteFromStart(kWaveBytesPerSec));
    }
    m_journal.close();  // kept until the recording is saved or dropped

    RecBuffer& buffer = m_state.buffer;
    const bool empty = buffer.RecCount < 1;
    if (empty) {
        // Stopped before the first frame (in the lead-in, or by a signal):
        // there is nothing to keep, and an empty file would only be refused later.
        endEmptyRecording();
    } else {
        showPlayTime(buffer.TotalTimeMs / 1000, kPlayTimeIdle);
        m_panel.setTotalTime(playTimeText(buffer.TotalTimeMs / 1000));
        m_panel.setPanelWord("");
        m_state.playStart = 1;
        m_state.playEnd = buffer.RecIndex;
        m_state.RecNotSaved = true;
        m_state.RecHasData = true;
        m_panel.setEnabled(afterRecording(true));
    }

    switch (empty ? 0 : m_cfg.RecordingMode) {
        case kModeManual:
            setSaveCaption(kSaveAs);
            break;
        case kModeAutoName:
            m_panel.setLoadedFile(kBuffer, m_cfg.SavePath + m_state.SaveName);
            setSaveCaption(kSave);
            break;
        case kModeAutoSave:
            m_cfg.LoadPath = m_cfg.SavePath;  // the last-used folder
            saveUnderAutoName();
            break;
        default:
            break;
    }

    m_st.RunMode = m_st.PortNumber == 0 ? kRunNoMeter : kRunLive;
    if (m_st.ShownStatus == kStatusRecording || m_st.ShownStatus == kStatusAudioOff) {
        const std::string_view text = m_st.RunMode == kRunLive ? kStatusInputOk : kStatusDemo;
        m_st.StatusText = std::string(text);
        showStatus(m_st, m_display, text, m_cfg.Text_Color);
    }
    // Sound that worked to the end makes a later failure news again.
    if (hadSound && m_withSound) m_soundWarned = false;
    showSoundMessage();
}

bool Recorder::writeRecording(const std::string& base, bool withStamp) {
    std::string problems;
    if (m_state.track == &m_tracks.sound) {
        const std::string wave = base + ".wav";
        std::error_code ec;
        fs::remove(fs::path(wave), ec);
        const int rc = note(m_tracks.sound.save(wave));
        if (rc != kAudioOk) problems += wave + "\n" + audioErrorText(rc) + "\n\n";
        // A track that is gone stays gone: the next save writes the records alone.
        if (soundGone(rc)) usePlaceholder();
    }
    std::optional<StartStamp> stamp;
    if (withStamp && m_cfg.TimeDateEnable)
        stamp = startStampFor(m_cfg, m_state.buffer.StartTimeSecs, m_state.buffer.StartDays);
    const SaveResult lvd = saveLvdFile(fs::path(base + ".lvd"), m_state.buffer, stamp);
    if (!lvd.saved) problems += lvd.text + "\n\n";

    if (!problems.empty()) {
        // The operator picks another place next time.
        setSaveCaption(kSaveAs);
        tell("File Not Saved",
             problems + "The recording has not been saved; it is still in memory.", Icon::Critical);
        return false;
    }
    m_state.RecNotSaved = false;
    m_state.loadedBase = base;
    m_panel.setLoadedFile(fs::path(base).filename().string(), base);
    discardJournal();
    return true;
}

bool Recorder::cmdSave_Click(std::optional<std::string> chosenPath) {
    if (m_phase != Phase::Idle || !m_state.RecHasData || m_state.buffer.RecCount < 1) return false;
    if (chosenPath) return writeRecording(baseOf(*chosenPath), true);
    if (m_saveCaption != kSave) return false;  // "Save As" needs the chosen name
    return saveUnderAutoName();
}

bool Recorder::saveUnderAutoName() {
    const bool resaving = m_state.loadedBase == m_cfg.SavePath + m_state.SaveName;
    freeSaveName();
    if (!writeRecording(m_cfg.SavePath + m_state.SaveName, true)) return false;
    // The next recording would otherwise get this number again, and its save
    // would overwrite this one without a word.
    if (!resaving && m_cfg.SuffixType == kSuffixNumber &&
        m_cfg.SuffixNum < std::numeric_limits<std::int16_t>::max()) {
        ++m_cfg.SuffixNum;
        countedUp();
    }
    return true;
}

void Recorder::endEmptyRecording() {
    discardJournal();
    m_state.RecNotSaved = m_state.RecHasData = false;
    m_state.playStart = 1;
    m_state.playEnd = 0;
    showPlayTime(0, kPlayTimeIdle);
    m_panel.setPanelWord("");
    m_panel.setEnabled(afterRecording(false));
    m_panel.setLoadedFile(kNoFileLoaded, kNoFileLoaded);
}

bool Recorder::saveAsFromLabel(const std::string& path) {
    if (m_phase != Phase::Idle || m_state.buffer.RecCount < 1) return false;
    const std::string base = baseOf(path);
    // The recording named in the dialog goes before the pair is written anew,
    // so a longer one of that name leaves nothing of itself in the new file.
    // Only the .lvd is taken: a file of another kind the name points at is
    // not the recording's to delete.
    std::error_code ec;
    if (m_state.track == &m_tracks.sound && fs::exists(fs::path(base + ".wav"), ec))
        fs::remove(fs::path(base + ".lvd"), ec);
    return writeRecording(base, false);
}

void Recorder::Flush_RecBuffer() {
    if (m_phase != Phase::Idle) return;
    note(m_tracks.sound.close());
    note(m_tracks.placeholder.close());
    m_panel.setLoadedFile(kNoFileLoaded, kNoFileLoaded);
    m_state.RecNotSaved = false;
    m_state.RecHasData = false;
    m_state.buffer.clear();
    m_state.playStart = 1;
    m_state.playEnd = 0;
    m_state.loadedBase.clear();
    m_state.TagCount = 0;
    m_panel.setTag("");
    m_panel.setTotalTime("");
    showPlayTime(0, kPlayTimeIdle);
    discardJournal();
}

void Recorder::tag() {
    if (m_phase != Phase::Recording) return;
    ++m_state.TagCount;
    m_panel.setTag(std::to_string(m_state.TagCount));
}

void Recorder::tick() {
    if (m_journal.isOpen()) m_journal.flush();
    showSoundMessage();
}

void Recorder::stopForExit() {
    m_exiting = true;
    if (m_phase == Phase::LeadIn)
        m_stopRequested = true;  // the lead-in ends at its next poll and stops
    else
        cmdStop_Click();
    m_journal.close();
}

void Recorder::discardJournal() {
    if (m_journalOwned) m_journal.discard();
    m_journalOwned = false;
}

}  // namespace lv
