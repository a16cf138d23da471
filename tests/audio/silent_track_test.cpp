#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "audio/silent_track.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

class SilentTrackTest : public ::testing::Test {
protected:
    test::TempDir dir{"silent_track"};
    std::string dummy = dir.file("dummy.mp3");
    double now = 1000.0;
    SilentTrack track{[this] { return now; }};

    void SetUp() override { test::writeFile(dummy, "placeholder"); }
    std::int64_t position() {
        std::int64_t p = -1;
        EXPECT_EQ(track.position(p), kAudioOk);
        return p;
    }
};

TEST_F(SilentTrackTest, ClockFollowsTheCommands) {
    constexpr auto P = AudioMode::Playing, S = AudioMode::Stopped, Z = AudioMode::Paused,
                   R = AudioMode::Recording;
    constexpr std::int64_t end = SilentTrack::kLengthMs;
    // Seconds the fake clock moves, the command, its code, then position and mode.
    struct Step {
        double advance;
        std::string command;
        std::int64_t arg;
        int code;
        std::int64_t positionMs;
        AudioMode mode;
    };
    const std::vector<std::pair<const char*, std::vector<Step>>> scripts = {
        {"play runs, pause freezes, play resumes",
         {{0.0, "play", 0, kAudioOk, 0, P},
          {1.5, "pause", 0, kAudioOk, 1500, Z},
          {2.0, "play", 0, kAudioOk, 1500, P},
          {0.25, "poll", 0, kAudioOk, 1750, P}}},
        {"record runs the clock too",
         {{0.0, "record", 0, kAudioOk, 0, R}, {2.02, "stop", 0, kAudioOk, 2020, S}}},
        {"seek stops and moves, playFrom starts there",
         {{0.0, "play", 0, kAudioOk, 0, P},
          {1.0, "seek", 5000, kAudioOk, 5000, S},
          {1.0, "playFrom", 200, kAudioOk, 200, P},
          {0.5, "poll", 0, kAudioOk, 700, P}}},
        {"positions outside the track are refused",
         {{0.0, "seek", -1, kAudioBadRange, 0, S},
          {0.0, "playFrom", end + 1, kAudioBadRange, 0, S}}},
        {"the clock stops at the end, and never goes back",
         {{0.0, "playFrom", end - 100, kAudioOk, end - 100, P},
          {-0.5, "poll", 0, kAudioOk, end - 100, P},
          {1.5, "poll", 0, kAudioOk, end, S}}},
    };
    for (const auto& [name, steps] : scripts) {
        SCOPED_TRACE(name);
        ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
        for (const Step& s : steps) {
            SCOPED_TRACE(s.command);
            now += s.advance;
            const std::string& c = s.command;
            EXPECT_EQ(c == "play"       ? track.play()
                      : c == "record"   ? track.record()
                      : c == "pause"    ? track.pause()
                      : c == "stop"     ? track.stop()
                      : c == "seek"     ? track.seek(s.arg)
                      : c == "playFrom" ? track.playFrom(s.arg)
                                        : kAudioOk,
                      s.code);
            AudioMode mode = AudioMode::NotReady;
            EXPECT_EQ(track.mode(mode), kAudioOk);
            EXPECT_EQ(std::pair(position(), mode), std::pair(s.positionMs, s.mode));
        }
    }
    // Polled every 1.5 ms, the clock must not lose the fractions each poll leaves over.
    ASSERT_EQ(track.playFrom(0), kAudioOk);
    for (int i = 0; i < 999; ++i, now += 0.0015) position();
    now += 0.0015;
    EXPECT_EQ(position(), 1500);
}

TEST_F(SilentTrackTest, RefusesWhatThePlaceholderCannotDo) {
    std::int64_t value = 0;
    EXPECT_EQ(track.play(), kAudioNotOpen);
    EXPECT_EQ(track.openFile(dir.file("absent.mp3"), AudioKind::Compressed), kAudioFileNotFound);
    EXPECT_EQ(track.openFile(dummy, AudioKind::Wave), kAudioBadFile);
    EXPECT_EQ(track.openNewWave(), kAudioWrongMode);
    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    // Saving the silence would leave a wave that holds no sound.
    EXPECT_EQ(track.save(dir.file("take.wav")), kAudioWrongMode);
    EXPECT_FALSE(std::filesystem::exists(dir.file("take.wav")));
    ASSERT_EQ(track.play(), kAudioOk);
    now += 1.0;
    EXPECT_EQ(track.close(), kAudioOk);
    EXPECT_EQ(track.position(value), kAudioNotOpen);
    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    EXPECT_EQ(position(), 0);
}

}  // namespace
}  // namespace lv
