#pragma once
#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "common/display_sink.h"
#include "common/prompter.h"
#include "device/serial_port.h"
#include "recording/record_panel_sink.h"
#include "recording/recording_state.h"
#include "signal/meter_state.h"

namespace lv {

// One cycle of the test sine: 200 records, 20 ms apart, so 4 s a cycle.
inline constexpr int kTestRecords = 200;
inline constexpr std::int64_t kTestRecordMs = 20;
// How often the window polls the placeholder's clock while the test runs;
// well under a record, so a record is never more than this late.
inline constexpr int kNeedleTestStepMs = 10;
inline constexpr std::int32_t kTestAmplitude = 9000;  // needle units, inside the dial's 10500
inline constexpr std::string_view kStatusTestMode = "Test Mode";

// The needle values of test records 1..200 (at [0]..[199]): a full sine
// swing of +-9000 starting one step past zero and ending back on it.
std::array<std::int16_t, kTestRecords> needleTestCycle();

// The needle test: sweeps the dial and the chart with a synthetic sine timed
// by the silent placeholder track, with the meter link taken out of its
// receive cycle meanwhile. The window owns the timer: it calls step() every
// kNeedleTestStepMs while running().
class NeedleTest {
public:
    // Shows one sample's needle value: the needle, and the chart when shown.
    using ShowNeedle = std::function<void(std::int32_t needle)>;
    using Beep = std::function<void()>;

    NeedleTest(MeterState& st, SerialPort& port, AudioTracks& tracks, RecordingState& rs,
               DisplaySink& display, RecordPanelSink& panel, Prompter& prompter,
               ShowNeedle showNeedle, Beep beep = {});

    // The menu item was checked. False when the test did not start (the
    // operator kept an unsaved recording, or a recording or playback holds
    // the display): the item goes back unchecked and nothing has changed.
    bool start();
    // One poll of the placeholder's clock: shows the next record when one is due.
    void step();
    // The menu item was unchecked: the link and the knob as they were, and
    // the meter told to start its stream again. Leaving the program tells
    // the meter nothing.
    enum class Ending { MenuItem, Exit };
    void stop(Ending ending = Ending::MenuItem);

    bool running() const { return m_running; }
    // With test audio on, a beep marks the start of each cycle.
    bool testAudio() const { return m_testAudio; }
    bool toggleTestAudio() { return m_testAudio = !m_testAudio; }
    // The record shown last, 1..200; 0 before the first.
    int record() const { return m_record; }

private:
    MeterState& m_st;
    SerialPort& m_port;
    AudioTracks& m_tracks;
    RecordingState& m_rs;
    DisplaySink& m_display;
    RecordPanelSink& m_panel;
    Prompter& m_prompter;
    ShowNeedle m_showNeedle;
    Beep m_beep;

    std::array<std::int16_t, kTestRecords> m_cycle{};
    bool m_running = false;
    bool m_testAudio = false;
    int m_record = 0;
    std::int64_t m_stepMs = 0;  // placeholder time of the record shown last
    std::int16_t m_savedSensPos = 0;
};

}  // namespace lv
