#include "recording/recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "recording/lvd_file.h"
#include "recording/naming.h"
#include "support/fake_audio_track.h"
#include "support/fake_pump.h"
#include "support/file_bytes.h"
#include "support/recording_display.h"
#include "support/recording_panel.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace {

using namespace lv;
using namespace lv::test;
using namespace std::chrono;
namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

// A recorder on fakes saving as Rec007. From "record" on, the sound's position
// follows the fake clock at 44100 bytes a second, unless a test moves it by hand.
struct Rig {
    TempDir dir{"lv_recorder"};
    FakeAudioTrack sound, placeholder;
    AudioTracks tracks{sound, placeholder, "/data/dummy.mp3"};
    RecordingState state;
    MeterState st;
    Settings cfg;
    RecordingDisplay display;
    RecordingPanel panel;
    FakePump pump;
    ScriptedPrompter prompter;
    Recorder rec{state, tracks,   st,
                 cfg,   display,  panel,
                 pump,  prompter, [] { return LocalDateTime{2024y / March / 5d, 14, 7, 9}; }};
    bool clocked = true;
    double recordAt = -1, stopAt = -1;
    std::int64_t delivered = 0;

    explicit Rig(int mode = 1, bool audio = true) {
        std::tie(st.PortNumber, st.RunMode) = std::tuple(1, kRunLive);
        std::tie(cfg.RecordingMode, cfg.AudioEnable, cfg.SavePath, cfg.SavePrefix) =
            std::tuple(mode, audio, save(), "Rec");
        std::tie(cfg.SuffixType, cfg.SuffixNum) = std::tuple(kSuffixNumber, 7);
        sound.onCommand = [this](const std::string& c) {
            if (c == "record") recordAt = pump.now();
            if (c == "stop") stopAt = pump.now();
            if (!clocked || recordAt < 0) return;
            sound.pos = static_cast<std::int64_t>((pump.now() - recordAt) * 44100);
            if (!sound.capture || sound.pos <= delivered) return;
            sound.capture(std::string(static_cast<std::size_t>(sound.pos - delivered), 'a'));
            delivered = sound.pos;
        };
    }
    std::string save() const { return (dir.path() / "").string(); }
    // Frames through the frame path, 20 ms apart when `wait`.
    void frames(int n, bool wait = true) {
        for (int i = 0; i < n; ++i) {
            if (wait) pump.wait(0.02);
            rec.countFrame();
            rec.showElapsed();
            rec.takeFrame('P', 0);
            rec.recordFrame(1000, 'P');
        }
    }
    void record(int n) {
        ASSERT_TRUE(rec.cmdRecord_Click());
        frames(n);
        rec.cmdStop_Click();
    }
    std::vector<std::int32_t> times() const {
        std::vector<std::int32_t> out;
        for (const lvdRecord& r : state.buffer.valid()) out.push_back(r.TimeMs);
        return out;
    }
    auto logged(const std::string& command) const { return std::ranges::count(sound.log, command); }
};

TEST(Recorder, WithoutSoundFramesAre20msFrom20PastTheBuffersGrowthAndTagsCount) {
    Rig r(1, false);
    r.rec.tag();
    ASSERT_TRUE(r.rec.cmdRecord_Click());
    EXPECT_EQ(r.placeholder.log, (Texts{"close", "open compressed /data/dummy.mp3"}));
    EXPECT_NEAR(r.pump.waited, 0.972, 1e-9);  // SDelay(1)
    EXPECT_EQ(r.panel.panelWord + " " + std::to_string(r.panel.playTimeColour), "RECORD 255");
    EXPECT_EQ(r.display.only("Mode("), Texts{"Mode(Recording,0)"});
    r.frames(3, false);
    r.rec.countFrame();  // a line the frame path skipped still takes its 20 ms
    r.rec.tag();
    r.rec.tag();
    r.frames(6500, false);
    r.rec.cmdStop_Click();
    r.rec.tag();
    EXPECT_EQ(r.panel.tag, "2");
    ASSERT_EQ(r.state.buffer.RecCount, 6503);
    const std::pair<std::int32_t, std::int32_t> at[] = {
        {1, 20}, {2, 40}, {3, 60}, {4, 100}, {3000, 60020}, {3001, 60040}, {6503, 130080}};
    for (const auto& [i, ms] : at) EXPECT_EQ(r.state.buffer(i).TimeMs, ms) << i;
    EXPECT_EQ(r.panel.totalTime, "2:10");
}

TEST(Recorder, FirstFrameOfASecondMovesByTheFramesOfThePrevious) {
    const std::pair<int, std::int32_t> cases[] = {{49, 990}, {50, 1000}, {51, 1010}};
    for (const auto& [inSecond, firstOfNext] : cases) {
        Rig r;
        ASSERT_TRUE(r.rec.cmdRecord_Click());
        r.clocked = false;
        r.sound.pos = 44100;
        r.frames(inSecond, false);
        r.sound.pos = 2 * 44100 + 100;
        r.frames(2, false);
        const auto t = r.times();
        ASSERT_EQ(t.size(), static_cast<std::size_t>(inSecond) + 2);
        // The very first frame would be 10 ms early: it is clamped to 0.
        EXPECT_EQ(std::tuple(t[0], t[inSecond - 1], t[inSecond], t[inSecond + 1]),
                  std::tuple(0, (inSecond - 1) * 20, firstOfNext, 1020))
            << inSecond;
    }
}

TEST(Recorder, StopWaitsForTheNextWholeSecondThenCutsTheLeadIn) {
    Rig r;
    ASSERT_TRUE(r.rec.cmdRecord_Click());
    EXPECT_GE(r.pump.now() - r.recordAt, 1.0);  // a second of sound before the first frame
    r.frames(30);
    const auto before = static_cast<long>(r.sound.log.size());
    r.rec.cmdStop_Click();
    EXPECT_NEAR(r.stopAt - r.recordAt, 2.025, 0.025);
    const Texts tail(r.sound.log.begin() + before, r.sound.log.end());
    ASSERT_GE(tail.size(), 4u);
    EXPECT_EQ(Texts(tail.begin(), tail.end() - 3), Texts(tail.size() - 3, "status position"));
    EXPECT_EQ(Texts(tail.end() - 3, tail.end()), (Texts{"stop", "seek 0", "delete 0 44100"}));
    EXPECT_EQ(std::tuple(r.st.RunMode, r.state.RecNotSaved, r.state.RecHasData,
                         r.display.only("Mode(").back()),
              std::tuple(kRunLive, true, true, "Mode(Input OK,0)"));

    Rig demo(1, false);
    demo.st.PortNumber = 0;
    demo.st.RunMode = kRunNoMeter;
    demo.record(1);
    EXPECT_EQ(demo.st.RunMode, kRunNoMeter);
}

// Each mode labels, writes and saves as it says. Automatic names pass over
// files that exist, and a number used reaches the settings file at once.
TEST(Recorder, EachModeLabelsWritesAndSavesAsItSays) {
    // By mode: the loaded-file caption and tooltip at Record, the tooltip at
    // Stop and the save button's caption; "*" is the name, with its folder at Stop.
    const Texts byMode[] = {{},
                            {"Buffer", "Buffer", "Buffer", "Save As"},
                            {"Buffer", "Buffer", "*", "Save"},
                            {"*", "", "*", ""},
                            {"", "", "", ""}};
    const std::string stamp = "Rec24-03-05__14.07.09";
    // Mode, files already in the save folder, name; SuffixNum after a save
    // under the automatic name, and each time it reached the settings file.
    using Kept = std::vector<std::int16_t>;
    const std::tuple<int, int, Texts, std::string, std::int16_t, Kept> cases[] = {
        {1, kSuffixNumber, {}, "Rec007", 7, {}},
        {2, kSuffixNumber, {}, "Rec007", 8, {8}},
        {3, kSuffixNumber, {}, "Rec007", 8, {8}},
        {3, kSuffixNumber, {"Rec007.lvd", "Rec008.wav"}, "Rec009", 10, {9, 10}},
        {3, kSuffixDateTime, {}, stamp, 7, {}},
        {3, kSuffixDateTime, {stamp + ".lvd"}, stamp + "_2", 7, {}},
        {4, kSuffixNumber, {}, "Rec007", 7, {}},
    };
    for (const auto& [mode, suffixType, present, name, suffixAfter, numbers] : cases) {
        SCOPED_TRACE(name);
        Rig r(mode);
        r.cfg.SuffixType = suffixType;
        for (const auto& file : present) writeFile(r.dir.path() / file, "older");
        Kept kept;
        r.rec.setNumberingSaver([&] { kept.push_back(r.cfg.SuffixNum); });
        const auto label = [&](int i, const std::string& folder = "") {
            return byMode[mode][i] == "*" ? folder + name : byMode[mode][i];
        };
        ASSERT_TRUE(r.rec.cmdRecord_Click());
        EXPECT_EQ(r.state.SaveName, name);
        EXPECT_EQ(Texts({r.panel.loadedCaption, r.panel.loadedTooltip, r.panel.modeTooltip}),
                  Texts({label(0), label(1), mode == 1 ? "Buffer" : ""}));
        r.frames(3);
        r.rec.cmdStop_Click();
        EXPECT_EQ(std::tuple(r.panel.loadedTooltip, r.panel.saveCaption, r.state.RecNotSaved),
                  std::tuple(label(2, r.save()), label(3), mode != 3));
        // Save without a chosen name: only where the caption says "Save".
        EXPECT_EQ(r.rec.cmdSave_Click(std::nullopt), mode == 2);
        EXPECT_EQ(std::tuple(r.cfg.SuffixNum, kept), std::tuple(suffixAfter, numbers));
        const bool written = mode == 2 || mode == 3;
        EXPECT_EQ(r.state.RecNotSaved, !written);
        EXPECT_EQ(r.logged("save " + r.save() + name + ".wav"), written ? 1 : 0);
        for (const auto& file : present) EXPECT_EQ(readFile(r.dir.path() / file), "older");
        if (!written) {
            EXPECT_TRUE(fs::is_empty(r.dir.path()));
            continue;
        }
        const std::string lvd = readFile(r.dir.path() / (name + ".lvd"));
        ASSERT_EQ(lvd.size(), 60u);
        EXPECT_EQ(std::string() + lvd[18] + lvd[38], "CD");  // the start stamp
        EXPECT_EQ(r.panel.loadedCaption, name) << "the panel shows the name used";
    }

    // "Auto Name": a file that appears under the name before Save is passed over too.
    Rig r(2, false);
    std::vector<std::int16_t> kept;
    r.rec.setNumberingSaver([&] { kept.push_back(r.cfg.SuffixNum); });
    r.record(3);
    writeFile(r.dir.path() / "Rec007.wav", "older");
    ASSERT_TRUE(r.rec.cmdSave_Click(std::nullopt));
    EXPECT_EQ(r.panel.loadedCaption, "Rec008");
    EXPECT_EQ(readFile(r.dir.path() / "Rec007.wav"), "older");
    EXPECT_EQ(kept, (std::vector<std::int16_t>{8, 9}));
}

TEST(Recorder, StartNeedsTheAutomaticModesFolderAndLeaveToDropAnUnsavedRecording) {
    const struct {
        int mode;
        bool folderGone, prompt;
        Answer answer;
        const char* asked;
        bool started;
        const char* prefix = "Rec";
    } cases[] = {
        // A prefix from the settings file that reaches out of the save folder.
        {3, false, false, Answer::Ok, "Validate Filename critical", false, "../x"},
        {1, false, false, Answer::Ok, "", true, "../x"},
        {1, false, true, Answer::No, "Warning Previous recording not saved, Continue?", false},
        {1, false, true, Answer::Yes, "Warning Previous recording not saved, Continue?", true},
        {1, false, false, Answer::No, "", true},
        {3, true, true, Answer::Ok, "Record critical", false},
        {4, true, true, Answer::Ok, "", true},
        {1, true, false, Answer::Ok, "", true},
    };
    for (const auto& c : cases) {
        Rig r(c.mode, false);
        if (c.folderGone) r.cfg.SavePath = r.save() + "gone/";
        r.cfg.SavePrefix = c.prefix;
        r.state.RecNotSaved = c.mode != 4;  // mode 3: nothing to keep it for
        r.cfg.RecPromptEnable = c.prompt;
        r.prompter.answers = {c.answer};
        EXPECT_EQ(r.rec.cmdRecord_Click(), c.started) << c.mode;
        // The folder message is critical; the warning asks about the unsaved recording.
        std::string asked;
        for (const auto& q : r.prompter.asked)
            asked += q.title + (q.icon == Icon::Critical ? " critical" : " " + q.text);
        EXPECT_EQ(asked, c.asked) << c.mode;
        EXPECT_EQ(r.st.RunMode, c.started ? kRunRecording : kRunLive);
    }
}

TEST(Recorder, SoundThatNeverComesFallsBackToTheFrameClockAndSaysSoOnce) {
    for (const bool noDevice : {true, false}) {
        Rig r;
        if (noDevice)
            r.sound.fail["open new"] = kAudioNoDevice;
        else
            r.clocked = false;  // recording, but the position never moves
        r.prompter.answers = {Answer::Ok};
        const double start = r.pump.now();
        ASSERT_TRUE(r.rec.cmdRecord_Click());
        EXPECT_LT(r.pump.now() - start, 4.0) << noDevice;
        EXPECT_EQ(
            std::tuple(r.prompter.asked.size(), r.display.only("Mode(").back(), r.state.track),
            std::tuple(1u, "Mode(Audio OFF,255)", &r.placeholder));
        r.frames(2);
        EXPECT_EQ(r.times(), (std::vector<std::int32_t>{20, 40}));
        r.rec.cmdStop_Click();
        r.cfg.RecPromptEnable = false;
        r.record(1);  // the same again, without a second message
        EXPECT_EQ(r.prompter.asked.size(), 1u);
    }
}

TEST(Recorder, SoundLostMidRecordingIsToldOnceAndTheFramesKeepTheTime) {
    // The device reports its loss, or its position stands still for three seconds.
    for (const bool reported : {true, false}) {
        Rig r;
        ASSERT_TRUE(r.rec.cmdRecord_Click());
        r.clocked = false;
        r.sound.pos = 44100;
        r.frames(10, false);
        if (reported) r.sound.fail["status position"] = kAudioDeviceLost;
        r.frames(reported ? 3 : 150, false);
        const auto t = r.times();
        EXPECT_EQ(t.back() - t[t.size() - 3], 40) << reported;
        EXPECT_EQ(t.back(), reported ? 240 : 3180);
        EXPECT_EQ(r.display.only("Mode(Audio OFF"), Texts{"Mode(Audio OFF,255)"});
        EXPECT_TRUE(r.prompter.asked.empty());  // not from inside the frame path
        r.prompter.answers = {Answer::Ok};
        r.rec.tick();
        r.rec.tick();
        EXPECT_EQ(r.prompter.asked.size(), 1u);
        r.rec.cmdStop_Click();
        EXPECT_EQ(r.logged("delete 0 44100"), 0);
    }
}

TEST(Recorder, AFailedSaveIsShownAndKeepsTheRecordingThenSaveAsElsewhere) {
    Rig r(3);
    r.rec.setRecoveryFolder(r.dir.path());
    r.sound.fail["save"] = kAudioWriteFailed;
    r.prompter.answers = {Answer::Ok};
    r.record(5);
    ASSERT_EQ(r.prompter.asked.size(), 1u);
    EXPECT_EQ(std::tuple(r.prompter.asked[0].title, r.state.RecNotSaved, r.cfg.SuffixNum,
                         r.rec.saveCaption()),
              std::tuple("File Not Saved", true, 7, "Save As"));
    ASSERT_TRUE(RecoveryJournal::find(r.dir.path()));

    r.sound.fail.clear();
    EXPECT_TRUE(r.rec.cmdSave_Click(r.save() + "Elsewhere.LVD"));
    EXPECT_FALSE(r.state.RecNotSaved);
    EXPECT_EQ(r.panel.loadedCaption + "|" + r.panel.loadedTooltip,
              "Elsewhere|" + r.save() + "Elsewhere");
    EXPECT_FALSE(RecoveryJournal::find(r.dir.path()));
}

TEST(Recorder, StoppedInTheLeadInLeavesNoFileAndNoNumberUsed) {
    Rig r(3);
    r.rec.setRecoveryFolder(r.dir.path());
    r.sound.onCommand = [&](const std::string& c) {
        if (c == "record") r.rec.stopForExit();  // SIGTERM while the lead-in runs
    };
    EXPECT_TRUE(r.rec.cmdRecord_Click());
    EXPECT_EQ(std::tuple(r.st.RunMode, r.rec.recording(), r.state.RecNotSaved, r.state.RecHasData,
                         r.cfg.SuffixNum),
              std::tuple(kRunLive, false, false, false, 7));
    EXPECT_TRUE(fs::is_empty(r.dir.path())) << "no empty .lvd, no journal";
}

TEST(Recorder, ANewRecordingKeepsAnInterruptedOneInRecoveredAndOpensItsOwnJournal) {
    Rig r;
    r.rec.setRecoveryFolder(r.dir.path());
    ASSERT_TRUE(r.rec.cmdRecord_Click());
    r.frames(60);
    r.rec.tick();
    auto found = RecoveryJournal::find(r.dir.path());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->recordCount, 60);
    EXPECT_EQ(found->header.SaveName, "Rec007");

    r.rec.stopForExit();
    EXPECT_EQ(r.st.RunMode, kRunLive);
    found = RecoveryJournal::find(r.dir.path());
    ASSERT_TRUE(found && found->pcmFile);
    // All the sound, the lead-in's too, which came before the journal opened.
    const std::int64_t sound = r.delivered;
    EXPECT_EQ(fs::file_size(*found->pcmFile), static_cast<std::uintmax_t>(sound));
    EXPECT_GT(sound, 44100 + 60 * 882);

    // The next run records before anyone looked at the journal; Flush goes first.
    Rig next(1, false);
    next.rec.setRecoveryFolder(r.dir.path());
    next.rec.Flush_RecBuffer();
    ASSERT_TRUE(RecoveryJournal::find(r.dir.path())) << "not ours to drop";
    ASSERT_TRUE(next.rec.cmdRecord_Click());
    next.frames(10);
    next.rec.tick();
    EXPECT_EQ(RecoveryJournal::find(r.dir.path())->recordCount, 10);
    const fs::path kept = r.dir.path() / RecoveryJournal::kRecoveredFolder / "24-03-05__14.07.09";
    RecBuffer buffer;
    ASSERT_TRUE(loadLvdFile(kept.string() + ".lvd", std::nullopt, buffer).ok());
    EXPECT_EQ(buffer.RecCount, 60);
    EXPECT_EQ(fs::file_size(kept.string() + ".wav"),
              static_cast<std::uintmax_t>(44 + ((sound - 44100) & ~std::int64_t{1})));

    next.rec.cmdStop_Click();
    next.rec.Flush_RecBuffer();
    EXPECT_FALSE(RecoveryJournal::find(r.dir.path())) << "its own journal goes with it";
}

// Sessions that lose data: a Save As over a longer recording leaves nothing of
// it, and the base is the chosen name less whatever extension it has. The
// loaded-file label's Save As writes the records as they stand, no stamp.
TEST(Recorder, SaveAsWritesTheChosenBaseWholeOverALongerRecording) {
    const struct {
        bool fromLabel;
        const char* chosen;
        const char* written;  // the base of the .lvd and .wav
    } cases[] = {
        {true, "old.lvd", "old"},
        {false, "man2.txt", "man2"},
        {true, "man3.txt", "man3"},
        {false, "v1.2/take", "v1.2/take"},
        {false, "Elsewhere.LVD", "Elsewhere"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.chosen);
        Rig r;
        fs::create_directory(r.dir.path() / "v1.2");
        std::ofstream(r.dir.path() / "old.lvd") << std::string(500 * 20, 'x');
        std::ofstream(r.dir.path() / "old.wav") << "RIFF";
        r.record(5);
        const std::string chosen = r.save() + c.chosen;
        EXPECT_TRUE(c.fromLabel ? r.rec.saveAsFromLabel(chosen) : r.rec.cmdSave_Click(chosen));
        EXPECT_EQ(r.logged("save " + r.save() + c.written + ".wav"), 1);
        const std::string lvd = readFile(r.dir.path() / (std::string(c.written) + ".lvd"));
        ASSERT_EQ(lvd.size(), 5u * 20);
        EXPECT_EQ(std::string() + lvd[18] + lvd[38], c.fromLabel ? std::string(2, '\0') : "CD");
    }
}

}  // namespace
