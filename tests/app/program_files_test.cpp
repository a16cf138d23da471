#include <gtest/gtest.h>

#include <fstream>

#include "app/program_files.h"
#include "app/reconnect_policy.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

TEST(ProgramFiles, FirstRunWritesFreshConfigAndTakesDefaults) {
    test::TempDir dir("lv_files");
    SettingsStore store;
    SessionConfig session;
    loadProgramFiles(dir.path(), store, session);
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "lv_Analog.cfg"));
    EXPECT_EQ(store.SettingsFilePath, dir.file("lv_Analog.ini"));
    EXPECT_EQ(store.values.Dial_Color, Settings{}.Dial_Color);
    EXPECT_EQ(store.values.DialType, Settings{}.DialType);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "lv_Analog.ini")) << "a read never creates";
}

TEST(ProgramFiles, ConfigNamesTheSettingsFileAndAutosave) {
    test::TempDir dir("lv_files");
    const std::string other = dir.file("mine.ini");
    std::ofstream(other) << "[Format]\nDialType=3\n";
    SessionConfig saved;
    saved.SettingsFilePath = other;
    saved.AutoSaveMode = kAutoSavePrompt;
    saved.ScaleType = 1;  // the settings file's own (missing) key wins: its default 0
    ASSERT_FALSE(SaveSessionConfig(dir.path(), saved).has_value());

    SettingsStore store;
    SessionConfig session;
    loadProgramFiles(dir.path(), store, session);
    EXPECT_EQ(store.SettingsFilePath, other);
    EXPECT_EQ(store.AutoSaveMode, kAutoSavePrompt);
    EXPECT_EQ(store.values.DialType, 3);
    EXPECT_EQ(store.values.ScaleType, 0);
}

TEST(ProgramFiles, SavedPortOnlyWhileTheListKeepsItsLength) {
    struct Case {
        std::int16_t port, count;
        int portsNow;
        std::int16_t expected;
    };
    for (const Case& c : {Case{2, 3, 3, 2}, Case{2, 0, 3, 2}, Case{2, 3, 4, 0}, Case{5, 5, 3, 0},
                          Case{0, 0, 3, 0}, Case{-1, 3, 3, 0}}) {
        SessionConfig s;
        s.PortNumber = c.port;
        s.PortCandidateCount = c.count;
        EXPECT_EQ(savedPort(s, c.portsNow), c.expected) << c.port << "/" << c.count;
    }
}

TEST(ProgramFiles, SessionToSaveRoundTripsThroughTheFile) {
    test::TempDir dir("lv_files");
    SettingsStore store;
    store.SettingsFilePath = "/somewhere/x.ini";
    store.AutoSaveMode = kAutoSaveOn;
    store.values.ScaleType = 1;
    SessionConfig loaded;
    loaded.DialCalibration[3] = 77;
    const SessionConfig out =
        sessionToSave(loaded, store, 2, 5, WindowPlacement{10, 20, 900, 70000});
    ASSERT_FALSE(SaveSessionConfig(dir.path(), out).has_value());
    SessionConfig back;
    ASSERT_TRUE(LoadSessionConfig(dir.path(), back));
    EXPECT_EQ(back.SettingsFilePath, "/somewhere/x.ini");
    EXPECT_EQ(back.AutoSaveMode, kAutoSaveOn);
    EXPECT_EQ(back.PortNumber, 2);
    EXPECT_EQ(back.PortCandidateCount, 5);
    EXPECT_EQ(placementOf(back).left, 10);
    EXPECT_EQ(placementOf(back).height, 32767) << "clamped to the item's 16 bits";
    EXPECT_EQ(back.ScaleType, 1);
    EXPECT_EQ(back.DialCalibration[3], 77) << "calibration carried over";

    const SessionConfig noPort = sessionToSave(loaded, store, 0, 5, std::nullopt);
    EXPECT_EQ(noPort.PortCandidateCount, 0);
    EXPECT_FALSE(placementOf(noPort).valid()) << "no placement given: nothing invented";
}

TEST(ReconnectPolicy, ProbesWhenThePathReturnsAndBacksOffWhileItIsSilent) {
    ReconnectPolicy p;
    EXPECT_FALSE(p.due(0, true)) << "nothing lost";
    p.lost("/dev/ttyUSB0");
    struct Step {
        double now;
        bool present;
        bool due;
        bool failProbe;
    };
    // Present at once: probe; it fails; the next try a second later; the path
    // goes and comes back: probed at once on its return.
    for (const Step& s :
         {Step{0.0, true, true, true}, Step{0.5, true, false, false}, Step{1.0, true, true, true},
          Step{1.25, false, false, false}, Step{1.5, true, true, false}}) {
        EXPECT_EQ(p.due(s.now, s.present), s.due) << s.now;
        if (s.failProbe) p.probeFailed(s.now);
    }
    p.reconnected();
    EXPECT_FALSE(p.waiting());
    EXPECT_FALSE(p.due(9, true));
}

}  // namespace
}  // namespace lv
