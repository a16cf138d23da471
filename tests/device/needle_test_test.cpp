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
    NeedleTest test{st,      port,  tracks,   rs,
                    display, panel, prompter, [this](std::int32_t n) { shown.push_back(n); }};

    Rig() {
        st.RunMode = kRunLive;
        st.PortNumber = 1;
        st.SensPos = 36;
        st.StatusText = st.ShownStatus = "Input OK";
        st.StatusColour = 7;
        port.setThreshold(kReceiveThreshold);
    }
    void at(std::int64_t ms) {
        placeholder.pos = ms;
        test.step();
    }
};

TEST(NeedleTest, ASineOfTwoHundredRecordsEveryTwentyMillisecondsOfThePlaceholder) {
    const auto cycle = needleTestCycle();
    // Record 140 is -8559 only with the program's own pi, 3.14159.
    const std::pair<int, int> records[] = {
        {1, 283}, {50, 9000}, {140, -8559}, {199, -283}, {200, 0}};
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
}

// Refused while recording; over an unsaved recording only when the operator says so. Stopped,
// the link is as before: the stream restarted, the meter's threshold and status back.
TEST(NeedleTest, AsksOverAnUnsavedRecordingAndStopRestoresTheLink) {
    Rig refused;
    refused.st.RunMode = kRunRecording;
    EXPECT_FALSE(refused.test.start());
    EXPECT_TRUE(refused.display.calls.empty() && refused.placeholder.log.empty());
    Rig r;
    r.rs.RecNotSaved = true;
    r.st.GoodFrames = 5;
    r.rs.track = &r.sound;  // a loaded recording's sound
    r.prompter.answers = {Answer::No, Answer::Yes};
    EXPECT_FALSE(r.test.start());
    ASSERT_TRUE(r.test.start());
    const test::ScriptedPrompter::Question ask{"Warning", "Previous recording not saved, Continue?",
                                               Buttons::YesNo, Icon::None};
    EXPECT_EQ(r.prompter.asked, std::vector(2, ask));
    EXPECT_EQ(std::tuple(r.st.RunMode, r.st.SensPos, r.port.threshold(), r.sound.log),
              std::tuple(kRunPlayback, std::int16_t{0}, 0, Strings{"close"}));
    r.test.stop();
    EXPECT_EQ(r.placeholder.log, (Strings{"open compressed /data/dummy.mp3", "status length",
                                          "play", "stop", "close"}));
    EXPECT_EQ(std::tuple(r.port.threshold(), r.port.written, r.st.GoodFrames, r.st.RunMode),
              std::tuple(kSearchThreshold, Strings{"U\r"}, 0, kRunLive));
    EXPECT_EQ(r.display.only("Mode("), (Strings{"Mode(Test Mode,7)", "Mode(Input OK,7)"}));
    EXPECT_FALSE(r.st.TestModeOn || r.test.running());
}

}  // namespace
}  // namespace lv
