#include "device/needle_test.h"

#include <gtest/gtest.h>

#include <vector>

#include "device/receive_event.h"
#include "support/fake_audio_track.h"
#include "support/recording_display.h"
#include "support/recording_panel.h"
#include "support/scripted_port.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

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
    NeedleTest test{st,
                    port,
                    tracks,
                    rs,
                    display,
                    panel,
                    prompter,
                    [this](std::int32_t n) { shown.push_back(n); },
                    [this] { ++beeps; }};

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

TEST(NeedleTestCycle, SineOfTwoHundredRecords) {
    const auto cycle = needleTestCycle();
    const struct {
        int record;
        std::int16_t needle;
    } cases[] = {{1, 283},    {25, 6364},   {50, 9000},   {75, 6364},  {100, 0},
                 {101, -283}, {150, -9000}, {175, -6364}, {199, -283}, {200, 0}};
    for (const auto& c : cases) EXPECT_EQ(cycle[c.record - 1], c.needle) << "record " << c.record;
}

TEST(NeedleTest, StepsEveryTwentyMillisecondsOfThePlaceholder) {
    Rig r;
    ASSERT_TRUE(r.test.start());
    // Position -> record shown after the poll; each step times the next from
    // where it found the clock, so a late poll (65) pushes the next to 85.
    const struct {
        std::int64_t ms;
        int record;
    } polls[] = {{0, 0}, {19, 0}, {20, 1}, {39, 1}, {40, 2}, {65, 3}, {84, 3}, {85, 4}};
    for (const auto& p : polls) {
        r.at(p.ms);
        EXPECT_EQ(r.test.record(), p.record) << "at " << p.ms << " ms";
    }
    const auto cycle = needleTestCycle();
    EXPECT_EQ(r.shown, (std::vector<std::int32_t>{cycle[0], cycle[1], cycle[2], cycle[3]}));
    EXPECT_EQ(r.st.RawNeedle, cycle[3]);  // what the chart plots

    // A clock that does not answer (no placeholder file) stands the test still.
    r.placeholder.fail["status"] = kAudioNotOpen;
    r.at(1000);
    EXPECT_EQ(r.test.record(), 4);
}

TEST(NeedleTest, WrapsAfterRecord200AndBeepsAtRecord1OnlyWithTestAudio) {
    for (const bool audio : {false, true}) {
        Rig r;
        if (audio) {
            EXPECT_TRUE(r.test.toggleTestAudio());
        }
        ASSERT_TRUE(r.test.start());
        std::vector<int> beepAt;
        for (int n = 1; n <= 2 * kTestRecords + 1; ++n) {
            const int before = r.beeps;
            r.at(n * kTestRecordMs);
            if (r.beeps != before) beepAt.push_back(n);
            if (n == kTestRecords) {
                EXPECT_EQ(r.test.record(), kTestRecords);
            }
        }
        EXPECT_EQ(r.test.record(), 1);
        EXPECT_EQ(r.shown.size(), 2u * kTestRecords + 1);
        EXPECT_EQ(r.shown[kTestRecords], r.shown[0]);
        EXPECT_EQ(beepAt, audio ? std::vector<int>({1, 201, 401}) : std::vector<int>{});
    }
}

TEST(NeedleTest, UnsavedRecordingAsksFirst) {
    for (const Answer answer : {Answer::No, Answer::Yes}) {
        Rig r;
        r.rs.RecNotSaved = true;
        r.prompter.answers = {answer};
        const bool started = r.test.start();
        EXPECT_EQ(r.prompter.asked, (std::vector<test::ScriptedPrompter::Question>{
                                        {"Warning", "Previous recording not saved, Continue?",
                                         Buttons::YesNo, Icon::None}}));
        EXPECT_EQ(started, answer == Answer::Yes);
        EXPECT_EQ(r.st.TestModeOn, started);
        if (started) continue;
        EXPECT_EQ(r.st.RunMode, kRunLive);
        EXPECT_EQ(r.st.SensPos, 36);
        EXPECT_TRUE(r.display.calls.empty());
        EXPECT_TRUE(r.panel.calls.empty());
        EXPECT_TRUE(r.port.thresholds.empty());
        EXPECT_EQ(r.port.discards, 0);
        EXPECT_TRUE(r.placeholder.log.empty());
        EXPECT_TRUE(r.sound.log.empty());
    }
}

TEST(NeedleTest, RefusedWhileRecordingOrPlaying) {
    for (const std::int16_t mode : {kRunRecording, kRunPlayback}) {
        Rig r;
        r.st.RunMode = mode;
        EXPECT_FALSE(r.test.start());
        EXPECT_EQ(r.st.RunMode, mode);
        EXPECT_FALSE(r.st.TestModeOn);
        EXPECT_TRUE(r.placeholder.log.empty());
    }
}

TEST(NeedleTest, StartAndStopRestoreTheLinkWithAndWithoutAMeter) {
    const struct {
        std::int16_t port;
        int threshold;
        std::vector<std::string> written;
        std::int16_t runMode;
    } cases[] = {{1, kSearchThreshold, {"U\r"}, kRunLive}, {0, 0, {}, kRunNoMeter}};
    for (const auto& c : cases) {
        Rig r;
        r.st.PortNumber = c.port;
        r.st.GoodFrames = 5;
        r.rs.track = &r.sound;  // a loaded recording's sound
        ASSERT_TRUE(r.test.start());

        EXPECT_EQ(r.panel.loadedCaption, "No File Loaded");
        EXPECT_EQ(r.panel.loadedTooltip, "No File Loaded");
        EXPECT_FALSE(r.panel.enabled.record);
        EXPECT_FALSE(r.panel.enabled.load);
        EXPECT_EQ(r.port.thresholds, std::vector<int>{0});
        EXPECT_EQ(r.port.discards, 1);
        EXPECT_EQ(r.st.RunMode, kRunPlayback);
        EXPECT_TRUE(r.st.TestModeOn);
        EXPECT_EQ(r.st.SensPos, 0);
        EXPECT_EQ(r.st.ShownStatus, "Test Mode");
        EXPECT_EQ(r.display.take(), (std::vector<std::string>{"Mode(Test Mode,7)", "Knob(0)"}));
        EXPECT_EQ(r.sound.log, std::vector<std::string>{"close"});
        EXPECT_EQ(r.rs.track, nullptr);
        EXPECT_EQ(r.placeholder.log, (std::vector<std::string>{"open compressed /data/dummy.mp3",
                                                               "status length", "play"}));
        r.placeholder.log.clear();
        // A second start while running keeps the test as it is.
        EXPECT_TRUE(r.test.start());
        EXPECT_TRUE(r.placeholder.log.empty());

        r.test.stop();
        EXPECT_EQ(r.placeholder.log, (std::vector<std::string>{"stop", "close"}));
        EXPECT_TRUE(r.panel.enabled.record);
        EXPECT_TRUE(r.panel.enabled.load);
        EXPECT_EQ(r.port.threshold(), c.threshold);
        EXPECT_EQ(r.port.written, c.written);
        EXPECT_EQ(r.st.GoodFrames, c.port ? 0 : 5);
        EXPECT_EQ(r.st.RunMode, c.runMode);
        EXPECT_EQ(r.port.discards, 2);
        EXPECT_EQ(r.st.ShownStatus, "Input OK");
        EXPECT_EQ(r.display.take(), (std::vector<std::string>{"Mode(Input OK,7)", "Knob(36)"}));
        EXPECT_EQ(r.st.SensPos, 36);
        EXPECT_FALSE(r.st.TestModeOn);
        EXPECT_FALSE(r.test.running());

        // Stopped, the test neither steps nor stops twice.
        r.at(1000);
        r.test.stop();
        EXPECT_TRUE(r.shown.empty());
        EXPECT_EQ(r.port.written, c.written);
    }
}

}  // namespace
}  // namespace lv
