#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "recording/silent_track.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

// One step of a script: move the fake clock, give a command, then check the
// code it returned and where the clock stands.
struct Step {
    double advance;  // seconds, before the command
    std::string command;
    std::int64_t arg;
    int code;
    std::int64_t positionMs;
    AudioMode mode;
};

struct Script {
    const char* name;
    std::vector<Step> steps;
};

int run(SilentTrack& track, const std::string& command, std::int64_t arg) {
    if (command == "play") return track.play();
    if (command == "record") return track.record();
    if (command == "pause") return track.pause();
    if (command == "stop") return track.stop();
    if (command == "seek") return track.seek(arg);
    if (command == "playFrom") return track.playFrom(arg);
    if (command == "delete") return track.deleteFromStart(arg);
    if (command == "poll") return kAudioOk;
    ADD_FAILURE() << "unknown command " << command;
    return -1;
}

class SilentTrackTest : public ::testing::Test {
protected:
    test::TempDir dir{"silent_track"};
    std::string dummy = dir.file("dummy.mp3");
    double now = 1000.0;
    SilentTrack track{[this] { return now; }};

    void SetUp() override { std::ofstream(dummy) << "placeholder"; }
};

TEST_F(SilentTrackTest, ClockFollowsTheCommands) {
    constexpr auto P = AudioMode::Playing, S = AudioMode::Stopped, Z = AudioMode::Paused,
                   R = AudioMode::Recording;
    constexpr std::int64_t end = SilentTrack::kLengthMs;
    const std::vector<Script> scripts = {
        {"opens stopped at zero", {{5.0, "poll", 0, kAudioOk, 0, S}}},
        {"play runs, pause freezes, play resumes",
         {{0.0, "play", 0, kAudioOk, 0, P},
          {1.5, "poll", 0, kAudioOk, 1500, P},
          {0.0, "pause", 0, kAudioOk, 1500, Z},
          {2.0, "poll", 0, kAudioOk, 1500, Z},
          {0.0, "play", 0, kAudioOk, 1500, P},
          {0.25, "poll", 0, kAudioOk, 1750, P}}},
        {"record runs the clock too",
         {{0.0, "record", 0, kAudioOk, 0, R},
          {2.02, "stop", 0, kAudioOk, 2020, S},
          {1.0, "poll", 0, kAudioOk, 2020, S},
          {0.0, "delete", 44100, kAudioOk, 2020, S}}},
        {"seek stops and moves, playFrom starts there",
         {{0.0, "play", 0, kAudioOk, 0, P},
          {1.0, "seek", 5000, kAudioOk, 5000, S},
          {1.0, "poll", 0, kAudioOk, 5000, S},
          {0.0, "playFrom", 200, kAudioOk, 200, P},
          {0.5, "poll", 0, kAudioOk, 700, P}}},
        {"a second play while playing changes nothing",
         {{0.0, "play", 0, kAudioOk, 0, P},
          {0.3, "play", 0, kAudioOk, 300, P},
          {0.3, "poll", 0, kAudioOk, 600, P}}},
        {"pause while stopped stays stopped",
         {{0.0, "pause", 0, kAudioOk, 0, S}, {1.0, "poll", 0, kAudioOk, 0, S}}},
        {"positions outside the track are refused",
         {{0.0, "seek", -1, kAudioBadRange, 0, S},
          {0.0, "playFrom", end + 1, kAudioBadRange, 0, S},
          {0.0, "seek", end, kAudioOk, end, S}}},
        {"the clock stops at the end",
         {{0.0, "playFrom", end - 100, kAudioOk, end - 100, P},
          {1.0, "poll", 0, kAudioOk, end, S}}},
        {"a clock that goes back is not followed",
         {{0.0, "play", 0, kAudioOk, 0, P}, {-0.5, "poll", 0, kAudioOk, 0, P}}},
    };
    for (const auto& script : scripts) {
        SCOPED_TRACE(script.name);
        ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
        for (std::size_t i = 0; i < script.steps.size(); ++i) {
            const Step& s = script.steps[i];
            SCOPED_TRACE("step " + std::to_string(i) + " " + s.command);
            now += s.advance;
            EXPECT_EQ(run(track, s.command, s.arg), s.code);
            std::int64_t position = -1;
            AudioMode mode = AudioMode::NotReady;
            EXPECT_EQ(track.position(position), kAudioOk);
            EXPECT_EQ(track.mode(mode), kAudioOk);
            EXPECT_EQ(position, s.positionMs);
            EXPECT_EQ(mode, s.mode);
        }
    }
}

// Polled every 1.5 ms, the clock must not lose the fractions of milliseconds
// each poll leaves over.
TEST_F(SilentTrackTest, FrequentPollsKeepTime) {
    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    ASSERT_EQ(track.play(), kAudioOk);
    std::int64_t position = 0;
    for (int i = 0; i < 1000; ++i) {
        now += 0.0015;
        ASSERT_EQ(track.position(position), kAudioOk);
    }
    EXPECT_EQ(position, 1500);
}

TEST_F(SilentTrackTest, RefusesWhatThePlaceholderCannotDo) {
    std::int64_t value = 0;
    int a = 0, b = 0, c = 0;
    AudioMode mode = AudioMode::Playing;
    // Closed: nothing but mode answers.
    EXPECT_EQ(track.play(), kAudioNotOpen);
    EXPECT_EQ(track.position(value), kAudioNotOpen);
    EXPECT_EQ(track.seek(0), kAudioNotOpen);
    EXPECT_EQ(track.mode(mode), kAudioOk);
    EXPECT_EQ(mode, AudioMode::NotReady);

    EXPECT_EQ(track.openFile(dir.file("absent.mp3"), AudioKind::Compressed), kAudioFileNotFound);
    EXPECT_EQ(track.openFile(dir.path().string(), AudioKind::Compressed), kAudioFileNotFound);
    EXPECT_EQ(track.openFile(dummy, AudioKind::Wave), kAudioBadFile);
    EXPECT_EQ(track.openNewWave(), kAudioWrongMode);
    EXPECT_EQ(track.play(), kAudioNotOpen);

    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    EXPECT_EQ(track.length(value), kAudioOk);
    EXPECT_EQ(value, SilentTrack::kLengthMs);
    EXPECT_EQ(track.waveFormat(a, b, c), kAudioWrongMode);
    // Saving the silence would leave a wave that holds no sound.
    const std::string wave = dir.file("take.wav");
    EXPECT_EQ(track.save(wave), kAudioWrongMode);
    EXPECT_FALSE(std::filesystem::exists(wave));

    ASSERT_EQ(track.play(), kAudioOk);
    now += 1.0;
    EXPECT_EQ(track.close(), kAudioOk);
    EXPECT_EQ(track.position(value), kAudioNotOpen);
    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    EXPECT_EQ(track.position(value), kAudioOk);
    EXPECT_EQ(value, 0);
}

// Without an injected clock the track runs on the system's monotonic clock.
TEST(SilentTrackClock, DefaultClockRuns) {
    test::TempDir dir("silent_clock");
    std::ofstream(dir.file("dummy.mp3")) << "x";
    SilentTrack track;
    ASSERT_EQ(track.openFile(dir.file("dummy.mp3"), AudioKind::Compressed), kAudioOk);
    ASSERT_EQ(track.play(), kAudioOk);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    std::int64_t position = 0;
    ASSERT_EQ(track.position(position), kAudioOk);
    EXPECT_GE(position, 30);
    EXPECT_LT(position, 5000);
}

}  // namespace
}  // namespace lv
