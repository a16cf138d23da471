#include "recording/rec_setup.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <tuple>

#include "support/temp_dir.h"

namespace {

TEST(RecSetup, AutomaticModesNeedASaveFolder) {
    // mode, folder, selectable, the mode the dialog starts from
    const std::tuple<std::int32_t, const char*, bool, std::int32_t> cases[] = {
        {2, "", false, 1}, {3, "", false, 1}, {4, "", true, 4}, {3, "/r/", true, 3}};
    for (const auto& [mode, folder, selectable, start] : cases) {
        EXPECT_EQ(lv::modeSelectable(mode, folder), selectable) << mode << " '" << folder << "'";
        EXPECT_EQ(lv::selectableMode(mode, folder), start) << mode << " '" << folder << "'";
    }
    lv::Settings s;
    s.RecordingMode = 2;
    s.SavePath = "/rec/";
    EXPECT_EQ(lv::recordingModeTooltip(s), "Auto name and manually save in /rec/");
    s.RecordingMode = 1;
    EXPECT_EQ(lv::recordingModeTooltip(s), "Manual");
    EXPECT_EQ(lv::saveFolderText("/home/op/rec"), "/home/op/rec/");
    EXPECT_EQ(lv::saveFolderText("/"), "/");
    s.SavePrefix = "S_";
    s.SuffixType = 0;
    s.SuffixNum = 1234;
    EXPECT_EQ(lv::nextNameText(s), "S_1234.lvd");
    s.SuffixType = 1;
    EXPECT_EQ(lv::nextNameText(s), "S_yy-mm-dd__Hh.Nn.Ss.lvd");
}

TEST(RecSetup, PrefixMustNameAFileThatCanBeMadeInTheSaveFolder) {
    lv::test::TempDir dir("rec_setup");
    std::ofstream(dir.file("Keep000.lvd")) << 'x';  // already there: usable, left as it is
    const std::string here = dir.path().string() + "/";
    // Without a folder only the no-subfolder rule applies; "/proc/" takes no new file.
    const std::tuple<std::string, std::string, bool> cases[] = {
        {here, "Keep", true},
        {here, std::string(300, 'a'), false},
        {"/proc/", "Test_", false},
        {"", std::string(300, 'a'), true},
        {"", "a/b", false}};
    for (const auto& [folder, prefix, valid] : cases) {
        const auto problem = lv::checkPrefix(folder, prefix);
        EXPECT_EQ(problem ? problem->title + "|" + problem->text : "",
                  valid ? "" : "Validate Filename|Error: Invalid Prefix name ")
            << "'" << folder << "' '" << prefix.substr(0, 10) << "'";
    }
    EXPECT_EQ(std::filesystem::file_size(dir.file("Keep000.lvd")), 1u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST(RecSetup, CopiesTheDialogsSettingsAndNoOthers) {
    lv::Settings edited;
    edited.RecordingMode = 3;
    edited.SuffixNum = 42;
    edited.RecPromptEnable = false;
    edited.LoadPath = "/elsewhere/";
    edited.PlayLoopEnable = true;
    edited.DialType = 3;
    lv::Settings inForce;
    lv::copyRecordingSetup(edited, inForce);
    EXPECT_EQ(std::tuple(inForce.RecordingMode, inForce.SuffixNum, inForce.RecPromptEnable),
              std::tuple(3, 42, false));
    const lv::Settings defaults;
    EXPECT_EQ(std::tuple(inForce.LoadPath, inForce.PlayLoopEnable, inForce.DialType),
              std::tuple(defaults.LoadPath, defaults.PlayLoopEnable, defaults.DialType));
}

}  // namespace