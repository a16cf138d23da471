#include "recording/player.h"

#include "device/link_status.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "device/protocol.h"
#include "recording/lvd_file.h"
#include "recording/play_pacing.h"
#include "recording/play_time.h"
#include "signal/lamp_rules.h"

namespace lv {

namespace {

constexpr const char* kFileNotFound = "File Not Found";
constexpr const char* kAudioMissing =
    "The audio file is missing. The .lvd and .wav (or .mp3) files must reside in the same "
    "folder.  Please check and try again or disable audio.";
constexpr const char* kDummyMissing =
    "The Dummy.mp3 file is missing. This should be located in the application directory.";
constexpr const char* kStatusPlayback = "Playback";
// The placeholder and compressed tracks count in milliseconds.
constexpr std::int32_t kMillisecondTrack = 1000;

bool fileExists(const std::string& path) {
    std::error_code ec;
    return std::filesystem::exists(path, ec);
}

// A sound to open: an ordinary file only, since opening a named pipe waits
// for a writer that may never come.
bool soundFileThere(const std::string& path) {
    std::error_code ec;
    return std::filesystem::is_regular_file(path, ec);
}

CalendarDate calendarDate(std::chrono::year_month_day date) {
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

}  // namespace

Player::Player(RecordingState& rs, AudioTracks& tracks, MeterState& st, Settings& cfg,
               DisplaySink& display, RecordPanelSink& panel, Prompter& prompter, Pump& pump,
               ShowNeedle showNeedle, SendToMeter sendToMeter, RestartSkipTimer restartSkipTimer)
    : m_rs(rs),
      m_tracks(tracks),
      m_st(st),
      m_cfg(cfg),
      m_display(display),
      m_panel(panel),
      m_prompter(prompter),
      m_pump(pump),
      m_showNeedle(std::move(showNeedle)),
      m_sendToMeter(std::move(sendToMeter)),
      m_restartSkipTimer(std::move(restartSkipTimer)) {}

// ---- Loading ----

bool Player::loadFailed(const std::string& title, const std::string& text, Icon icon,
                        const BoxDetail& detail) {
    m_prompter.ask(title, text, Buttons::Ok, icon, detail);
    return false;
}

AudioTrack* Player::chooseAudio(const std::string& base) {
    if (!m_cfg.AudioEnable) {
        if (soundFileThere(m_tracks.dummyPath) &&
            m_tracks.placeholder.openFile(m_tracks.dummyPath, AudioKind::Compressed) == kAudioOk) {
            m_rs.AudioBytesPerSec = kMillisecondTrack;
            return &m_tracks.placeholder;
        }
        loadFailed(kFileNotFound, kDummyMissing, Icon::None);
        return nullptr;
    }

    AudioTrack& sound = m_tracks.sound;
    // A wave that cannot be opened or cannot tell its rate is passed over for
    // the compressed track, as a missing one is.
    const std::string wave = base + ".wav";
    if (soundFileThere(wave) && sound.openFile(wave, AudioKind::Wave) == kAudioOk) {
        int rate = 0, bits = 0, channels = 0;
        if (sound.waveFormat(rate, bits, channels) == kAudioOk) {
            const std::int64_t bytesPerSec = std::int64_t{rate} * bits * channels / 8;
            if (bytesPerSec > 0 && bytesPerSec <= INT32_MAX) {
                m_rs.AudioBytesPerSec = static_cast<std::int32_t>(bytesPerSec);
                return &sound;
            }
        }
        sound.close();
    }
    const std::string compressed = base + ".mp3";
    if (soundFileThere(compressed) &&
        sound.openFile(compressed, AudioKind::Compressed) == kAudioOk) {
        m_rs.AudioBytesPerSec = kMillisecondTrack;
        return &sound;
    }
    loadFailed(kFileNotFound, kAudioMissing, Icon::None);
    return nullptr;
}

std::string Player::missingAudio(const std::string& base) const {
    if (!m_cfg.AudioEnable) return fileExists(m_tracks.dummyPath) ? "" : kDummyMissing;
    return fileExists(base + ".wav") || fileExists(base + ".mp3") ? "" : kAudioMissing;
}

bool Player::Load_File(const std::string& path, const std::function<void()>& unload) {
    // A Load pressed while the events of a load run waits for that one.
    if (m_loading) return false;
    if (!fileExists(path)) return loadFailed(kFileNotFound, path, Icon::Exclamation);
    // A file that is no recording is told as such, not as a sound gone missing.
    if (const auto bad = lvdHeadProblem(path))
        return loadFailed(bad->title, bad->text, Icon::Exclamation);
    const std::string base = path.size() >= 4 ? path.substr(0, path.size() - 4) : path;
    // Everything that can refuse the file is asked before the recording in
    // memory goes: a file that fails leaves it, and its sound, as they were.
    if (const std::string missing = missingAudio(base); !missing.empty())
        return loadFailed(kFileNotFound, missing, Icon::None);

    // The file has passed its check once progress is reported.
    bool announced = false;
    RecBuffer incoming;
    m_loading = true;
    m_panel.setLoadProgress(0);
    const LoadResult result = loadLvdFile(path, m_cfg.DialType, incoming, [&](int fiftieths) {
        if (!announced) m_panel.setLoadedFile("Loading......", path);
        announced = true;
        m_panel.setLoadProgress(fiftieths);
        m_pump.DoEvents();
    });
    m_loading = false;
    if (!result.ok() && result.status != LoadStatus::WrongDialType)
        return loadFailed(result.title, result.text, Icon::Exclamation,
                          {.informative = result.detail});

    if (active()) cmdStop_Click();
    if (unload) unload();
    (m_rs.track ? *m_rs.track : m_tracks.sound).close();
    m_rs.track = nullptr;
    RecBuffer& buffer = m_rs.buffer;
    buffer = std::move(incoming);
    if (!result.ok()) {
        // A wrong dial type keeps the records read up to the first of the
        // other type, and no sound.
        m_rs.playStart = 1;
        m_rs.playEnd = buffer.RecCount;
        m_panel.setLoadedFile("", "");
        return loadFailed(result.title, result.text, Icon::Exclamation,
                          {.informative = result.detail});
    }
    AudioTrack* track = chooseAudio(base);
    if (!track) return false;

    m_rs.track = track;
    m_rs.loadedBase = base;
    m_rs.RecNotSaved = false;
    m_rs.playStart = 1;
    m_rs.playEnd = buffer.RecCount;
    m_rs.SkipSeconds = skipSecondsFor(buffer.TotalTimeMs / 1000);
    m_panel.setLoadedFile(result.caption, path);
    m_playedSeconds = 0;
    m_panel.setPlayTime(playTimeText(0), kPlayTimeColour);
    m_panel.setTotalTime(playTimeText(buffer.TotalTimeMs / 1000));
    showPosition();
    return true;
}

// ---- Play, pause, stop, loop ----

bool Player::ready() const {
    const RecBuffer& b = m_rs.buffer;
    return !m_loading && m_rs.track && b.RecCount >= 1 && b.RecCount <= b.upperBound() &&
           m_rs.AudioBytesPerSec > 0;
}

void Player::cmdPlay_Click() {
    if (active() && !ready()) {
        cmdStop_Click();
        return;
    }
    if (m_state == PlayState::Playing) {
        m_rs.track->pause();
        // After a skip the sound still stands where it was before it; the
        // skip's target is where playing goes on.
        std::int64_t pos = 0;
        if (!m_skipPending && m_rs.track->position(pos) == kAudioOk) m_audioPosition = pos;
        m_panel.setPanelWord("PAUSE");
        m_state = PlayState::Paused;
        return;
    }
    if (m_state == PlayState::Paused) {
        m_panel.setPanelWord("PLAY");
        m_state = PlayState::Playing;
        playOnFrom(m_audioPosition);
        return;
    }
    if (!ready() || m_st.RunMode == kRunRecording) return;

    m_statusText = m_st.StatusText;
    m_shownStatus = m_st.ShownStatus;
    m_statusColour = m_st.StatusColour;
    m_st.StatusText = kStatusPlayback;
    showStatus(kStatusPlayback, m_cfg.Text_Color);

    RecordPanelSink::Enabled enabled;
    enabled.record = false;
    m_panel.setEnabled(enabled);
    m_st.RunMode = kRunPlayback;
    m_state = PlayState::Playing;
    m_skipped = 0;
    startFromPlayStart();
}

void Player::startFromPlayStart() {
    m_skipPending = false;
    RecBuffer& b = m_rs.buffer;
    b.RecIndex = recordIndexInRange(m_rs.playStart);
    const std::int64_t pos = positionOfRecord(b.RecIndex);
    m_panel.setPanelWord("PLAY");
    AudioTrack& track = *m_rs.track;
    track.seek(pos);
    m_audioPosition = pos;
    std::int64_t reported = 0;
    if (track.position(reported) == kAudioOk) m_audioPosition = reported;
    soundLost(track.play());
    m_mode = AudioMode::Playing;
    m_startingStep = true;
    // The first record shows its lamp whatever was shown before, and live
    // data after playback starts from a fresh reference.
    m_lampCode = -1;
    m_st.NeedleReset = true;
    m_playedSeconds = -1;
    showPlayedSeconds(audioSeconds(m_audioPosition, m_rs.AudioBytesPerSec));
}

bool Player::soundLost(int code) {
    if (m_rs.track != &m_tracks.sound || (code != kAudioNoDevice && code != kAudioDeviceLost))
        return false;
    // The records play on against the placeholder's clock, from where the
    // sound was: a missing device must not end or freeze a playback.
    const std::int64_t atMs = audioTimeMs(m_audioPosition, m_rs.AudioBytesPerSec);
    m_tracks.sound.close();
    AudioTrack& silent = m_tracks.placeholder;
    if (!fileExists(m_tracks.dummyPath) ||
        silent.openFile(m_tracks.dummyPath, AudioKind::Compressed) != kAudioOk) {
        cmdStop_Click();
        m_rs.track = nullptr;
        loadFailed(kFileNotFound, kDummyMissing, Icon::None);
        return true;
    }
    m_rs.track = &silent;
    m_rs.AudioBytesPerSec = kMillisecondTrack;
    m_audioPosition = atMs;
    silent.playFrom(atMs);
    m_mode = AudioMode::Playing;
    showStatus(std::string(kStatusAudioOff), kStatusErrorColour);
    if (!m_toldSoundLost) {
        m_toldSoundLost = true;
        m_prompter.ask("Sound",
                       "The sound device is not available (" + audioErrorText(code) +
                           ").\nThe recording plays on without its sound.",
                       Buttons::Ok, Icon::Exclamation);
    }
    return true;
}

void Player::Restart_Loop() {
    if (!active()) return;
    if (!ready()) {
        cmdStop_Click();
        return;
    }
    startFromPlayStart();
}

void Player::cmdStop_Click() {
    stopPlayback(true);
}

void Player::stopForExit() {
    stopPlayback(false);
}

void Player::stopPlayback(bool restartMeter) {
    if (!active()) return;
    if (m_rs.track) m_rs.track->stop();
    // The meter followed the played records; its own stream starts again.
    if (restartMeter && m_sendToMeter && m_st.PortNumber != 0)
        m_sendToMeter(protocol::commandLine(protocol::kStart));
    m_state = PlayState::Idle;
    m_st.RunMode = m_st.PortNumber != 0 ? kRunLive : kRunNoMeter;
    m_panel.setPanelWord("");
    if (m_lagLampOn) {
        m_lagLampOn = false;
        if (m_st.LedColour == m_cfg.LED_Lag_Color) setLamp(m_st, m_display, m_cfg.Dial_Color);
    }
    m_st.StatusText = m_statusText;
    if (m_st.ShownStatus != m_shownStatus || m_st.StatusColour != m_statusColour)
        showStatus(m_shownStatus, m_statusColour);
    m_panel.setEnabled({});
    // Playback drew its own knob and lamp: the next live frame draws the
    // meter's again even when they match what it sent last.
    m_st.lastStatusDigit = -1;
    m_st.lastKnobPos = -1;
}

void Player::cmdLoop_Click() {
    m_cfg.PlayLoopEnable = !m_cfg.PlayLoopEnable;
    m_panel.setLoopCaption(m_cfg.PlayLoopEnable ? "Loop" : "Single");
}

// ---- Skips and the position bar ----

std::int32_t Player::recordIndexInRange(std::int32_t index) const {
    return std::clamp(index, 1, m_rs.buffer.RecCount);
}

std::int64_t Player::positionOfRecord(std::int32_t index) {
    RecBuffer& b = m_rs.buffer;
    b.CurRecord = b(index);
    return audioPositionFor(b.CurRecord.TimeMs, m_rs.AudioBytesPerSec);
}

void Player::skipTo(std::int32_t index) {
    // Quick skips in a row pause the sound once and restart it once, when the
    // skip timer runs out after the last of them.
    if (playing()) {
        m_rs.track->pause();
        m_mode = AudioMode::Paused;
    }
    m_skipPending = true;
    if (m_restartSkipTimer) m_restartSkipTimer();
    RecBuffer& b = m_rs.buffer;
    b.RecIndex = recordIndexInRange(index);
    m_audioPosition = positionOfRecord(b.RecIndex);
    showPlayedSeconds(audioSeconds(m_audioPosition, m_rs.AudioBytesPerSec));
}

void Player::cmdFwd_Click() {
    if (!ready()) return;
    skipTo(skipForwardIndex(m_rs.buffer.RecIndex, m_rs.SkipSeconds * kRecordsPerSecond,
                            std::max(m_rs.playStart, 1), m_rs.playEnd));
}

void Player::cmdRev_Click() {
    if (!ready()) return;
    skipTo(skipReverseIndex(m_rs.buffer.RecIndex, m_rs.SkipSeconds * kRecordsPerSecond,
                            std::max(m_rs.playStart, 1)));
}

void Player::tmrSkip_Timer() {
    if (!playing() || !ready()) return;
    playOnFrom(positionOfRecord(recordIndexInRange(m_rs.buffer.RecIndex)));
}

void Player::playOnFrom(std::int64_t position) {
    m_skipPending = false;
    m_audioPosition = position;
    const int rc = m_rs.track->playFrom(position);
    if (soundLost(rc)) return;
    // A sound shorter than its records has nothing to play there: that is
    // the end of the sound, as when it runs out while playing.
    if (rc == kAudioBadRange) {
        cmdStop_Click();
        return;
    }
    m_mode = AudioMode::Playing;
    // The records due at once when the sound starts again are no lag.
    m_startingStep = true;
}

void Player::positionBarPress(double fraction) {
    if (!active() || !ready()) return;
    RecBuffer& b = m_rs.buffer;
    const double f = std::isnan(fraction) ? 0.0 : std::clamp(fraction, 0.0, 1.0);
    b.RecIndex = b.FindlvdRecord(static_cast<std::int32_t>(f * b.TotalTimeMs));
    m_audioPosition = audioPositionFor(b.CurRecord.TimeMs, m_rs.AudioBytesPerSec);
    showPlayedSeconds(audioSeconds(m_audioPosition, m_rs.AudioBytesPerSec));
    // Paused, the sound resumes from here on the next Play.
    if (playing()) playOnFrom(m_audioPosition);
}

void Player::positionBarRelease(double fraction) {
    if (active() || !ready()) return;
    const RecBuffer& b = m_rs.buffer;
    const double f = std::isnan(fraction) ? 0.0 : std::clamp(fraction, 0.0, 1.0);
    m_rs.playEnd = playEndAt(f, b.RecCount);
    showPosition();
    m_panel.setPlayTime(playTimeText(static_cast<std::int64_t>(f * b.TotalTimeMs / 1000)),
                        kPlayTimeColour);
}

// ---- Keys ----

PlayerKey Player::keyPressed(char key, const RecordPanelSink::Enabled& enabled) {
    const auto handled = [](bool on, auto&& action) {
        if (!on) return PlayerKey::None;
        action();
        return PlayerKey::Handled;
    };
    switch (std::toupper(static_cast<unsigned char>(key))) {
        case 'P':
            return handled(enabled.play, [this] { cmdPlay_Click(); });
        case 'S':
            if (!enabled.stop) return PlayerKey::None;
            if (!active()) return PlayerKey::StopRecording;
            cmdStop_Click();
            return PlayerKey::Handled;
        case ',':
            return handled(enabled.rev, [this] { cmdRev_Click(); });
        case '.':
            return handled(enabled.fwd, [this] { cmdFwd_Click(); });
        case 'R':
            return enabled.record ? PlayerKey::Record : PlayerKey::None;
        case 'T':
            return PlayerKey::Tag;
        case 'O':
            return enabled.load ? PlayerKey::Load : PlayerKey::None;
        case 'L':
            return enabled.load ? PlayerKey::LoadFromList : PlayerKey::None;
        default:
            return PlayerKey::None;
    }
}

// ---- Pacing ----

void Player::step() {
    if (!playing()) return;
    if (!ready()) {  // the track or the records went away under playback
        cmdStop_Click();
        return;
    }
    AudioTrack& track = *m_rs.track;
    // One reading of the sound's clock for the whole step; a failed query
    // keeps the last answer.
    std::int64_t pos = 0;
    const int asked = track.position(pos);
    if (asked == kAudioOk) m_audioPosition = pos;
    if (soundLost(asked)) return;
    AudioMode mode = AudioMode::NotReady;
    if (track.mode(mode) == kAudioOk) m_mode = mode;
    lagLampCheck();

    RecBuffer& b = m_rs.buffer;
    if (b.RecIndex > b.RecCount || b.RecIndex > m_rs.playEnd) {
        endOfRange();
        return;
    }
    // Paused by a skip: the skip timer restarts the sound where the skip landed.
    if (m_mode == AudioMode::Paused) return;

    const DueRecords due = dueRecords(b.valid(), b.RecIndex, std::min(b.RecCount, m_rs.playEnd),
                                      audioTimeMs(m_audioPosition, m_rs.AudioBytesPerSec));
    m_idleSteps = due.count == 0 ? m_idleSteps + 1 : 0;
    if (due.count == 0) {
        // The sound has ended before the records: none of them will fall due.
        if (m_mode != AudioMode::Playing) {
            cmdStop_Click();
            return;
        }
    } else {
        m_skipped += due.count - 1;
        b.RecIndex = due.last + 1;
        b.CurRecord = b(due.last);
        const std::int64_t late =
            audioTimeMs(m_audioPosition, m_rs.AudioBytesPerSec) - b.CurRecord.TimeMs;
        m_lateness.worst = std::max(m_lateness.worst, late);
        m_lateness.earliest = std::min(m_lateness.earliest, late);
        ++m_lateness.records;
        applyRecord(b.CurRecord);
        if (!std::exchange(m_startingStep, false) && playbackLagged(due.count, m_st.LagLimit)) {
            lampLag(m_st, m_cfg, m_display);
            m_lagLampOn = true;
            m_lagSince = m_pump.Timer();
        }
    }

    const std::int64_t seconds = audioSeconds(m_audioPosition, m_rs.AudioBytesPerSec);
    if (showPlayedSeconds(seconds)) showRecordingClock(seconds);
}

int Player::msToNextStep() const {
    const RecBuffer& b = m_rs.buffer;
    if (!playing() || m_mode != AudioMode::Playing || b.RecIndex < 1 || b.RecIndex > b.RecCount ||
        m_rs.AudioBytesPerSec <= 0)
        return kPlayStepMs;
    return stepWaitMs(b(b.RecIndex).TimeMs, audioTimeMs(m_audioPosition, m_rs.AudioBytesPerSec),
                      m_idleSteps);
}

void Player::endOfRange() {
    if (m_cfg.PlayLoopEnable && m_mode == AudioMode::Playing)
        Restart_Loop();
    else
        cmdStop_Click();
}

void Player::lagLampCheck() {
    if (!m_lagLampOn || secondsSince(m_pump, m_lagSince) < kLagLampSeconds) return;
    m_lagLampOn = false;
    // A recorded lamp drawn meanwhile stays; otherwise the lamp goes off and
    // the next record draws its own state again.
    if (m_st.LedColour == m_cfg.LED_Lag_Color) {
        setLamp(m_st, m_display, m_cfg.Dial_Color);
        m_lampCode = kLampOff;
    }
}

void Player::applyRecord(const lvdRecord& record) {
    const RecordReadout r = readoutOf(record);
    m_st.RawNeedle = r.rawReading;
    if (r.base != m_st.ShownBase) {
        m_st.ShownBase = r.base;
        m_display.Update_BaseDisplay(r.base);
    }
    m_st.BaseByte = record.BaseCode;
    if (r.bd != m_st.ShownBd) {
        m_st.ShownBd = r.bd;
        m_display.Update_BdDisplay(r.bd);
    }
    m_st.BdValue = record.BdCount;
    m_st.BdQuarter = record.BdCount * 4;
    if (r.sensitivity != m_st.SensPos) {
        m_st.SensPos = static_cast<std::int16_t>(r.sensitivity);
        m_display.Update_SensKnob(m_st.SensPos);
    }
    if (r.lampCode != m_lampCode) {
        setLamp(m_st, m_display, lampColourForCode(r.lampCode, m_cfg));
        m_lampCode = r.lampCode;
        if (r.lampCode == kLampBodyMotion) m_st.MotionFreeze = true;
        if (r.lampCode == kLampOff) m_st.MotionFreeze = false;
    }
    m_st.BdCounting = r.bdFlag;
    // The meter's own needle follows the recording.
    if (m_sendToMeter && m_st.PortNumber != 0)
        m_sendToMeter(protocol::playbackLine(r.needlePos, m_st.BdCounting, m_st.BdQuarter,
                                             m_st.ShownBase, record.StatusFlags));
    if (m_showNeedle) m_showNeedle(r.needlePos);
}

// ---- What the labels show ----

bool Player::showPlayedSeconds(std::int64_t seconds) {
    if (seconds == m_playedSeconds) return false;
    m_playedSeconds = seconds;
    m_panel.setPlayTime(playTimeText(seconds), kPlayTimeColour);
    showPosition();
    return true;
}

void Player::showRecordingClock(std::int64_t seconds) {
    const RecBuffer& b = m_rs.buffer;
    if (b.StartTimeSecs == 0) return;
    const std::int64_t at = b.StartTimeSecs + seconds;
    if (at % 60 != 0) return;
    // A recording that ran past midnight shows the next day's date.
    const auto date = std::chrono::year_month_day{std::chrono::sys_days{b.RecordingDate} +
                                                  std::chrono::days{at / 86400}};
    m_display.Update_Clock(static_cast<int>(at / 3600 % 24), static_cast<int>(at / 60 % 60), 0,
                           calendarDate(date));
}

void Player::showPosition() {
    const RecBuffer& b = m_rs.buffer;
    if (b.RecCount < 1) return;
    const double n = b.RecCount;
    m_panel.setPosition(std::clamp((b.RecIndex - 1) / n, 0.0, 1.0),
                        std::clamp(m_rs.playEnd / n, 0.0, 1.0));
}

void Player::showStatus(const std::string& text, Colour colour) {
    m_st.ShownStatus = text;
    m_st.StatusColour = colour;
    m_display.Update_ModeDisplay(text, colour);
}

}  // namespace lv
