#include "recording/player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "recording/lvd_file.h"
#include "recording/play_pacing.h"
#include "recording/play_time.h"
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

TEST(PlayTime, MinutesBelowAnHourHoursFromOne) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {65, "1:05"}, {3599, "59:59"}, {3725, "1:02:05"}, {36610, "10:10:10"}, {-3, "0:00"}};
    for (const auto& [seconds, text] : cases) EXPECT_EQ(playTimeText(seconds), text) << seconds;
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
    std::vector<std::int32_t> needles;
    std::vector<std::string> sent;
    int skipTimers = 0;
    Player::ShowNeedle show = [this](std::int32_t n) { needles.push_back(n); };
    Player::SendToMeter send = [this](const std::string& line) { sent.push_back(line); };
    Player player{
        rs, tracks, st, cfg, display, panel, prompter, pump, show, send, [this] { ++skipTimers; }};

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

// Each failed load says why, and leaves no track open; with a recording
// already loaded, that recording and its sound stay as they were.
TEST_F(PlayerTest, EachFailedLoadSaysWhyAndKeepsTheRecordingInMemory) {
    saveLvdRecords(dir.file("good.lvd"), steady(1000), std::nullopt);
    Records otherDial = steady(6), garbage = steady(6);
    otherDial[3].StatusFlags = 0x40;
    garbage[2].FrameType = 'x';
    const std::tuple<Records, const char*, bool, std::string, std::string, Icon> cases[] = {
        {{}, "rec.wav", true, "File Not Found", lvd, Icon::Exclamation},
        {steady(6), "", true, "File Not Found",
         "The audio file is missing. The .lvd and .wav (or .mp3) files must reside in the same "
         "folder.  Please check and try again or disable audio.",
         Icon::None},
        {steady(6), "rec.wav", false, "File Not Found",
         "The Dummy.mp3 file is missing. This should be located in the application directory.",
         Icon::None},
        {otherDial, "rec.wav", true, "Wrong Dial Type", "This file is incompatible.",
         Icon::Exclamation},
        // Not a recording, and no sound beside it: the file is what is wrong.
        {garbage, "", true, "Incompatible file format",
         "This file is corrupt or needs to be converted to version 2 format.", Icon::Exclamation},
        {garbage, "rec.mp3", true, "Incompatible file format",
         "This file is corrupt or needs to be converted to version 2 format.", Icon::Exclamation}};
    for (const bool loaded : {false, true}) {
        if (loaded) test::writeFile(dir.file("good.mp3"), "x");
        prompter.answers = {Answer::Ok};
        ASSERT_EQ(loaded, player.Load_File(dir.file("good.lvd"))) << "no sound beside it yet";
        for (const auto& [records, beside, audio, title, text, icon] : cases) {
            // A wrong dial type loads what it can; no placeholder is no loss either.
            if (loaded && (records == otherDial || !audio)) continue;
            SCOPED_TRACE(title + (loaded ? " after a good load" : ""));
            for (const char* name : {"rec.lvd", "rec.wav", "rec.mp3"})
                std::filesystem::remove(dir.file(name));
            prompter.asked.clear();
            prompter.details.clear();
            prompter.answers = {Answer::Ok};
            cfg.AudioEnable = audio;
            int unloaded = 0;
            if (!records.empty()) saveLvdRecords(lvd, records, std::nullopt);
            if (*beside) test::writeFile(dir.file(beside), "x");
            EXPECT_FALSE(player.Load_File(lvd, [&] { ++unloaded; }));
            using Q = test::ScriptedPrompter::Question;
            EXPECT_EQ(prompter.asked, (std::vector<Q>{{title, text, Buttons::Ok, icon}}));
            // Only the dial type box has more to say: type 2 recorded, type 1 set.
            const std::string& informative = prompter.details.at(0).informative;
            EXPECT_EQ(informative.find("\"Traditional Continuous\"; the dial type set now is "
                                       "\"Traditional\"") != std::string::npos,
                      records == otherDial)
                << informative;
            EXPECT_EQ(unloaded, records == otherDial) << "only a wrong dial type replaces it";
            if (loaded)
                EXPECT_EQ(
                    std::tuple(rs.buffer.RecCount, rs.track, sound.isOpen, panel.loadedCaption),
                    std::tuple(1000, &sound, true, "good.lvd"));
            else
                EXPECT_FALSE(rs.track || sound.isOpen || placeholder.isOpen);
        }
        cfg.AudioEnable = true;
        if (!loaded) {
            EXPECT_EQ(panel.loadedCaption, "") << "the wrong dial type empties it";
        }
    }
}

TEST_F(PlayerTest, WavePreferredThenMp3OrThePlaceholder) {
    // A wave without a rate gives way to the .mp3; no audio plays the placeholder.
    const std::tuple<std::vector<std::string>, bool, int, std::string, int> cases[] = {
        {{"rec.wav", "rec.mp3"}, true, 8000, "wave rec.wav", 32000},
        {{"rec.wav", "rec.mp3"}, true, 0, "compressed rec.mp3", 1000},
        {{"dummy.mp3", "rec.wav"}, false, 22050, "compressed dummy.mp3", 1000}};
    for (const auto& [files, audio, rate, opened, bytesPerSec] : cases) {
        sound.samplesPerSec = rate, sound.channels = 2;
        cfg.AudioEnable = audio;
        ASSERT_TRUE(load(steady(6), files)) << opened;
        const auto& log = (audio ? sound : placeholder).log;
        EXPECT_EQ(*std::find_if(log.rbegin(), log.rend(), [](auto& l) { return l[0] == 'o'; }),
                  "open " + opened.substr(0, opened.find(' ') + 1) +
                      dir.file(opened.substr(opened.find(' ') + 1)));
        EXPECT_EQ(rs.AudioBytesPerSec, bytesPerSec) << opened;
        EXPECT_EQ(rs.track, audio ? &sound : &placeholder) << opened;
        for (const auto& name : files) std::filesystem::remove(dir.file(name));
    }
}

TEST_F(PlayerTest, LoadShowsNameTimesSkipStepAndRange) {
    const std::tuple<int, const char*, int> cases[] = {{599999, "9:59", 10}, {600000, "10:00", 15}};
    for (const auto& [lastMs, total, skip] : cases) {
        Records records = steady(60);
        records.back().TimeMs = lastMs;
        ASSERT_TRUE(load(records, {"rec.wav"}));
        EXPECT_EQ(panel.totalTime, total);
        EXPECT_EQ(rs.SkipSeconds, skip);
    }
    EXPECT_EQ(panel.loadedCaption + "|" + panel.loadedTooltip, "rec.lvd|" + lvd);
    EXPECT_EQ(panel.playTime + "|" + std::to_string(panel.loadProgress), "0:00|50");
    EXPECT_EQ(std::pair(rs.playStart, rs.playEnd), std::pair(1, 60));
}

TEST_F(PlayerTest, PacingShowsTheLatestDueRecordAndFlashesTheLagLamp) {
    Records records = steady(10);
    for (int i = 0; i < 10; ++i) records[i].NeedlePos = std::int16_t(100 * (i + 1));
    st.LagLimit = 2;
    play(records);
    // Audio time, records shown so far, the last needle, records passed over.
    const std::tuple<std::int64_t, std::size_t, int, int> cases[] = {
        {20, 1, 100, 0}, {29, 1, 100, 0}, {31, 2, 200, 0}, {80, 3, 400, 1}, {100, 4, 500, 1}};
    for (const auto& [ms, shown, needle, skipped] : cases) {
        stepAt(ms);
        EXPECT_EQ(std::tuple(needles.size(), needles.back(), player.skippedRecords()),
                  std::tuple(shown, needle, skipped))
            << ms;
    }
    EXPECT_EQ(display.only("LED("), std::vector{led(cfg.Dial_Color)});
    stepAt(180);  // 120..180 at once: four, more than the limit of two
    EXPECT_EQ(needles.back(), 900);
    pump.wait(0.095);
    stepAt(180);
    EXPECT_EQ(display.only("LED(").back(), led(cfg.LED_Lag_Color));
    pump.wait(0.01);
    stepAt(180);
    EXPECT_EQ(display.only("LED(").back(), led(cfg.Dial_Color));
}

TEST_F(PlayerTest, EndOfRangeStopsOrLoopsWithoutStop) {
    st.PortNumber = 2;
    for (const bool loop : {false, true}) {
        if (loop) player.cmdLoop_Click();
        EXPECT_EQ(panel.loopCaption, loop ? "Loop" : "");
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
    EXPECT_TRUE(logged("pause"));
    EXPECT_EQ(skipTimers, 6);
    EXPECT_EQ(panel.playTime, "0:20");
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
    EXPECT_EQ(panel.playTime, "0:20");
    player.positionBarPress(0.25);  // idle: no seek
    EXPECT_EQ(rs.buffer.RecIndex, 1);
    player.cmdPlay_Click();
    player.positionBarPress(0.25);  // 10000 ms: record 500
    EXPECT_EQ(rs.buffer.RecIndex, 500);
    EXPECT_EQ(sound.log.back(), "play from 441000");
    player.positionBarRelease(1.0);  // playing: the play end stays
    EXPECT_EQ(rs.playEnd, 1000);
}

TEST_F(PlayerTest, Keys) {
    ASSERT_TRUE(load(steady(2000), {"rec.mp3"}));
    RecordPanelSink::Enabled on, off;
    off.play = off.record = off.stop = off.fwd = off.load = false;
    using K = PlayerKey;
    using S = PlayState;
    const std::tuple<char, bool, PlayerKey, PlayState> cases[] = {
        {'S', true, K::StopRecording, S::Idle}, {'P', false, K::None, S::Idle},
        {'p', true, K::Handled, S::Playing},    {'P', true, K::Handled, S::Paused},
        {'P', true, K::Handled, S::Playing},    {'.', true, K::Handled, S::Playing},
        {'R', true, K::Record, S::Playing},     {'T', true, K::Tag, S::Playing},
        {'O', true, K::Load, S::Playing},       {'L', true, K::LoadFromList, S::Playing},
        {'L', false, K::None, S::Playing},      {'s', true, K::Handled, S::Idle},
    };
    for (const auto& [key, enabled, action, after] : cases) {
        EXPECT_EQ(player.keyPressed(key, enabled ? on : off), action) << key;
        EXPECT_EQ(player.state(), after) << key;
    }
    EXPECT_EQ(rs.buffer.RecIndex, 501);  // the one forward skip
    EXPECT_TRUE(logged("pause") && logged("play from 20"));
}

TEST_F(PlayerTest, RecordsReachTheDisplayOnlyWhenTheyChange) {
    Records records = steady(5);
    for (int i = 0; i < 4; ++i) {
        const bool later = i >= 2;
        records[i].BaseCode = std::uint8_t(20 + later);
        records[i].BdCount = std::int16_t(later ? 1000 : 15);
        records[i].Sensitivity = std::uint8_t(30 + later);
        records[i].StatusFlags |= std::uint8_t(i == 2 ? 2 : i == 3 ? 8 : 0);
        records[i].RawData = std::int16_t(-1 - i);
    }
    st.PortNumber = 1;
    play(records);
    display.clear();
    const std::string off = led(cfg.Dial_Color), bm = led(cfg.LED_BM_Color);
    const std::vector<std::string> expected[] = {
        {"Base(0.9)", "Bd(1.5)", "Knob(30)", off}, {}, {"Bd(100)", "Knob(31)", bm}, {off}};
    for (int i = 0; i < 4; ++i) {
        stepAt(20 * (i + 1));
        EXPECT_EQ(display.take(), expected[i]) << "record " << i + 1;
        EXPECT_EQ(std::pair(st.RawNeedle, st.MotionFreeze), std::pair(65535 - i, i == 2)) << i;
    }
    EXPECT_TRUE(st.BdCounting);
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_EQ(sent.back(), "P80040000908\r");  // P, needle 0 at 800, BD 4000, Base 090, flags 8
}

TEST_F(PlayerTest, ClockShowsTheRecordingsTimeOnWholeMinutes) {
    play(steady(200));
    rs.buffer.StartTimeSecs = 23 * 3600 + 59 * 60 + 58;
    rs.buffer.RecordingDate = std::chrono::year{2024} / 2 / 28;
    for (const std::int64_t ms : {1000, 1990, 2000, 2500, 3000}) stepAt(ms);
    EXPECT_EQ(display.only("Clock("), std::vector<std::string>{"Clock(0,0,0,2024-2-29)"});
    EXPECT_EQ(panel.playTime, "0:03");
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
    st.PortNumber = 1;
    st.LagLimit = 1;
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
