#include "recording/rec_setup.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <tuple>

#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

std::set<std::string> filesIn(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(dir))
        names.insert(fs::relative(entry.path(), dir).string());
    return names;
}

TEST(RecSetup, AutomaticModesNeedASaveFolder) {
    // mode, folder, selectable, the mode the dialog starts from
    const std::tuple<std::int32_t, const char*, bool, std::int32_t> cases[] = {
        {1, "", true, 1},    {2, "", false, 1},   {3, "", false, 1},   {4, "", true, 4},
        {2, "/r/", true, 2}, {3, "/r/", true, 3}, {1, "/r/", true, 1}, {4, "/r/", true, 4},
        {0, "", true, 0},    {9, "/r/", true, 9}};
    for (const auto& [mode, folder, selectable, start] : cases) {
        EXPECT_EQ(lv::modeSelectable(mode, folder), selectable) << mode << " '" << folder << "'";
        EXPECT_EQ(lv::selectableMode(mode, folder), start) << mode << " '" << folder << "'";
    }
}

TEST(RecSetup, ModeDescriptionsAndTooltips) {
    const std::tuple<std::int32_t, const char*, std::string, std::string> cases[] = {
        {3, "/rec/", "Auto name and auto save", "Auto name and auto save in /rec/"},
        {2, "/rec/", "Auto name and manually save", "Auto name and manually save in /rec/"},
        {2, "", "Auto name and manually save", "Auto name and manually save"},
        {1, "/rec/", "Manual", "Manual"},
        {4, "/rec/", "Capture only (kept in memory, never saved)",
         "Capture only (kept in memory, never saved)"},
        {0, "/rec/", "", ""},
        {5, "/rec/", "", ""}};
    for (const auto& [mode, folder, description, tooltip] : cases) {
        lv::Settings s;
        s.RecordingMode = mode;
        s.SavePath = folder;
        EXPECT_EQ(lv::recordingModeDescription(mode), description) << mode;
        EXPECT_EQ(lv::recordingModeTooltip(s), tooltip) << mode;
    }
}

TEST(RecSetup, ChosenFolderEndsInASeparator) {
    const std::pair<const char*, const char*> cases[] = {{"/home/op/rec", "/home/op/rec/"},
                                                         {"/home/op/rec/", "/home/op/rec/"},
                                                         {"/", "/"},
                                                         {"", ""}};
    for (const auto& [chosen, savePath] : cases) EXPECT_EQ(lv::saveFolderText(chosen), savePath);
}

TEST(RecSetup, NextNamePreviewFollowsTheSuffixKind) {
    const std::tuple<std::int32_t, std::int16_t, const char*> cases[] = {
        {0, 7, "S_007.lvd"}, {0, 1234, "S_1234.lvd"}, {1, 7, "S_yy-mm-dd__Hh.Nn.Ss.lvd"}};
    for (const auto& [suffixType, num, text] : cases) {
        lv::Settings s;
        s.SavePrefix = "S_";
        s.SuffixType = suffixType;
        s.SuffixNum = num;
        EXPECT_EQ(lv::nextNameText(s), text);
    }
}

TEST(RecSetup, PrefixMustNameAFileInTheSaveFolder) {
    lv::test::TempDir dir("rec_setup");
    fs::create_directory(dir.path() / "sub");
    const std::string here = dir.path().string() + "/";
    // A prefix reaching into a subfolder is refused even where its file could
    // be made; without a folder only that rule applies.
    const std::tuple<std::string, std::string, bool> cases[] = {
        {here, "Test_", true},
        {here, "", true},
        {here, "sub/x", false},
        {here, std::string(300, 'a'), false},
        {here + "gone/", "Test_", false},
        {"", "Test_", true},
        {"", std::string(300, 'a'), true},
        {"", "a/b", false}};
    for (const auto& [folder, prefix, valid] : cases) {
        const auto problem = lv::checkPrefix(folder, prefix);
        EXPECT_EQ(problem ? problem->title + "|" + problem->text : "",
                  valid ? "" : "Validate Filename|Error: Invalid Prefix name ")
            << "'" << folder << "' '" << prefix.substr(0, 10) << "'";
        EXPECT_EQ(filesIn(dir.path()), std::set<std::string>{"sub"}) << "the probe file is gone";
    }
}

TEST(RecSetup, CopiesTheDialogsSettingsAndNoOthers) {
    lv::Settings edited;
    edited.RecordingMode = 3;
    edited.SavePath = "/rec/";
    edited.SavePrefix = "Run_";
    edited.SuffixType = 0;
    edited.SuffixNum = 42;
    edited.AudioEnable = false;
    edited.TimeDateEnable = false;
    edited.RecPromptEnable = false;
    edited.LoadPath = "/elsewhere/";
    edited.PlayLoopEnable = true;
    edited.DialType = 3;

    lv::Settings inForce;
    lv::copyRecordingSetup(edited, inForce);
    const auto owned = [](const lv::Settings& s) {
        return std::tuple(s.RecordingMode, s.SavePath, s.SavePrefix, s.SuffixType, s.SuffixNum,
                          s.AudioEnable, s.TimeDateEnable, s.RecPromptEnable);
    };
    const auto others = [](const lv::Settings& s) {
        return std::tuple(s.LoadPath, s.PlayLoopEnable, s.DialType);
    };
    EXPECT_EQ(owned(inForce), owned(edited));
    EXPECT_EQ(others(inForce), others(lv::Settings{}));
}

}  // namespace
