#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "audio/silent_track.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

struct SilentTrackTest : ::testing::Test {
    test::TempDir dir{"silent_track"};
    std::string dummy = dir.file("dummy.mp3");
    double now = 1000.0;
    SilentTrack track{[this] { return now; }};
    SilentTrackTest() { test::writeFile(dummy, "placeholder"); }
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
    // Seconds the fake clock moves, the command and its argument, its code,
    // then position and mode; an empty line opens the track afresh.
    using Step = std::tuple<double, std::string, std::int64_t, int, std::int64_t, AudioMode>;
    // clang-format off
    const std::vector<Step> steps = {
        // play runs, pause freezes, play resumes
        {0.0, "play", 0, kAudioOk, 0, P}, {1.5, "pause", 0, kAudioOk, 1500, Z},
        {2.0, "play", 0, kAudioOk, 1500, P}, {0.25, "poll", 0, kAudioOk, 1750, P},
        // record runs the clock too
        {0, "", 0, kAudioOk, 0, S}, {0.0, "record", 0, kAudioOk, 0, R},
        {2.02, "stop", 0, kAudioOk, 2020, S}, {0, "", 0, kAudioOk, 0, S},
        // seek stops and moves, playFrom starts there
        {0.0, "play", 0, kAudioOk, 0, P}, {1.0, "seek", 5000, kAudioOk, 5000, S},
        {1.0, "playFrom", 200, kAudioOk, 200, P}, {0.5, "poll", 0, kAudioOk, 700, P},
        // positions outside the track are refused
        {0, "", 0, kAudioOk, 0, S}, {0.0, "seek", -1, kAudioBadRange, 0, S},
        {0.0, "playFrom", end + 1, kAudioBadRange, 0, S},
        // the clock stops at the end, and never goes back
        {0.0, "playFrom", end - 100, kAudioOk, end - 100, P},
        {-0.5, "poll", 0, kAudioOk, end - 100, P}, {1.5, "poll", 0, kAudioOk, end, S}};
    // clang-format on
    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto& [advance, c, arg, code, positionMs, mode] = steps[i];
        SCOPED_TRACE(i);
        now += advance;
        EXPECT_EQ(c == "play"       ? track.play()
                  : c == "record"   ? track.record()
                  : c == "pause"    ? track.pause()
                  : c == "stop"     ? track.stop()
                  : c == "seek"     ? track.seek(arg)
                  : c == "playFrom" ? track.playFrom(arg)
                  : c == ""         ? track.openFile(dummy, AudioKind::Compressed)
                                    : kAudioOk,
                  code);
        AudioMode got = AudioMode::NotReady;
        EXPECT_EQ(track.mode(got), kAudioOk);
        EXPECT_EQ(std::pair(position(), got), std::pair(positionMs, mode));
    }
    // Polled every 1.5 ms, the clock must not lose the fractions each poll leaves over.
    ASSERT_EQ(track.playFrom(0), kAudioOk);
    for (int i = 0; i < 999; ++i, now += 0.0015) position();
    now += 0.0015;
    EXPECT_EQ(position(), 1500);
}

TEST_F(SilentTrackTest, RefusesWhatThePlaceholderCannotDo) {
    EXPECT_EQ(track.play(), kAudioNotOpen);
    EXPECT_EQ(track.openFile(dummy, AudioKind::Wave), kAudioBadFile);
    ASSERT_EQ(track.openFile(dummy, AudioKind::Compressed), kAudioOk);
    // Saving the silence would leave a wave that holds no sound.
    EXPECT_EQ(track.save(dir.file("take.wav")), kAudioWrongMode);
    EXPECT_FALSE(std::filesystem::exists(dir.file("take.wav")));
}

}  // namespace
}  // namespace lv
