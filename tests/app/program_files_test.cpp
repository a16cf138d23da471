#include "app/program_files.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <tuple>

#include "support/temp_dir.h"

namespace lv {
namespace {

TEST(ProgramFiles, ConfigNamesTheSettingsFileAndAutosave) {
    test::TempDir dir("lv_files");
    SettingsStore store;
    SessionConfig session;
    loadProgramFiles(dir.path(), store, session);  // first run: defaults, a fresh config
    EXPECT_TRUE(std::filesystem::exists(dir.file("lv_Analog.cfg")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("lv_Analog.ini"))) << "a read never creates";
    EXPECT_EQ(store.SettingsFilePath, dir.file("lv_Analog.ini"));
    EXPECT_EQ(store.values.DialType, Settings{}.DialType);

    std::ofstream(dir.file("mine.ini")) << "[Format]\nDialType=3\n";
    SessionConfig saved;
    saved.SettingsFilePath = dir.file("mine.ini");
    saved.AutoSaveMode = kAutoSavePrompt;
    saved.ScaleType = 1;  // the settings file's own (missing) key wins: its default 0
    ASSERT_FALSE(SaveSessionConfig(dir.path(), saved).has_value());
    loadProgramFiles(dir.path(), store, session);
    EXPECT_EQ(store.SettingsFilePath, dir.file("mine.ini"));
    EXPECT_EQ(store.AutoSaveMode, kAutoSavePrompt);
    EXPECT_EQ(store.values.DialType, 3);
    EXPECT_EQ(store.values.ScaleType, 0);
}

TEST(ProgramFiles, ACfgThatFailsToLoadIsKeptAsBakBeforeItIsRewrittenAndSaidOnce) {
    test::TempDir dir("lv_files");
    const std::string bad = "\"x.ini\",1\nnot a number\n1,2,3\n";
    // Each bad file is kept under a name of its own; a good one says nothing.
    const std::pair<const char*, bool> runs[] = {
        {"lv_Analog.cfg.bak", true}, {nullptr, false}, {"lv_Analog.cfg.bak.2", true}};
    for (const auto& [bak, broken] : runs) {
        if (broken) std::ofstream(dir.file("lv_Analog.cfg")) << bad;
        SettingsStore store;
        SessionConfig session;
        const std::string notice = loadProgramFiles(dir.path(), store, session);
        EXPECT_EQ(notice.empty(), !broken);
        if (!bak) continue;
        EXPECT_NE(notice.find(dir.file(bak)), std::string::npos) << notice;
        std::ifstream kept(dir.file(bak));
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), bad);
        SessionConfig fresh;
        EXPECT_TRUE(LoadSessionConfig(dir.path(), fresh)) << "written afresh";
    }
}

TEST(ProgramFiles, SavedPortOnlyWhileTheListKeepsItsLength) {
    // port, candidate count saved, ports now, port used
    const std::tuple<int, int, int, int> cases[] = {
        {2, 3, 3, 2}, {2, 0, 3, 2}, {2, 3, 4, 0}, {0, 0, 3, 0}};
    for (const auto& [port, count, now, used] : cases) {
        SessionConfig s;
        s.PortNumber = static_cast<std::int16_t>(port);
        s.PortCandidateCount = static_cast<std::int16_t>(count);
        EXPECT_EQ(savedPort(s, now), used) << port << "/" << count;
    }
}

TEST(ProgramFiles, SessionToSaveRoundTripsThroughTheFile) {
    test::TempDir dir("lv_files");
    SettingsStore store;
    store.SettingsFilePath = "/somewhere/x.ini";
    store.AutoSaveMode = kAutoSaveOn;
    SessionConfig loaded;
    loaded.DialCalibration[3] = 77;
    ASSERT_FALSE(SaveSessionConfig(dir.path(), sessionToSave(loaded, store, 2, 5,
                                                             WindowPlacement{10, 20, 900, 70000}))
                     .has_value());
    SessionConfig back;
    ASSERT_TRUE(LoadSessionConfig(dir.path(), back));
    EXPECT_EQ(back.SettingsFilePath, "/somewhere/x.ini");
    EXPECT_EQ(back.AutoSaveMode, kAutoSaveOn);
    EXPECT_EQ(placementOf(back).height, 32767) << "clamped to the item's 16 bits";
    EXPECT_EQ(back.DialCalibration[3], 77) << "calibration carried over";
}

}  // namespace
}  // namespace lv
