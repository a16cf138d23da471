#include "device/needle_test.h"

#include <cmath>

#include "common/vb_format.h"
#include "device/link_status.h"
#include "device/protocol.h"
#include "device/receive_event.h"

namespace lv {

namespace {

constexpr const char* kNoFileLoaded = "No File Loaded";

}  // namespace

std::array<std::int16_t, kTestRecords> needleTestCycle() {
    // The phase is summed step by step with the program's own value of pi,
    // so record 200 lands a hair short of a full turn and still rounds to 0.
    std::array<std::int16_t, kTestRecords> cycle{};
    double phase = 0;
    for (std::int16_t& needle : cycle) {
        phase += 2 * 3.14159 / kTestRecords;
        needle = static_cast<std::int16_t>(roundHalfEven(kTestAmplitude * std::sin(phase)));
    }
    return cycle;
}

NeedleTest::NeedleTest(MeterState& st, SerialPort& port, AudioTracks& tracks, RecordingState& rs,
                       DisplaySink& display, RecordPanelSink& panel, Prompter& prompter,
                       ShowNeedle showNeedle, Beep beep)
    : m_st(st),
      m_port(port),
      m_tracks(tracks),
      m_rs(rs),
      m_display(display),
      m_panel(panel),
      m_prompter(prompter),
      m_showNeedle(std::move(showNeedle)),
      m_beep(std::move(beep)),
      m_cycle(needleTestCycle()) {}

bool NeedleTest::start() {
    if (m_running) return true;
    // The test takes over the run mode and the placeholder's clock: a
    // recording or a playback under way would lose its time base.
    if (m_st.RunMode == kRunRecording || m_st.RunMode == kRunPlayback) return false;
    if (m_rs.RecNotSaved && m_prompter.ask("Warning", "Previous recording not saved, Continue?",
                                           Buttons::YesNo, Icon::None) != Answer::Yes)
        return false;

    m_panel.setLoadedFile(kNoFileLoaded, kNoFileLoaded);
    // Every control stays off, not only Record: a load or a play would open
    // the track the test is timed by.
    RecordPanelSink::Enabled off;
    off.record = off.stop = off.play = off.loop = off.fwd = off.rev = off.save = off.load =
        off.settings = off.positionBar = false;
    m_panel.setEnabled(off);

    // The meter's frames would move the needle too: nothing is received.
    m_port.setThreshold(0);
    m_port.discardInput();

    // Run mode 2 also keeps the watchdog quiet while no frames arrive.
    m_st.RunMode = kRunPlayback;
    m_savedSensPos = m_st.SensPos;
    showStatus(m_st, m_display, kStatusTestMode, m_st.StatusColour);
    m_st.SensPos = 0;
    m_display.Update_SensKnob(m_st.SensPos);

    // The sound or the placeholder of a loaded recording goes: the test
    // needs the placeholder to itself, and the label now says nothing is loaded.
    (m_rs.track ? *m_rs.track : m_tracks.sound).close();
    m_rs.track = nullptr;
    AudioTrack& clock = m_tracks.placeholder;
    // A missing placeholder is not reported: its position never answers, so
    // the test simply stands still.
    clock.openFile(m_tracks.dummyPath, AudioKind::Compressed);
    std::int64_t lengthMs = 0;
    clock.length(lengthMs);

    m_record = 0;
    m_stepMs = 0;
    clock.play();
    m_running = true;
    m_st.TestModeOn = true;
    return true;
}

void NeedleTest::step() {
    if (!m_running) return;
    std::int64_t t = 0;
    if (m_tracks.placeholder.position(t) != kAudioOk) return;
    if (t - m_stepMs < kTestRecordMs) return;
    // Timed from when this step found the clock, not from a fixed grid: a
    // late poll delays the following records rather than bunching them.
    m_stepMs = t;
    m_record = m_record % kTestRecords + 1;
    const std::int32_t needle = m_cycle[static_cast<std::size_t>(m_record - 1)];
    // The chart plots RawNeedle; the needle is drawn from the record itself,
    // as in playback.
    m_st.RawNeedle = needle;
    if (m_record == 1 && m_testAudio && m_beep) m_beep();
    // The meter's needle follows the test as it follows a playback. A test
    // record holds only its needle: its lamp and BD flags are clear.
    if (m_st.PortNumber != 0)
        m_port.write(
            protocol::playbackLine(needle, m_st.BdCounting, m_st.BdQuarter, m_st.ShownBase, 0));
    if (m_showNeedle) m_showNeedle(needle);
}

void NeedleTest::stop(Ending ending) {
    if (!m_running) return;
    m_running = false;
    m_tracks.placeholder.stop();
    m_tracks.placeholder.close();
    m_panel.setEnabled({});

    if (m_st.PortNumber != 0) {
        // Back to the live cycle: the link earns "Input OK" afresh, and the
        // start command resumes the meter's frames.
        m_st.GoodFrames = 0;
        m_port.setThreshold(kSearchThreshold);
        if (ending == Ending::MenuItem) m_port.write(protocol::commandLine(protocol::kStart));
        m_st.RunMode = kRunLive;
    } else {
        m_st.RunMode = kRunNoMeter;
    }
    m_port.discardInput();
    showStatus(m_st, m_display, m_st.StatusText, m_st.StatusColour);
    m_st.SensPos = m_savedSensPos;
    m_display.Update_SensKnob(m_st.SensPos);
    m_st.TestModeOn = false;
}

}  // namespace lv
