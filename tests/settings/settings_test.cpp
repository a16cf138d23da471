#include <gtest/gtest.h>

#include <unistd.h>
#include "support/temp_dir.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "settings/profile_file.h"
#include "settings/session_config.h"
#include "settings/settings_file.h"
#include "settings/settings_table.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

std::string readAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeAll(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

std::string textOf(const Settings& values, const char* key) {
    const SettingEntry* e = findSetting(key);
    return e ? settingText(values, *e) : "<no such key>";
}

void set(Settings& values, const char* key, const char* text) {
    const SettingEntry* e = findSetting(key);
    ASSERT_NE(e, nullptr) << key;
    ASSERT_TRUE(applySettingText(values, *e, text)) << key << "=" << text;
}

// A fresh data folder per test, removed afterwards.
class Folder : public ::testing::Test {
protected:
    test::TempDir m_temp{"lv_settings"};
    Folder() {
        dir = m_temp.path();
        store.DataFolder = dir.string() + "/";
    }
    std::string file(const std::string& name) const { return (dir / name).string(); }
    std::string ini() const { return file("lv_Analog.ini"); }

    fs::path dir;
    SettingsStore store;
};

TEST(ProfileFile, ReadsAsThePlatformDid) {
    // File, section, key, default, value read.
    const std::tuple<std::string, const char*, const char*, const char*, std::string> cases[] = {
        {"[Colors]\r\nDial_Color=255\r\n", "colors", "DIAL_COLOR", "d", "255"},
        {"  [ A ]  \r\n  k   =   v  w  \r\n", "A", "k", "d", "v  w"},
        {"[A]\r\nk=\r\n", "A", "k", "d", ""},
        {"[A]\r\nx=1\r\n", "A", "k", " d  ", " d"},
        {"[A]\r\nx=1\r\n[B]\r\nk=2\r\n", "A", "k", "d", "d"},
        {"[A]\r\nx=1\r\n[B]\r\n[a]\r\nk=2\r\n", "A", "k", "d", "2"},
        {"[A]\r\nk=1\r\nK=2\r\n", "A", "k", "d", "1"},
        {"k=1\r\n[A]\r\n", "A", "k", "d", "d"},
        {"[A]\r\nk\r\n;k=1\r\n", "A", ";k", "d", "d"},
        {"[A]\r\nk=a=b\r\n", "A", "k", "d", "a=b"},
        {"\xEF\xBB\xBF[A]\r\nk=1", "A", "k", "d", "1"},
        {"[A]\nx=1\nk=2\n", "A", "k", "d", "2"},
        {"[A]\rx=1\rk=2", "A", "k", "d", "2"},
        // Quotes go only when they match at both ends.
        {"[A]\nk=\"a b\"\n", "A", "k", "d", "a b"},
        {"[A]\nk=' a '\n", "A", "k", "d", " a "},
        {"[A]\nk=\"a'\n", "A", "k", "d", "\"a'"},
        {"[A]\nk=\"\n", "A", "k", "d", "\""},
        {"[A]\nk=\"\"\n", "A", "k", "d", ""},
        {"[A]\nk=a\"b\"\n", "A", "k", "d", "a\"b\""}};
    for (const auto& [text, section, key, defaultValue, expected] : cases)
        EXPECT_EQ(ProfileFile(text).read(section, key, defaultValue), expected) << text;
    // Cut to 254 characters, counted inside the quotes.
    const std::string longText(300, 'x');
    EXPECT_EQ(ProfileFile("[A]\nk=\"" + longText + "\"\n").read("A", "k", "d"),
              longText.substr(0, 254));
    EXPECT_EQ(ProfileFile("[A]\nk=\"" + longText.substr(0, 254) + "\"\n").read("A", "k", "d"),
              longText.substr(0, 254));
    EXPECT_EQ(ProfileFile("").read("A", "k", longText), longText.substr(0, 254));
}

TEST(ProfileFile, WriteChangesOnlyWhatItMust) {
    // Before, section, key, value, after.
    const std::tuple<std::string, const char*, const char*, std::string, std::string> cases[] = {
        {"; mine\r\n[A]\r\nx=1\r\n  K = old  \r\n\r\n[B]\r\ny=2\r\n", "a", "k", "new",
         "; mine\r\n[A]\r\nx=1\r\nK=new\r\n\r\n[B]\r\ny=2\r\n"},
        {"[A]\r\nx=1\r\n\r\n; about B\r\n[B]\r\ny=2\r\n", "a", "z", "3",
         "[A]\r\nx=1\r\nz=3\r\n\r\n; about B\r\n[B]\r\ny=2\r\n"},
        {"[A]\nnoequals\nother=1\n[B]\n", "A", "x", "5", "[A]\nnoequals\nother=1\nx=5\n[B]\n"},
        {"[A]\r\nx=1\r\n", "B", "y", "2", "[A]\r\nx=1\r\n[B]\r\ny=2\r\n"},
        {"", "A", "x", "a\r\nb=c", "[A]\r\nx=a\r\n"},  // a line break ends the value
        {"[A]\nx=1\n", "A", "y", "2", "[A]\nx=1\ny=2\n"},
        {"[A]\rx\n\n[B]\n", "A", "k", "1", "[A]\rx\nk=1\n\n[B]\n"},
        {"[A]\nx=1", "B", "y", "2", "[A]\nx=1\n[B]\ny=2\n"}};
    for (const auto& [before, section, key, value, after] : cases) {
        ProfileFile profile(before);
        profile.write(section, key, value);
        EXPECT_EQ(profile.text(), after) << before;
    }
}

TEST_F(Folder, ProfileOnDiskKeepsOtherProgramsLinesAndFailsCleanly) {
    EXPECT_EQ(ReadProfileValue("A", "k", "dflt", file("none.ini")), "dflt");
    EXPECT_FALSE(fs::exists(file("none.ini")));
    writeAll(file("shared.ini"),
             "; by hand\n[Other]\nkey=value with ; semicolon\n\n[Colors]\nDial_Color=1\n");
    ASSERT_TRUE(WriteProfileValue("colors", "dial_color", "2", file("shared.ini")));
    ASSERT_TRUE(WriteProfileValue("Colors", "Text_Color", "3", file("shared.ini")));
    ASSERT_TRUE(WriteProfileValue("Format", "DialType", "4", file("shared.ini")));
    EXPECT_EQ(readAll(file("shared.ini")),
              "; by hand\n[Other]\nkey=value with ; semicolon\n\n[Colors]\nDial_Color=2\n"
              "Text_Color=3\n[Format]\nDialType=4\n");
    EXPECT_EQ(ReadProfileValue("COLORS", "Text_Color", "d", file("shared.ini")), "3");
    const auto keys = ProfileFile::load(file("shared.ini")).entries();
    ASSERT_EQ(keys.size(), 4u);
    EXPECT_EQ(keys[0], (std::pair<std::string, std::string>{"Other", "key"}));
    EXPECT_EQ(keys[1], (std::pair<std::string, std::string>{"Colors", "Dial_Color"}));
    // Inside a "folder" that is a file, and onto a folder: neither can be written.
    EXPECT_FALSE(WriteProfileValue("A", "k", "1", file("shared.ini") + "/s.ini"));
    fs::create_directory(file("sub"));
    EXPECT_FALSE(WriteProfileValue("A", "k", "1", file("sub")));
    EXPECT_TRUE(fs::is_directory(file("sub")));
}

TEST_F(Folder, AFirstRunGivesTheDefaultsAndSavesThemInOrder) {
    LoadSettings(store);
    EXPECT_EQ(store.SettingsFilePath, ini());
    EXPECT_FALSE(store.SettingsFileFound);
    EXPECT_FALSE(fs::exists(ini())) << "loading must not create the file";
    ASSERT_TRUE(SaveRecordingSettings(store));
    EXPECT_TRUE(SettingsUnchanged(store)) << "the four sections missing compare by their defaults";
    ASSERT_TRUE(SaveSettings(store));
    std::string lines = readAll(ini());
    for (std::size_t at; (at = lines.find("\r\n")) != std::string::npos;) lines.replace(at, 2, " ");
    EXPECT_EQ(
        lines,
        "[Recording] SavePath= SavePrefix=Prefix_ LoadPath=C:\\Program Files\\lumivane\\samples\\ "
        "RecordingMode=2 SuffixType=1 SuffixNum=1 AudioEnable=True RecPromptEnable=True "
        "TimeDateEnable=True PlayLoopEnable=False "
        "[Colors] Dial_Color=16777215 LED_Set_Color=65280 LED_BM_Color=16711680 LED_Lag_Color=255 "
        "Panel_Color=10070316 Background_Color=0 GraphSheet_Color=11924207 GraphPen_Color=0 "
        "GraphGrid_Color=12632256 MainNeedle_Color=255 ShadowNeedleColor_Index=1 "
        "Scale_Color=12615680 FreezeNeedle_Color=0 Text_Color=0 "
        "[Format] Needle_Width=4 DialType=1 ScaleType=0 RecordVisible=True GraphHeight_Index=3 "
        "GraphVisible=False ClockType=1 ClockLeft=False DateType=1 "
        "[Settings] SwitchMode_Index=1 DataLag_Index=2 BM_Threshold_Index=2 "
        "Freeze_Threshold_Index=2 "
        "FreezeEnable=False NeedleBdEnable=False lv3SensorMode=False "
        "[Graph] GraphInvert=False GraphPenWidth_Index=2 GridX=False GridY=False GraphTimescale=8 "
        "GraphGain=0 ");
}

TEST_F(Folder, TheFileInUseIsKeptOnlyWhileItExists) {
    writeAll(file("mine.ini"), "[Format]\r\nDialType=3\r\n");
    writeAll(file("there.ini"), "");
    const std::tuple<std::string, std::string, std::int32_t> cases[] = {
        {file("mine.ini"), file("mine.ini"), 3}, {file("gone.ini"), ini(), 1}, {"", ini(), 1}};
    for (const auto& [remembered, used, dialType] : cases) {
        store.SettingsFilePath = remembered;
        LoadSettings(store);
        EXPECT_EQ(store.SettingsFilePath, used) << remembered;
        EXPECT_EQ(store.values.DialType, dialType) << remembered;
    }
    // FileExists: a file or a folder that is there; never an empty path.
    for (const auto& [path, found] :
         {std::pair{file("there.ini"), true}, std::pair{dir.string(), true},
          std::pair{file("missing.ini"), false}, std::pair{std::string(), false}}) {
        store.SettingsFileFound = !found;
        FileExists(store, path);
        EXPECT_EQ(store.SettingsFileFound, found) << path;
    }
}

TEST_F(Folder, ABadValueLeavesOnlyItsKeyAndASaveKeepsOtherLines) {
    writeAll(
        ini(),
        "; mine\r\n[Format]\r\nDialType=abc\r\nScaleType=1\r\n[Recording]\r\nSavePrefix=Mine_\r\n");
    LoadSettings(store);
    EXPECT_EQ(store.values.DialType, 0) << "at start-up: the value held before any load";
    EXPECT_EQ(store.values.ScaleType, 1);
    EXPECT_EQ(store.values.SavePrefix, "Mine_");
    EXPECT_EQ(store.values.Needle_Width, 4) << "a missing key still takes its default";
    store.values.DialType = 2;
    LoadSettings(store);
    EXPECT_EQ(store.values.DialType, 2) << "on a later load: whatever the program had";
    ASSERT_TRUE(SaveSettings(store));
    // Lines already there stay where they are; new keys follow their section's last entry.
    const std::string text = readAll(ini());
    EXPECT_TRUE(
        text.starts_with("; mine\r\n[Format]\r\nDialType=2\r\nScaleType=1\r\nNeedle_Width=4\r\n"))
        << text;
    EXPECT_NE(text.find("DateType=1\r\n[Recording]\r\nSavePrefix=Mine_\r\n[Colors]\r\n"),
              std::string::npos)
        << text;
}

TEST_F(Folder, EachKeyLoadsAsItsTypeReadsIt) {
    // Key, value before the load, text in the file, value after.
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"DialType", "3", "2", "2"},
        {"DialType", "3", "abc", "3"},
        {"DialType", "3", "", "3"},
        {"DialType", "3", "3000000000", "3"},
        {"Needle_Width", "4", "40000", "4"},
        {"Needle_Width", "4", "-32768", "-32768"},
        {"Dial_Color", "0", "-1", "-1"},
        {"Dial_Color", "5", "4294967295", "5"},
        {"SuffixNum", "1", "12", "12"},
        {"RecordVisible", "False", "1", "True"},
        {"RecordVisible", "False", "-1", "True"},
        {"RecordVisible", "True", "0", "False"},
        {"RecordVisible", "False", "TRUE", "True"},
        {"RecordVisible", "True", "false", "False"},
        {"RecordVisible", "False", "yes", "False"},
        {"PlayLoopEnable", "True", "", "True"},
        {"GraphTimescale", "8", "3.0", "3.0"},
        {"GraphHeight_Index", "3", "many", "many"},
        {"SavePrefix", "P_", "\"Q_\"", "Q_"}};
    for (const auto& [key, before, fileText, after] : cases) {
        set(store.values, key, before);
        writeAll(ini(), "[" + std::string(findSetting(key)->section) + "]\r\n" + key + "=" +
                            fileText + "\r\n");
        LoadSettings(store);
        EXPECT_EQ(textOf(store.values, key), after) << key << "=" << fileText;
    }
}

TEST_F(Folder, SaveSettingsAsReplacesTheChosenFile) {
    writeAll(file("other.ini"), "[Recording]\r\nSavePrefix=Old_\r\n[Junk]\r\na=1\r\n");
    LoadSettings(store);
    ASSERT_TRUE(SaveSettingsAs(store, file("other.ini")));
    EXPECT_EQ(store.SettingsFilePath, file("other.ini"));
    std::vector<std::string> sections;
    for (const auto& [section, key] : ProfileFile::load(file("other.ini")).entries())
        if (sections.empty() || sections.back() != section) sections.push_back(section);
    EXPECT_EQ(sections, (std::vector<std::string>{"Colors", "Format", "Settings", "Graph"}));
}

TEST_F(Folder, SettingsUnchangedComparesEachKindItsOwnWay) {
    // Written over the saved file (or nullptr), changed in memory (or nullptr), unchanged.
    const std::tuple<const char*, const char*, const char*, const char*, bool> cases[] = {
        {nullptr, "", nullptr, "", true},
        {"Needle_Width", "4.0", nullptr, "", true},
        {"Dial_Color", "1.6777215E7", nullptr, "", true},
        {"Needle_Width", "4.4", nullptr, "", false},  // not rounded
        {"GraphGain", "abc", nullptr, "", false},
        {nullptr, "", "Scale_Color", "1", false},
        {"Dial_Color", "-1", "Dial_Color", "-1", true},
        {"Dial_Color", "4294967295", "Dial_Color", "-1", false},
        {"GraphHeight_Index", "3.0", nullptr, "", false},  // kept as text: compared as text
        {"GridX", "-1", "GridX", "True", true},
        {"GridX", "0", "GridX", "True", false},
        {"ClockLeft", "maybe", nullptr, "", false},
        {nullptr, "", "SavePrefix", "Other_", true},  // Recording is never compared
        {"SuffixNum", "99", nullptr, "", true}};
    for (const auto& [fileKey, fileText, memoryKey, memoryText, unchanged] : cases) {
        fs::remove(ini());
        LoadSettings(store);
        SaveSettings(store);
        SaveRecordingSettings(store);
        ASSERT_TRUE(!fileKey ||
                    WriteProfileValue(findSetting(fileKey)->section, fileKey, fileText, ini()));
        if (memoryKey) set(store.values, memoryKey, memoryText);
        EXPECT_EQ(SettingsUnchanged(store), unchanged)
            << (fileKey ? fileKey : "") << (memoryKey ? memoryKey : "");
    }
}

// The default values themselves are pinned by the first-run test.
TEST(SetDefaults, ResetsTheFourteenColoursAndNothingElse) {
    Settings values;
    for (const SettingEntry& e : settingsTable())
        ASSERT_TRUE(applySettingText(values, e, "7")) << e.key;
    setDefaultColours(values);
    std::size_t reset = 0;
    for (const SettingEntry& e : settingsTable()) {
        const std::string now = settingText(values, e);
        reset += e.section == "Colors";
        if (e.section == "Colors")
            EXPECT_EQ(now, defaultText(e)) << e.key;
        else
            EXPECT_TRUE(now == "7" || now == "True") << e.key << " was touched: " << now;
    }
    EXPECT_EQ(reset, 14u);
}

SessionConfig sample() {
    SessionConfig c{"/home/op/my, settings.ini", 2, 3, 4, -8, 20, 1024, 700, "LV3-0042", 1, {}};
    for (std::size_t i = 0; i < 11; ++i)
        c.DialCalibration[i] = static_cast<std::int16_t>(200 + 370 * i);
    return c;
}

TEST_F(Folder, SessionConfigIsSequentialWriteTextAndRoundTrips) {
    EXPECT_EQ(
        sessionConfigText(sample()),
        "\"/home/op/my, "
        "settings.ini\",2\r\n3\r\n4\r\n-8\r\n20\r\n1024\r\n700\r\n\"LV3-0042\"\r\n1\r\n"
        "200\r\n570\r\n940\r\n1310\r\n1680\r\n2050\r\n2420\r\n2790\r\n3160\r\n3530\r\n3900\r\n");
    SessionConfig read;
    EXPECT_FALSE(LoadSessionConfig(dir, read)) << "no file yet";
    writeAll(file("lv_Analog.cfg"), std::string(2000, 'z'));  // replaced whole
    SessionConfig written = sample();
    written.DialCalibration[11] = 99;  // not part of the file
    ASSERT_EQ(SaveSessionConfig(dir, written), std::nullopt);
    ASSERT_TRUE(LoadSessionConfig(dir, read));
    EXPECT_EQ(read.HardwareSerial, "") << "the serial number is never read back";
    EXPECT_EQ(read.DialCalibration[11], 0);
    read.HardwareSerial = written.HardwareSerial;
    EXPECT_EQ(sessionConfigText(read), sessionConfigText(written));
    for (const std::string path :
         {"", "a \"quoted\" name", "\"", "two\r\nlines,", "C:\\lv\\lv_Analog.ini"}) {
        written.SettingsFilePath = path;
        EXPECT_TRUE(parseSessionConfig(sessionConfigText(written), read)) << path;
        EXPECT_EQ(read.SettingsFilePath, path);
    }
    writeAll(file("notafolder"), "x");
    const auto error = SaveSessionConfig(file("notafolder"), sample());
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->text, "Error Saving Session Config File");
    EXPECT_EQ(error->title, "Save Config File");
}

TEST(SessionConfig, ItemsOneToEightAreNeededAndTheRestIsTakenAsFarAsItGoes) {
    const std::string eight = "\"a.ini\",1\r\n5\r\n0\r\n10\r\n20\r\n300\r\n400\r\n";
    // Text, loaded; then path, port, height (8), scale type (10), calibration 0 (11) and 10 (21).
    const std::tuple<std::string, bool, std::string, int, int, int, int, int> cases[] = {
        {eight + "\"SN\"\r\n1\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n", true,
         "a.ini", 5, 400, 1, 1, 11},
        {eight, true, "a.ini", 5, 400, -1, -1, -1},
        {eight + "\"SN\",0,7,8", true, "a.ini", 5, 400, 0, 7, -1},
        {eight + "\"SN\",0,7,x,9,9,9,9,9,9,9,9,9", true, "a.ini", 5, 400, 0, 7, -1},
        {"\"a.ini\",1\r\n5\r\n0\r\n10\r\n", false, "a.ini", 5, -1, -1, -1, -1},
        {"\"a.ini\",1\r\nCOM3\r\n0\r\n10\r\n20\r\n300\r\n400\r\n", false, "a.ini", -1, -1, -1, -1,
         -1},
        {"\"a.ini\",1\r\n40000\r\n0\r\n10\r\n20\r\n300\r\n400\r\n", false, "a.ini", -1, -1, -1, -1,
         -1},
        {"", false, "before", -1, -1, -1, -1, -1},
        {"  \"a.ini\" , 1\n 5 \n0\n10\n20\n300\n 400\n", true, "a.ini", 5, 400, -1, -1, -1},
        {"\"a,b\",1,5,0,10,20,300,400,\"SN\",1,3", true, "a,b", 5, 400, 1, 3, -1},
        {"\"\",1\r\n\r\n0,,20,300,400\r\n", true, "", 0, 400, -1, -1, -1},  // empty items read as 0
        {"a.ini,1,5,0,10,20,300,400", true, "a.ini", 5, 400, -1, -1, -1}};
    for (const auto& [text, loaded, path, port, height, scaleType, cal0, cal10] : cases) {
        SessionConfig c;
        c.SettingsFilePath = "before";
        c.PortNumber = c.WindowHeight = -1;
        c.ScaleType = -1;
        c.DialCalibration.fill(-1);
        EXPECT_EQ(parseSessionConfig(text, c), loaded) << text;
        EXPECT_EQ(std::tuple(c.SettingsFilePath, c.PortNumber, c.WindowHeight, c.ScaleType,
                             c.DialCalibration[0], c.DialCalibration[10]),
                  std::tuple(path, port, height, scaleType, cal0, cal10))
            << text;
    }
}

}  // namespace
}  // namespace lv
