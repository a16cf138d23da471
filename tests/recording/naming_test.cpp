#include "recording/naming.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "recording/temp_folder.h"

namespace {

using namespace std::chrono;
namespace fs = std::filesystem;

TEST(NumberedName, PrefixAndAtLeastThreeDigits)
{
    struct Case {
        const char* prefix;
        std::int16_t num;
        const char* name;
    };
    const Case cases[] = {{"Test", 7, "Test007"}, {"Test", 1234, "Test1234"}, {"Test", 0, "Test000"},
                          {"Test", 999, "Test999"}, {"S", 1000, "S1000"},     {"", 5, "005"}};
    for (const Case& c : cases) EXPECT_EQ(lv::numberedName(c.prefix, c.num), c.name);
}

TEST(AutoName, NumberOrDateTimeBySuffixType)
{
    const lv::LocalDateTime when{2024y / March / 5, 14, 7, 9};
    struct Case {
        std::int32_t suffixType;
        const char* name;
        const char* pattern;
    };
    const Case cases[] = {{0, "Rec_042", "Rec_nnn"},
                          {1, "Rec_24-03-05__14.07.09", "Rec_Date__Time"},
                          {7, "Rec_24-03-05__14.07.09", "Rec_Date__Time"}};
    for (const Case& c : cases) {
        lv::Settings s;
        s.SavePrefix = "Rec_";
        s.SuffixNum = 42;
        s.SuffixType = c.suffixType;
        EXPECT_EQ(lv::autoName(s, when), c.name);
        EXPECT_EQ(lv::namingPatternText(s), c.pattern);
    }
}

TEST(SavePaths, FolderNameAndExtension)
{
    EXPECT_EQ(lv::lvdPathFor("/data/rec/", "Test007"), fs::path("/data/rec/Test007.lvd"));
    EXPECT_EQ(lv::wavPathFor("/data/rec/", "Test007"), fs::path("/data/rec/Test007.wav"));
}

TEST(RecordingModeCaption, OneCaptionPerMode)
{
    const char* expected[] = {"", "Manual", "Auto Name", "Auto Save", "Capture", ""};
    for (int mode = 0; mode <= 5; ++mode) EXPECT_EQ(lv::recordingModeCaption(mode), expected[mode]);
}

class Naming : public ::testing::Test {
protected:
    lv::test::TempFolder folder;

    void touch(const fs::path& relative, const std::string& content = "x") const
    {
        const fs::path p = folder.path() / relative;
        fs::create_directories(p.parent_path());
        lv::test::writeBytes(p, std::vector<std::uint8_t>(content.begin(), content.end()));
    }
    // Every file under the temporary folder, relative to it.
    std::set<std::string> files() const
    {
        std::set<std::string> out;
        for (const auto& e : fs::recursive_directory_iterator(folder.path()))
            if (!e.is_directory()) out.insert(fs::relative(e.path(), folder.path()).string());
        return out;
    }
};

TEST_F(Naming, ValidPrefixLeavesNoFileBehind)
{
    fs::create_directory(folder.path() / "sub");
    for (const char* prefix : {"Test", "", "sub/x", "with space"}) {
        EXPECT_FALSE(lv::validatePrefix(folder.savePath(), prefix)) << prefix;
        EXPECT_EQ(files(), std::set<std::string>{}) << prefix;
    }
}

TEST_F(Naming, PrefixThatGivesNoFileIsInvalid)
{
    struct Case {
        std::string savePath;
        std::string prefix;
    };
    const Case cases[] = {
        {folder.savePath(), "missing/x"},   // a folder that is not there
        {folder.savePath() + "nowhere/", "Test"},
        {"/proc/", "Test"},                 // a folder nobody may write in, root included
        {folder.savePath(), std::string(300, 'a')},  // longer than a file name may be
    };
    for (const Case& c : cases) {
        const auto problem = lv::validatePrefix(c.savePath, c.prefix);
        ASSERT_TRUE(problem) << c.savePath << c.prefix;
        EXPECT_EQ(problem->title, "Validate Filename");
        EXPECT_EQ(problem->text, "Error: Invalid Prefix name ");
    }
}

TEST_F(Naming, ReadOnlyFolderIsInvalid)
{
    if (::geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
    fs::create_directory(folder.path() / "ro");
    fs::permissions(folder.path() / "ro", fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(lv::validatePrefix((folder.path() / "ro").string() + "/", "Test"));
}

TEST_F(Naming, ValidationNeverHarmsAFileOfThatName)
{
    touch("Test000.lvd", "keep me");
    EXPECT_FALSE(lv::validatePrefix(folder.savePath(), "Test"));
    EXPECT_EQ(lv::test::readBytes(folder.path() / "Test000.lvd"),
              (std::vector<std::uint8_t>{'k', 'e', 'e', 'p', ' ', 'm', 'e'}));
}

TEST_F(Naming, ResetDeletesExactlyTheNumberedSeriesAndRestartsAtOne)
{
    const std::vector<std::string> gone = {"S001.lvd", "S999.wav", "Sabc.lvd", "S 1 .wav",
                                           "S\xC3\xA9" "01.lvd"};  // "é" is one character
    const std::vector<std::string> kept = {
        "S0001.lvd", "S01.lvd",  "S001.mp3",  "S001.LVD", "s001.lvd",   "T001.lvd",
        "S001.lvd.bak", "xS001.lvd", "S001lvd", "sub/S002.lvd", "S003.lvd/inner.txt",  // a folder so named
    };
    for (const auto& f : gone) touch("save/" + f);
    for (const auto& f : kept) touch("save/" + f);
    touch("S004.lvd");  // beside the save folder, not in it

    lv::Settings s;
    s.SavePath = (folder.path() / "save").string() + "/";
    s.SavePrefix = "S";
    s.SuffixNum = 57;
    const lv::ResetOutcome outcome = lv::resetNumbering(s);

    EXPECT_EQ(s.SuffixNum, 1);
    std::set<std::string> expected = {"S004.lvd"};
    for (const auto& f : kept) expected.insert("save/" + f);
    EXPECT_EQ(files(), expected);
    EXPECT_EQ(outcome.deleted.size(), gone.size());
    EXPECT_TRUE(outcome.notDeleted.empty());
}

TEST_F(Naming, ResetRemovesALinkButNotWhatItPointsTo)
{
    touch("target.lvd");
    fs::create_directory(folder.path() / "save");
    fs::create_symlink(folder.path() / "target.lvd", folder.path() / "save/S005.lvd");
    lv::Settings s;
    s.SavePath = (folder.path() / "save").string() + "/";
    s.SavePrefix = "S";
    lv::resetNumbering(s);
    EXPECT_EQ(files(), std::set<std::string>{"target.lvd"});
}

TEST_F(Naming, HostilePrefixesDeleteNothingAnywhere)
{
    // Names a shell pattern or a path built from these prefixes would reach.
    const std::vector<std::string> layout = {
        "x001.lvd",        "save/A001.lvd", "save/AB001.lvd", "save/001.lvd",
        "save/a/b001.lvd", "save/ab001.lvd", "save/..x001.wav.keep", "other/x002.wav",
    };
    for (const auto& f : layout) touch(f);
    for (const char* prefix : {"../x", "*", "?", "a/b", "../other/x", "/", "..", "*/"}) {
        lv::Settings s;
        s.SavePath = (folder.path() / "save").string() + "/";
        s.SavePrefix = prefix;
        const lv::ResetOutcome outcome = lv::resetNumbering(s);
        EXPECT_TRUE(outcome.deleted.empty()) << prefix;
        EXPECT_EQ(files().size(), layout.size()) << prefix;
        EXPECT_EQ(s.SuffixNum, 1);
    }
}

TEST_F(Naming, ResetWithoutASaveFolderDeletesNothing)
{
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    touch("Prefix_001.lvd");
    lv::Settings s;  // no SavePath, the default prefix
    const lv::ResetOutcome outcome = lv::resetNumbering(s);
    fs::current_path(before);
    EXPECT_TRUE(outcome.deleted.empty());
    EXPECT_EQ(files(), std::set<std::string>{"Prefix_001.lvd"});
    EXPECT_EQ(s.SuffixNum, 1);
}

}  // namespace
