#include "device/needle_test.h"

#include <gtest/gtest.h>

#include "device/receive_event.h"
#include "support/fake_audio_track.h"
#include "support/recording_display.h"
#include "support/recording_panel.h"
#include "support/scripted_port.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

using Strings = std::vector<std::string>;

struct Rig {
    MeterState st;
    test::ScriptedPort port;
    test::FakeAudioTrack sound, placeholder;
    AudioTracks tracks{sound, placeholder, "/data/dummy.mp3"};
    RecordingState rs;
    test::RecordingDisplay display;
    test::RecordingPanel panel;
    test::ScriptedPrompter prompter;
    std::vector<std::int32_t> shown;
    int beeps = 0;
    std::function<void(std::int32_t)> show = [this](std::int32_t n) { shown.push_back(n); };
    std::function<void()> beep = [this] { ++beeps; };
    NeedleTest test{st, port, tracks, rs, display, panel, prompter, show, beep};

    Rig() {
        st.RunMode = kRunLive;
        st.PortNumber = 1;
        st.SensPos = 36;
        st.StatusText = st.ShownStatus = "Input OK";
        st.StatusColour = 7;
        port.setThreshold(kReceiveThreshold);
        port.thresholds.clear();
    }
    void at(std::int64_t ms) {
        placeholder.pos = ms;
        test.step();
    }
};

TEST(NeedleTest, ASineOfTwoHundredRecordsEveryTwentyMillisecondsOfThePlaceholder) {
    const auto cycle = needleTestCycle();
    // Record 140 is -8559 only with the program's own pi, 3.14159.
    const std::pair<int, int> records[] = {{1, 283},     {50, 9000},   {75, 6364},  {100, 0},
                                           {140, -8559}, {150, -9000}, {199, -283}, {200, 0}};
    for (auto [record, needle] : records)
        EXPECT_EQ(cycle[record - 1], needle) << "record " << record;
    Rig r;
    ASSERT_TRUE(r.test.start());
    // Each step times the next from where it found the clock: a late poll (65) delays the next.
    for (auto [ms, record] :
         {std::pair{0, 0}, {19, 0}, {20, 1}, {40, 2}, {65, 3}, {84, 3}, {85, 4}}) {
        r.at(ms);
        EXPECT_EQ(r.test.record(), record) << "at " << ms << " ms";
    }
    EXPECT_EQ(r.shown, (std::vector<std::int32_t>{cycle[0], cycle[1], cycle[2], cycle[3]}));
    EXPECT_EQ(r.st.RawNeedle, cycle[3]);           // what the chart plots
    r.placeholder.fail["status"] = kAudioNotOpen;  // a clock that does not answer stands still
    r.at(1000);
    EXPECT_EQ(r.test.record(), 4);
}

TEST(NeedleTest, WrapsAfterRecord200AndBeepsAtRecord1OnlyWithTestAudio) {
    for (const bool audio : {false, true}) {
        Rig r;
        if (audio) r.test.toggleTestAudio();
        ASSERT_TRUE(r.test.start());
        std::vector<int> beepAt;
        for (int n = 1, before = 0; n <= 2 * kTestRecords + 1; ++n, before = r.beeps) {
            r.at(n * kTestRecordMs);
            if (r.beeps != before) beepAt.push_back(n);
        }
        EXPECT_EQ(r.test.record(), 1);
        EXPECT_EQ(r.shown[kTestRecords], r.shown[0]);
        EXPECT_EQ(beepAt, audio ? std::vector<int>({1, 201, 401}) : std::vector<int>{});
    }
}

TEST(NeedleTest, RefusedWhileRecordingOrPlayingAndAsksOverAnUnsavedRecording) {
    const std::tuple<std::int16_t, bool, Answer, bool> cases[] = {
        {kRunRecording, false, Answer::Yes, false},
        {kRunPlayback, false, Answer::Yes, false},
        {kRunLive, true, Answer::No, false},
        {kRunLive, true, Answer::Yes, true}};
    for (auto [mode, unsaved, answer, started] : cases) {
        Rig r;
        r.st.RunMode = mode;
        r.rs.RecNotSaved = unsaved;
        r.prompter.answers = {answer};
        EXPECT_EQ(r.test.start(), started);
        const test::ScriptedPrompter::Question ask{
            "Warning", "Previous recording not saved, Continue?", Buttons::YesNo, Icon::None};
        EXPECT_EQ(r.prompter.asked, std::vector(unsaved ? 1 : 0, ask));
        EXPECT_EQ(r.st.TestModeOn, started);
        if (started) continue;
        EXPECT_EQ(std::pair(r.st.RunMode, r.st.SensPos), std::pair(mode, std::int16_t{36}));
        EXPECT_TRUE(r.display.calls.empty() && r.port.thresholds.empty() &&
                    r.placeholder.log.empty() && r.sound.log.empty());
    }
}

TEST(NeedleTest, StartAndStopRestoreTheLinkWithAndWithoutAMeter) {
    const std::tuple<std::int16_t, int, Strings, std::int16_t> cases[] = {
        {1, kSearchThreshold, {"U\r"}, kRunLive}, {0, 0, {}, kRunNoMeter}};
    for (const auto& [portNumber, threshold, written, runMode] : cases) {
        Rig r;
        r.st.PortNumber = portNumber;
        r.st.GoodFrames = 5;
        r.rs.track = &r.sound;  // a loaded recording's sound
        ASSERT_TRUE(r.test.start());
        EXPECT_EQ(r.panel.loadedCaption, "No File Loaded");
        EXPECT_FALSE(r.panel.enabled.record || r.panel.enabled.load);
        EXPECT_EQ(std::pair(r.port.thresholds, r.port.discards), std::pair(std::vector<int>{0}, 1));
        EXPECT_EQ(std::tuple(r.st.RunMode, r.st.SensPos, r.st.ShownStatus),
                  std::tuple(kRunPlayback, std::int16_t{0}, std::string("Test Mode")));
        EXPECT_EQ(r.display.take(), (Strings{"Mode(Test Mode,7)", "Knob(0)"}));
        EXPECT_EQ(r.sound.log, Strings{"close"});
        EXPECT_EQ(r.rs.track, nullptr);
        EXPECT_EQ(r.placeholder.log,
                  (Strings{"open compressed /data/dummy.mp3", "status length", "play"}));
        r.placeholder.log.clear();
        EXPECT_TRUE(r.test.start()) << "a second start keeps the test as it is";
        EXPECT_TRUE(r.placeholder.log.empty());

        r.test.stop();
        EXPECT_EQ(r.placeholder.log, (Strings{"stop", "close"}));
        EXPECT_TRUE(r.panel.enabled.record && r.panel.enabled.load);
        EXPECT_EQ(std::tuple(r.port.threshold(), r.port.written, r.port.discards),
                  std::tuple(threshold, written, 2));
        EXPECT_EQ(std::pair(r.st.GoodFrames, r.st.RunMode), std::pair(portNumber ? 0 : 5, runMode));
        EXPECT_EQ(r.display.take(), (Strings{"Mode(Input OK,7)", "Knob(36)"}));
        EXPECT_FALSE(r.st.TestModeOn || r.test.running());
        r.at(1000);  // stopped, the test neither steps nor stops twice
        r.test.stop();
        EXPECT_TRUE(r.shown.empty());
        EXPECT_EQ(r.port.written, written);
    }
}

}  // namespace
}  // namespace lv
