#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "settings/profile_file.h"
#include "settings/session_config.h"
#include "settings/settings_file.h"
#include "settings/settings_table.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using test::readFile, test::writeFile;

// A fresh data folder per test, removed afterwards.
struct Folder : ::testing::Test {
    test::TempDir temp{"lv_settings"};
    fs::path dir = temp.path();
    SettingsStore store;
    Folder() { store.DataFolder = dir.string() + "/"; }
    std::string file(const std::string& name) const { return (dir / name).string(); }
    std::string ini() const { return file("lv_Analog.ini"); }
};

TEST(ProfileFile, ReadsAsThePlatformDidAndWritesOnlyWhatItMust) {
    // File, section, key, default, value read; quotes go only when they match at both ends.
    const std::tuple<std::string, const char*, const char*, const char*, std::string> cases[] = {
        // clang-format off
        {"[Colors]\r\nDial_Color=255\r\n", "colors", "DIAL_COLOR", "d", "255"},
        {"  [ A ]  \r\n  k   =   v  w  \r\n", "A", "k", "d", "v  w"},
        {"[A]\r\nk=\r\n", "A", "k", "d", ""}, {"[A]\r\nx=1\r\n", "A", "k", " d  ", " d"},
        {"[A]\r\nx=1\r\n[B]\r\n[a]\r\nk=2\r\n", "A", "k", "d", "2"},
        {"[A]\r\nk=1\r\nK=2\r\n", "A", "k", "d", "1"}, {"k=1\r\n[A]\r\n", "A", "k", "d", "d"},
        {"[A]\r\nk=a=b\r\n", "A", "k", "d", "a=b"}, {"\xEF\xBB\xBF[A]\r\nk=1", "A", "k", "d", "1"},
        {"[A]\rx=1\rk=2", "A", "k", "d", "2"}, {"[A]\nk=' a '\n", "A", "k", "d", " a "},
        {"[A]\nk=\"a'\n", "A", "k", "d", "\"a'"}, {"[A]\nk=a\"b\"\n", "A", "k", "d", "a\"b\""}};
    // clang-format on
    for (const auto& [text, section, key, defaultValue, expected] : cases)
        EXPECT_EQ(ProfileFile(text).read(section, key, defaultValue), expected) << text;
    const std::string longText(300, 'x');  // cut to 254 characters, counted inside the quotes
    EXPECT_EQ(ProfileFile("[A]\nk=\"" + longText + "\"\n").read("A", "k", "d") +
                  ProfileFile("").read("A", "k", longText),
              longText.substr(0, 254) + longText.substr(0, 254));
    // Writing: before, section, key, value, after.
    const std::tuple<std::string, const char*, const char*, std::string, std::string> writes[] = {
        {"; mine\r\n[A]\r\nx=1\r\n  K = old  \r\n\r\n[B]\r\ny=2\r\n", "a", "k", "new",
         "; mine\r\n[A]\r\nx=1\r\nK=new\r\n\r\n[B]\r\ny=2\r\n"},
        {"[A]\r\nx=1\r\n\r\n; about B\r\n[B]\r\ny=2\r\n", "a", "z", "3",
         "[A]\r\nx=1\r\nz=3\r\n\r\n; about B\r\n[B]\r\ny=2\r\n"},
        {"", "A", "x", "a\r\nb=c", "[A]\r\nx=a\r\n"},  // a line break ends the value
        {"[A]\rx\n\n[B]\n", "A", "k", "1", "[A]\rx\nk=1\n\n[B]\n"},
        {"[A]\nx=1", "B", "y", "2", "[A]\nx=1\n[B]\ny=2\n"}};
    for (const auto& [before, section, key, value, after] : writes) {
        ProfileFile profile(before);
        profile.write(section, key, value);
        EXPECT_EQ(profile.text(), after) << before;
    }
}

TEST_F(Folder, ProfileOnDiskKeepsOtherProgramsLinesAndFailsCleanly) {
    EXPECT_EQ(ReadProfileValue("A", "k", "dflt", file("none.ini")), "dflt");
    EXPECT_FALSE(fs::exists(file("none.ini")));
    writeFile(file("shared.ini"), "; by hand\n[Other]\nkey=v ; x\n\n[Colors]\nDial_Color=1\n");
    ASSERT_TRUE(WriteProfileValue("colors", "dial_color", "2", file("shared.ini")));
    ASSERT_TRUE(WriteProfileValue("Format", "DialType", "4", file("shared.ini")));
    EXPECT_EQ(readFile(file("shared.ini")),
              "; by hand\n[Other]\nkey=v ; x\n\n[Colors]\nDial_Color=2\n[Format]\nDialType=4\n");
    // Inside a "folder" that is a file, and onto a folder: neither can be written.
    EXPECT_FALSE(WriteProfileValue("A", "k", "1", file("shared.ini") + "/s.ini"));
    fs::create_directory(file("sub"));
    EXPECT_FALSE(WriteProfileValue("A", "k", "1", file("sub")));
}

TEST_F(Folder, AFirstRunGivesTheDefaultsAndSavesThemInOrder) {
    LoadSettings(store);
    EXPECT_EQ(std::pair(store.SettingsFilePath, store.SettingsFileFound), std::pair(ini(), false));
    EXPECT_FALSE(fs::exists(ini())) << "loading must not create the file";
    ASSERT_TRUE(SaveRecordingSettings(store));
    EXPECT_TRUE(SettingsUnchanged(store)) << "the four sections missing compare by their defaults";
    ASSERT_TRUE(SaveSettings(store));
    const auto sections = [](const std::string& path) {
        std::vector<std::string> out;
        std::size_t keys = 0;
        for (const auto& [section, key] : ProfileFile::load(path).entries()) {
            if (out.empty() || out.back() != section) out.push_back(section);
            ++keys;
        }
        return std::pair(out, keys);
    };
    const std::vector<std::string> all{"Recording", "Colors", "Format", "Settings", "Graph"};
    EXPECT_EQ(sections(ini()), std::pair(all, settingsTable().size()));
    // Save As replaces the chosen file whole, and takes it on; Recording stays behind.
    writeFile(file("other.ini"), "[Recording]\r\nSavePrefix=Old_\r\n[Junk]\r\na=1\r\n");
    ASSERT_TRUE(SaveSettingsAs(store, file("other.ini")));
    EXPECT_EQ(store.SettingsFilePath, file("other.ini"));
    EXPECT_EQ(sections(file("other.ini")).first, std::vector(all.begin() + 1, all.end()));
}

// "@" is the data folder. The folder in use never depends on where the
// program was started, and a save writes the text back as it was read until
// the folder is changed.
TEST_F(Folder, SavePathResolvesAgainstTheDataFolderAndIsWrittenBackAsRead) {
    store.RecordingsFolder = "/docs/lv_Analog/";
    const std::pair<std::string, std::string> cases[] = {
        {"", "/docs/lv_Analog/"},      {"C:\\Program Files\\lumivane\\", "/docs/lv_Analog/"},
        {"D:rec", "/docs/lv_Analog/"}, {"sub/rec/", "@sub/rec/"},
        {"/abs/rec", "/abs/rec/"},
    };
    for (const auto& [text, resolved] : cases) {
        writeFile(ini(), "[Recording]\r\nSavePath=" + text + "\r\n");
        LoadSettings(store);
        std::string expected = resolved;
        if (expected.starts_with("@")) expected.replace(0, 1, store.DataFolder);
        EXPECT_EQ(store.values.SavePath, expected) << text;
        ASSERT_TRUE(SaveRecordingSettings(store));
        EXPECT_NE(readFile(ini()).find("SavePath=" + text + "\r\n"), std::string::npos) << text;
        store.values.SavePath = "/chosen/";
        ASSERT_TRUE(SaveRecordingSettings(store));
        EXPECT_NE(readFile(ini()).find("SavePath=/chosen/\r\n"), std::string::npos) << text;
    }
}

TEST_F(Folder, ABadValueLeavesOnlyItsKeyAndASaveKeepsOtherLines) {
    writeFile(
        ini(),
        "; mine\r\n[Format]\r\nDialType=abc\r\nScaleType=1\r\n[Recording]\r\nSavePrefix=Mine_\r\n");
    LoadSettings(store);
    EXPECT_EQ(store.values.DialType, 0) << "at start-up: the value held before any load";
    EXPECT_EQ(store.values.ScaleType + 10 * store.values.Needle_Width, 41);
    store.values.DialType = 2;
    LoadSettings(store);
    EXPECT_EQ(store.values.DialType, 2) << "on a later load: whatever the program had";
    ASSERT_TRUE(SaveSettings(store));
    // Lines already there stay where they are; new keys follow their section's last entry.
    EXPECT_TRUE(readFile(ini()).starts_with(
        "; mine\r\n[Format]\r\nDialType=2\r\nScaleType=1\r\nNeedle_Width=4\r\n"));
}

TEST_F(Folder, EachKeyLoadsAsItsTypeReadsIt) {
    // Key, value before the load, text in the file, value after.
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        // clang-format off
        {"DialType", "3", "abc", "3"},           {"Needle_Width", "4", "40000", "4"},
        {"Dial_Color", "0", "-1", "-1"},         {"Dial_Color", "5", "4294967295", "5"},
        {"RecordVisible", "False", "-1", "True"}, {"RecordVisible", "False", "yes", "False"},
        {"GraphTimescale", "8", "3.0", "3.0"},   {"SavePrefix", "P_", "\"Q_\"", "Q_"}};
    // clang-format on
    for (const auto& [key, before, fileText, after] : cases) {
        ASSERT_TRUE(applySettingText(store.values, *findSetting(key), before)) << key;
        writeFile(ini(),
                  "[" + std::string(findSetting(key)->section) + "]\r\n" + key + "=" + fileText);
        LoadSettings(store);
        EXPECT_EQ(settingText(store.values, *findSetting(key)), after) << key << "=" << fileText;
    }
}

TEST_F(Folder, SessionConfigIsSequentialWriteTextAndRoundTrips) {
    SessionConfig written{
        "/home/op/my, settings.ini", 2, 3, 4, -8, 20, 1024, 700, "LV3-0042", 1, {}};
    for (std::size_t i = 0; i < 12; ++i)
        written.DialCalibration[i] = static_cast<std::int16_t>(200 + 370 * i);
    EXPECT_EQ(
        sessionConfigText(written),
        "\"/home/op/my, "
        "settings.ini\",2\r\n3\r\n4\r\n-8\r\n20\r\n1024\r\n700\r\n\"LV3-0042\"\r\n1\r\n"
        "200\r\n570\r\n940\r\n1310\r\n1680\r\n2050\r\n2420\r\n2790\r\n3160\r\n3530\r\n3900\r\n");
    SessionConfig read;
    writeFile(file("lv_Analog.cfg"), std::string(2000, 'z'));  // replaced whole
    ASSERT_EQ(SaveSessionConfig(dir, written), std::nullopt);
    ASSERT_TRUE(LoadSessionConfig(dir, read));
    EXPECT_EQ(std::pair(read.HardwareSerial, read.DialCalibration[11]),
              std::pair(std::string(), std::int16_t{0}))
        << "the serial number and the twelfth calibration are never read back";
    read.HardwareSerial = written.HardwareSerial;
    written.DialCalibration[11] = 0;
    EXPECT_EQ(sessionConfigText(read), sessionConfigText(written));
    written.SettingsFilePath = "a \"quoted\"\r\nname,";
    ASSERT_TRUE(parseSessionConfig(sessionConfigText(written), read));
    EXPECT_EQ(read.SettingsFilePath, written.SettingsFilePath);
    const auto error = SaveSessionConfig(file("lv_Analog.cfg"), written);  // not a folder
    EXPECT_EQ(error.value().detail, file("lv_Analog.cfg") + "/lv_Analog.cfg\n\nNot a directory");
}

TEST(SessionConfig, ItemsOneToEightAreNeededAndTheRestIsTakenAsFarAsItGoes) {
    const std::string eight = "\"a.ini\",1\r\n5\r\n0\r\n10\r\n20\r\n300\r\n400\r\n";
    // Text, loaded; path, port, height (8), scale type (10), calibration 0 (11) and 10 (21).
    const std::tuple<std::string, bool, std::string> cases[] = {
        {eight + "\"SN\"\r\n1\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n", true,
         "a.ini 5 400 1 1 11"},
        {eight + "\"SN\",0,7,x,9,9,9,9,9,9,9,9,9", true, "a.ini 5 400 0 7 -1"},
        {"\"a.ini\",1\r\nCOM3\r\n0\r\n10\r\n20\r\n300\r\n400\r\n", false, "a.ini -1 -1 -1 -1 -1"},
        {"\"\",1\r\n\r\n0,,20,300,400\r\n", true, " 0 400 -1 -1 -1"}};  // empty items: 0
    for (const auto& [text, loaded, items] : cases) {
        SessionConfig c;
        c.PortNumber = c.WindowHeight = c.ScaleType = -1;
        c.DialCalibration.fill(-1);
        EXPECT_EQ(parseSessionConfig(text, c), loaded) << text;
        std::string got = c.SettingsFilePath;
        for (int n : {int{c.PortNumber}, int{c.WindowHeight}, int{c.ScaleType},
                      int{c.DialCalibration[0]}, int{c.DialCalibration[10]}})
            got += " " + std::to_string(n);
        EXPECT_EQ(got, items) << text;
    }
}

}  // namespace
}  // namespace lv
