#include "recording/player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "recording/lvd_file.h"
#include "recording/play_pacing.h"
#include "support/fake_audio_track.h"
#include "support/fake_pump.h"
#include "support/lvd_files.h"
#include "support/recording_display.h"
#include "support/recording_panel.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace {

using namespace lv;
using Records = std::vector<lvdRecord>;
using test::steady;

// A record is due once the sound is less than ten milliseconds short of it.
TEST(PlayPacing, DueRecordsSkipStepsAndWaits) {
    for (const auto& [timeMs, audioMs, due] :
         {std::tuple{1000, 990.0, false}, {1000, 990.5, true}, {1000, 5000.0, true}})
        EXPECT_EQ(recordDue(timeMs, audioMs), due) << timeMs << " at " << audioMs;
    const std::pair<int, int> skips[] = {{599, 10}, {600, 15}, {1799, 15}, {1800, 30}, {3600, 60}};
    for (const auto& [seconds, skip] : skips) EXPECT_EQ(skipSecondsFor(seconds), skip) << seconds;
    // The pacing wakes when the next record (100 ms, due from 90 ms of sound)
    // falls due, at most 20 ms on; a clock that did not move is asked again
    // soon, then polled, never in a busy loop.
    const std::tuple<double, int, int> waits[] = {{75.0, 0, 15}, {60.0, 0, 20}, {89.2, 0, 1},
                                                  {95.0, 0, 1},  {95.0, 1, 2},  {85.0, 4, 5},
                                                  {95.0, 5, 10}, {60.0, 9, 20}};
    for (const auto& [audioMs, idleSteps, waitMs] : waits)
        EXPECT_EQ(stepWaitMs(100, audioMs, idleSteps), waitMs) << audioMs << " ms, " << idleSteps;
}

struct PlayerTest : ::testing::Test {
    test::TempDir dir{"player"};
    std::string lvd = dir.file("rec.lvd");
    test::FakeAudioTrack sound, placeholder;
    AudioTracks tracks{sound, placeholder, dir.file("dummy.mp3")};
    RecordingState rs;
    MeterState st;
    Settings cfg;
    test::RecordingDisplay display;
    test::RecordingPanel panel;
    test::ScriptedPrompter prompter;
    test::FakePump pump;
    int skipTimers = 0;
    Player::ShowNeedle show = [](std::int32_t) {};
    Player::RestartSkipTimer skip = [this] { ++skipTimers; };
    Player player{rs, tracks, st, cfg, display, panel, prompter, pump, show, {}, skip};

    bool load(const Records& records, const std::vector<std::string>& beside) {
        if (!records.empty()) saveLvdRecords(lvd, records, std::nullopt);
        for (const auto& name : beside)
            if (!name.empty()) test::writeFile(dir.file(name), "x");
        return player.Load_File(lvd);
    }
    // With an .mp3 beside the records, positions are milliseconds.
    void play(const Records& records) {
        ASSERT_TRUE(load(records, {"rec.mp3"}));
        player.cmdPlay_Click();
        sound.log.clear();
    }
    void stepAt(std::int64_t ms) {
        sound.pos = ms;
        player.step();
    }
    bool logged(const std::string& command) const { return std::ranges::count(sound.log, command); }
    std::string led(Colour c) const { return "LED(" + std::to_string(c) + ")"; }
};

// Each failed load says why and leaves no track open; with a recording
// already loaded, that recording and its sound stay as they were.
TEST_F(PlayerTest, EachFailedLoadSaysWhyAndKeepsTheRecordingInMemory) {
    saveLvdRecords(dir.file("good.lvd"), steady(1000), std::nullopt);
    Records otherDial = steady(6), garbage = steady(6);
    otherDial[3].StatusFlags = 0x40;
    garbage[2].FrameType = 'x';
    // Records, the sound beside them, audio on, the box's title. Not a
    // recording and no sound beside it: the file is what is wrong.
    const std::tuple<Records, const char*, bool, std::string> cases[] = {
        {{}, "rec.wav", true, "File Not Found"},
        {steady(6), "", true, "File Not Found"},
        {steady(6), "rec.wav", false, "File Not Found"},
        {otherDial, "rec.wav", true, "Wrong Dial Type"},
        {garbage, "", true, "Incompatible file format"}};
    for (const bool loaded : {false, true}) {
        if (loaded) test::writeFile(dir.file("good.mp3"), "x");
        prompter.answers = {Answer::Ok};
        ASSERT_EQ(loaded, player.Load_File(dir.file("good.lvd"))) << "no sound beside it yet";
        for (const auto& [records, beside, audio, title] : cases) {
            // A wrong dial type loads what it can; no placeholder is no loss either.
            if (loaded && (records == otherDial || !audio)) continue;
            SCOPED_TRACE(title + (loaded ? " after a good load" : ""));
            for (const char* name : {"rec.lvd", "rec.wav", "rec.mp3"})
                std::filesystem::remove(dir.file(name));
            prompter.asked.clear();
            prompter.answers = {Answer::Ok};
            cfg.AudioEnable = audio;
            if (!records.empty()) saveLvdRecords(lvd, records, std::nullopt);
            if (*beside) test::writeFile(dir.file(beside), "x");
            int unloaded = 0;  // only a wrong dial type replaces the recording
            EXPECT_FALSE(player.Load_File(lvd, [&] { ++unloaded; }));
            ASSERT_EQ(prompter.asked.size(), 1u);
            EXPECT_EQ(std::pair(prompter.asked[0].title, unloaded),
                      std::pair(title, int{records == otherDial}));
            EXPECT_EQ(std::tuple(loaded ? rs.buffer.RecCount : 0, rs.track,
                                 sound.isOpen || placeholder.isOpen),
                      std::tuple(loaded ? 1000 : 0, loaded ? &sound : nullptr, loaded));
        }
    }
}

TEST_F(PlayerTest, LoadShowsNameTimesSkipStepAndRange) {
    const std::tuple<int, const char*, int> cases[] = {{599999, "9:59", 10}, {600000, "10:00", 15}};
    for (const auto& [lastMs, total, skip] : cases) {
        Records records = steady(60);
        records.back().TimeMs = lastMs;
        ASSERT_TRUE(load(records, {"rec.wav"}));
        EXPECT_EQ(std::pair(panel.totalTime, int{rs.SkipSeconds}),
                  std::pair(std::string(total), skip));
    }
    EXPECT_EQ(std::tuple(rs.playStart, rs.playEnd, panel.loadProgress), std::tuple(1, 60, 50));
}

TEST_F(PlayerTest, EndOfRangeStopsOrLoopsWithoutStop) {
    st.PortNumber = 2;
    for (const bool loop : {false, true}) {
        if (loop) player.cmdLoop_Click();
        play(steady(10));
        stepAt(1000);  // all ten
        stepAt(1000);
        // Stopped, or back to the start and playing on.
        EXPECT_EQ(std::tuple(logged("stop"), logged("seek 20") && logged("play"), player.playing(),
                             st.RunMode),
                  std::tuple(!loop, loop, loop, loop ? kRunPlayback : kRunLive));
        player.cmdStop_Click();
    }
}

TEST_F(PlayerTest, SkipsAndThePositionBarLandInsideTheRange) {
    ASSERT_TRUE(load(steady(2000), {"rec.wav"}));  // 40 s: skips of 10 s, 500 records
    const std::tuple<int, bool, int> cases[] = {
        {100, true, 600}, {1800, true, 1950}, {600, false, 100}, {300, false, 1}};
    for (const auto& [from, forward, to] : cases) {
        rs.buffer.RecIndex = from;
        forward ? player.cmdFwd_Click() : player.cmdRev_Click();
        EXPECT_EQ(rs.buffer.RecIndex, to) << from;
    }
    EXPECT_FALSE(logged("pause"));
    player.cmdPlay_Click();
    player.cmdFwd_Click();
    player.cmdFwd_Click();
    EXPECT_EQ(std::tuple(logged("pause"), skipTimers, panel.playTime), std::tuple(true, 6, "0:20"));
    player.tmrSkip_Timer();
    EXPECT_EQ(sound.log.back(), "play from 882882");  // record 1001: 20020 ms in bytes

    // The position bar sets the play end when idle, and seeks while playing.
    player.cmdStop_Click();
    ASSERT_TRUE(load(steady(2000), {"rec.wav"}));
    for (const auto& [fraction, end] :
         {std::pair{0.9999, 1999}, {1.0, 2000}, {1.7, 2000}, {0.5, 1000}}) {
        player.positionBarRelease(fraction);
        EXPECT_EQ(rs.playEnd, end) << fraction;
        EXPECT_DOUBLE_EQ(panel.endFraction, end / 2000.0) << fraction;
    }
    player.positionBarPress(0.25);  // idle: no seek
    EXPECT_EQ(rs.buffer.RecIndex, 1);
    player.cmdPlay_Click();
    player.positionBarPress(0.25);  // 10000 ms: record 500
    EXPECT_EQ(std::pair(rs.buffer.RecIndex, sound.log.back()),
              std::pair(500, std::string("play from 441000")));
    player.positionBarRelease(1.0);  // playing: the play end stays
    EXPECT_EQ(rs.playEnd, 1000);
}

// No sound device, or one lost while playing: the records go on against the
// placeholder's clock, and the operator is told once.
TEST_F(PlayerTest, ALostSoundDevicePlaysOnWithThePlaceholder) {
    test::writeFile(dir.file("dummy.mp3"), "x");
    prompter.answers = {Answer::Ok};
    for (const char* failing : {"play", "status"}) {
        SCOPED_TRACE(failing);
        sound.fail.clear();
        ASSERT_TRUE(load(steady(200), {"rec.mp3"}));
        sound.pos = 1000;
        sound.fail[failing] = kAudioNoDevice;
        player.cmdPlay_Click();
        player.step();
        ASSERT_EQ(rs.track, &placeholder);
        EXPECT_EQ(std::tuple(st.ShownStatus, player.playing()), std::tuple("Audio OFF", true));
        placeholder.pos = 2000;
        player.step();
        EXPECT_EQ(rs.buffer.RecIndex, 101) << "paced by the placeholder: 2000 ms shown";
        player.cmdStop_Click();
    }
    EXPECT_EQ(prompter.asked.size(), 1u) << "told once";
}

// Hangs and stalls: a pause just after a skip, a skip past a short sound's
// end, the records due at once when the sound starts are no lag.
TEST_F(PlayerTest, SkipsPausesAndStartsNeitherStallNorFlashTheLagLamp) {
    std::tie(st.PortNumber, st.LagLimit) = std::tuple(1, 1);
    const auto fresh = [&] {
        player.cmdStop_Click();
        sound.fail.clear();
        display.clear();
        play(steady(2000));
    };
    const auto lamp = [&] { return display.only("LED(").back(); };
    fresh();
    player.cmdFwd_Click();   // to record 501, 10020 ms
    sound.pos = 3000;        // the sound, paused, still where it was
    player.cmdPlay_Click();  // pause
    player.cmdPlay_Click();  // play
    EXPECT_EQ(sound.log.back(), "play from 10020") << "a pause within the skip timer";
    fresh();
    sound.fail["play from 10020"] = kAudioBadRange;
    player.cmdFwd_Click();
    player.tmrSkip_Timer();
    EXPECT_EQ(std::tuple(player.state(), st.RunMode), std::tuple(PlayState::Idle, kRunLive))
        << "a skip past the sound's end ends the playback";
    fresh();
    stepAt(45);
    EXPECT_EQ(lamp(), led(cfg.Dial_Color)) << "two records due at the first step are no lag";
    player.cmdFwd_Click();
    player.tmrSkip_Timer();
    stepAt(10045);
    EXPECT_EQ(std::pair(rs.buffer.RecIndex, lamp()), std::pair(503, led(cfg.Dial_Color)))
        << "nor after a skip";
    fresh();
    stepAt(45);
    stepAt(105);
    EXPECT_EQ(lamp(), led(cfg.LED_Lag_Color)) << "but two due later are";
}

}  // namespace
