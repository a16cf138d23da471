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
    double recordAt = -1;
    std::int64_t delivered = 0;

    explicit Rig(int mode = 1, bool audio = true) {
        std::tie(st.PortNumber, st.RunMode) = std::tuple(1, kRunLive);
        std::tie(cfg.RecordingMode, cfg.AudioEnable, cfg.SavePath, cfg.SavePrefix) =
            std::tuple(mode, audio, save(), "Rec");
        std::tie(cfg.SuffixType, cfg.SuffixNum) = std::tuple(kSuffixNumber, 7);
        sound.onCommand = [this](const std::string& c) {
            if (c == "record") recordAt = pump.now();
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

// Each mode writes and saves as it says. Automatic names pass over files
// that exist, and a number used reaches the settings file at once.
TEST(Recorder, EachModeLabelsWritesAndSavesAsItSays) {
    const std::string stamp = "Rec24-03-05__14.07.09";
    // Mode, files already in the save folder, name; SuffixNum after a save
    // under the automatic name, and each time it reached the settings file.
    using Kept = std::vector<std::int16_t>;
    const std::tuple<int, int, Texts, std::string, std::int16_t, Kept> cases[] = {
        {1, kSuffixNumber, {}, "Rec007", 7, {}},
        {2, kSuffixNumber, {}, "Rec007", 8, {8}},
        {3, kSuffixNumber, {"Rec007.lvd", "Rec008.wav"}, "Rec009", 10, {9, 10}},
        {3, kSuffixDateTime, {stamp + ".lvd"}, stamp + "_2", 7, {}},
        {4, kSuffixNumber, {}, "Rec007", 7, {}}};
    for (const auto& [mode, suffixType, present, name, suffixAfter, numbers] : cases) {
        SCOPED_TRACE(name);
        Rig r(mode);
        r.cfg.SuffixType = suffixType;
        for (const auto& file : present) writeFile(r.dir.path() / file, "older");
        Kept kept;
        r.rec.setNumberingSaver([&] { kept.push_back(r.cfg.SuffixNum); });
        r.record(3);
        EXPECT_EQ(std::pair(r.state.SaveName, r.state.RecNotSaved), std::pair(name, mode != 3));
        // Save without a chosen name: only where the caption says "Save".
        EXPECT_EQ(r.rec.cmdSave_Click(std::nullopt), mode == 2);
        EXPECT_EQ(std::tuple(r.cfg.SuffixNum, kept), std::tuple(suffixAfter, numbers));
        const bool written = mode == 2 || mode == 3;
        EXPECT_EQ(r.state.RecNotSaved, !written);
        EXPECT_EQ(r.logged("save " + r.save() + name + ".wav"), written ? 1 : 0);
        for (const auto& file : present) EXPECT_EQ(readFile(r.dir.path() / file), "older");
        const std::string lvd = readFile(r.dir.path() / (name + ".lvd"));
        // Three records, the first two with the start stamp.
        EXPECT_EQ(lvd.size() == 60 ? lvd.substr(18, 1) + lvd[38] : lvd, written ? "CD" : "");
        EXPECT_EQ(fs::is_empty(r.dir.path()), !written && present.empty());
    }
    // "Auto Name": a file that appears under the name before Save is passed over too.
    Rig r(2, false);
    r.record(3);
    writeFile(r.dir.path() / "Rec007.wav", "older");
    ASSERT_TRUE(r.rec.cmdSave_Click(std::nullopt));
    EXPECT_EQ(
        std::tuple(r.panel.loadedCaption, readFile(r.dir.path() / "Rec007.wav"), r.cfg.SuffixNum),
        std::tuple("Rec008", "older", 9));
}

TEST(Recorder, StartNeedsTheAutomaticModesFolderAndLeaveToDropAnUnsavedRecording) {
    // Mode, save folder gone, prompt, answer, what was asked, started; "../x"
    // is a prefix from the settings file that reaches out of the save folder.
    const std::tuple<int, bool, bool, Answer, std::string, bool, const char*> cases[] = {
        {3, false, false, Answer::Ok, "Validate Filename critical", false, "../x"},
        {1, false, false, Answer::Ok, "", true, "../x"},
        {1, false, true, Answer::No, "Warning Previous recording not saved, Continue?", false, ""},
        {1, false, false, Answer::No, "", true, "Rec"},
        {3, true, true, Answer::Ok, "Record critical", false, "Rec"},
        {4, true, true, Answer::Ok, "", true, "Rec"}};
    for (const auto& [mode, gone, prompt, answer, question, started, prefix] : cases) {
        Rig r(mode, false);
        r.cfg.SavePath += gone ? "gone/" : "";
        r.cfg.SavePrefix = *prefix ? prefix : "Rec";
        r.state.RecNotSaved = mode != 4;  // mode 3: nothing to keep it for
        r.cfg.RecPromptEnable = prompt;
        r.prompter.answers = {answer};
        EXPECT_EQ(r.rec.cmdRecord_Click(), started) << mode;
        // The folder message is critical; the warning asks about the unsaved recording.
        std::string asked;
        for (const auto& q : r.prompter.asked)
            asked += q.title + (q.icon == Icon::Critical ? " critical" : " " + q.text);
        EXPECT_EQ(
            std::pair(asked, r.st.RunMode),
            std::pair(question, started ? std::int16_t{kRunRecording} : std::int16_t{kRunLive}));
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
        // Told on the display at once, and not asked from inside the frame path.
        EXPECT_EQ(std::tuple(t.back() - t[t.size() - 3], t.back(), r.display.only("Mode(Audio OFF"),
                             r.prompter.asked.size()),
                  std::tuple(40, reported ? 240 : 3180, Texts{"Mode(Audio OFF,255)"}, 0u))
            << reported;
        r.prompter.answers = {Answer::Ok};
        for (int i = 0; i < 2; ++i) r.rec.tick();
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
    EXPECT_EQ(std::tuple(r.state.RecNotSaved, r.panel.loadedTooltip,
                         !!RecoveryJournal::find(r.dir.path())),
              std::tuple(false, r.save() + "Elsewhere", false));
}

TEST(Recorder, StoppedInTheLeadInLeavesNoFileAndNoNumberUsed) {
    Rig r(3);
    r.rec.setRecoveryFolder(r.dir.path());
    // SIGTERM while the lead-in runs.
    // clang-format off
    r.sound.onCommand = [&](const std::string& c) { if (c == "record") r.rec.stopForExit(); };
    // clang-format on
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
    const int flushes = r.rec.journal().durableFlushes();
    r.frames(60);
    EXPECT_EQ(r.rec.journal().durableFlushes(), flushes + 1) << "each second made durable";
    r.rec.tick();
    auto found = RecoveryJournal::find(r.dir.path());
    ASSERT_TRUE(found);
    EXPECT_EQ(std::pair(found->recordCount, found->header.SaveName),
              std::pair(60, std::string("Rec007")));

    r.rec.stopForExit();
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
    // From the label, the name chosen, the base of the .lvd and .wav written.
    const std::tuple<bool, std::string, std::string> cases[] = {
        {true, "old.lvd", "old"}, {false, "man2.txt", "man2"}, {false, "v1.2/take", "v1.2/take"}};
    for (const auto& [fromLabel, chosen, written] : cases) {
        Rig r;
        fs::create_directory(r.dir.path() / "v1.2");
        writeFile(r.dir.path() / "old.lvd", std::string(500 * 20, 'x'));
        writeFile(r.dir.path() / "old.wav", "RIFF");
        r.record(5);
        EXPECT_TRUE(fromLabel ? r.rec.saveAsFromLabel(r.save() + chosen)
                              : r.rec.cmdSave_Click(r.save() + chosen));
        EXPECT_EQ(r.logged("save " + r.save() + written + ".wav"), 1) << chosen;
        const std::string lvd = readFile(r.dir.path() / (written + ".lvd"));
        ASSERT_EQ(lvd.size(), 5u * 20) << chosen;
        EXPECT_EQ(lvd.substr(18, 1) + lvd[38], fromLabel ? std::string(2, '\0') : "CD");
    }
}

}  // namespace
