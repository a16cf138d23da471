#include "settings/settings_file.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "settings/profile_file.h"
#include "settings/settings_table.h"
#include "settings/temp_folder.h"

namespace lv {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        EXPECT_FALSE(line.empty() || line.back() != '\r') << "not ended by CR LF: " << line;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
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

class SettingsFileTest : public ::testing::Test {
protected:
    SettingsFileTest() { store.DataFolder = dir.folderText(); }
    std::string defaultFile() const { return dir.file("lv_Analog.ini"); }

    test::TempFolder dir;
    SettingsStore store;
};

// A first run: no settings file, no remembered path. Every key is the
// default, and the saves write them in their own orders.
TEST_F(SettingsFileTest, AFirstRunGivesTheDefaultsAndSavesThemInOrder) {
    LoadSettings(store);
    EXPECT_EQ(store.SettingsFilePath, defaultFile());
    EXPECT_FALSE(store.SettingsFileFound);
    EXPECT_FALSE(std::filesystem::exists(defaultFile())) << "loading must not create the file";

    EXPECT_EQ(store.values.Panel_Color, rgb(44, 169, 153));
    EXPECT_EQ(store.values.GraphSheet_Color, rgb(239, 242, 181));
    EXPECT_EQ(store.values.Scale_Color, rgb(0, 128, 192));
    EXPECT_EQ(store.values.LED_BM_Color, rgb(0, 0, 255));

    ASSERT_TRUE(SaveRecordingSettings(store));
    EXPECT_TRUE(SettingsUnchanged(store))
        << "a file without the four sections compares by its defaults";
    ASSERT_TRUE(SaveSettings(store));
    const std::vector<std::string> expected = {"[Recording]",
                                               "SavePath=",
                                               "SavePrefix=Prefix_",
                                               "LoadPath=C:\\Program Files\\lumivane\\samples\\",
                                               "RecordingMode=2",
                                               "SuffixType=1",
                                               "SuffixNum=1",
                                               "AudioEnable=True",
                                               "RecPromptEnable=True",
                                               "TimeDateEnable=True",
                                               "PlayLoopEnable=False",
                                               "[Colors]",
                                               "Dial_Color=16777215",
                                               "LED_Set_Color=65280",
                                               "LED_BM_Color=16711680",
                                               "LED_Lag_Color=255",
                                               "Panel_Color=10070316",
                                               "Background_Color=0",
                                               "GraphSheet_Color=11924207",
                                               "GraphPen_Color=0",
                                               "GraphGrid_Color=12632256",
                                               "MainNeedle_Color=255",
                                               "ShadowNeedleColor_Index=1",
                                               "Scale_Color=12615680",
                                               "FreezeNeedle_Color=0",
                                               "Text_Color=0",
                                               "[Format]",
                                               "Needle_Width=4",
                                               "DialType=1",
                                               "ScaleType=0",
                                               "RecordVisible=True",
                                               "GraphHeight_Index=3",
                                               "GraphVisible=False",
                                               "ClockType=1",
                                               "ClockLeft=False",
                                               "DateType=1",
                                               "[Settings]",
                                               "SwitchMode_Index=1",
                                               "DataLag_Index=2",
                                               "BM_Threshold_Index=2",
                                               "Freeze_Threshold_Index=2",
                                               "FreezeEnable=False",
                                               "NeedleBdEnable=False",
                                               "lv3SensorMode=False",
                                               "[Graph]",
                                               "GraphInvert=False",
                                               "GraphPenWidth_Index=2",
                                               "GridX=False",
                                               "GridY=False",
                                               "GraphTimescale=8",
                                               "GraphGain=0"};
    EXPECT_EQ(linesOf(test::readAll(defaultFile())), expected);
}

TEST_F(SettingsFileTest, TheFileInUseIsKeptOnlyWhileItExists) {
    const std::string mine = dir.file("mine.ini");
    test::writeAll(mine, "[Format]\r\nDialType=3\r\n");
    struct Case {
        std::string remembered;
        std::string expected;
        std::int32_t dialType;
    };
    for (const Case& c : {Case{mine, mine, 3}, Case{dir.file("gone.ini"), defaultFile(), 1},
                          Case{"", defaultFile(), 1}}) {
        store.SettingsFilePath = c.remembered;
        LoadSettings(store);
        EXPECT_EQ(store.SettingsFilePath, c.expected) << "remembered: " << c.remembered;
        EXPECT_EQ(store.values.DialType, c.dialType) << "remembered: " << c.remembered;
    }
}

TEST_F(SettingsFileTest, ABadValueLeavesOnlyItsKeyAlone) {
    test::writeAll(defaultFile(),
                   "[Format]\r\nDialType=abc\r\nScaleType=1\r\nClockType=3\r\n"
                   "[Recording]\r\nSavePrefix=Mine_\r\n");
    // At start-up the key keeps the value held before any load: zero.
    LoadSettings(store);
    EXPECT_EQ(store.values.DialType, 0);
    EXPECT_EQ(store.values.ScaleType, 1);
    EXPECT_EQ(store.values.ClockType, 3);
    EXPECT_EQ(store.values.SavePrefix, "Mine_");
    EXPECT_EQ(store.values.Needle_Width, 4) << "a missing key still takes its default";
    // On a later load it keeps whatever the program had.
    store.values.DialType = 2;
    LoadSettings(store);
    EXPECT_EQ(store.values.DialType, 2);
}

struct ConversionCase {
    const char* key;
    const char* before;
    const char* fileText;
    const char* after;
};
void PrintTo(const ConversionCase& c, std::ostream* os) {
    *os << c.key << "=" << c.fileText << " (before " << c.before << ")";
}

class SettingsConversionTest : public SettingsFileTest,
                               public ::testing::WithParamInterface<ConversionCase> {};

TEST_P(SettingsConversionTest, LoadsAsTheKeysTypeReadsIt) {
    const ConversionCase& c = GetParam();
    const SettingEntry* e = findSetting(c.key);
    ASSERT_NE(e, nullptr);
    set(store.values, c.key, c.before);
    test::writeAll(defaultFile(),
                   "[" + std::string(e->section) + "]\r\n" + c.key + "=" + c.fileText + "\r\n");
    LoadSettings(store);
    EXPECT_EQ(textOf(store.values, c.key), c.after) << c.key << "=" << c.fileText;
}

INSTANTIATE_TEST_SUITE_P(Numbers, SettingsConversionTest,
                         ::testing::Values(ConversionCase{"DialType", "3", "2", "2"},
                                           ConversionCase{"DialType", "3", "abc", "3"},
                                           ConversionCase{"DialType", "3", "", "3"},
                                           ConversionCase{"DialType", "3", "3000000000", "3"},
                                           ConversionCase{"Needle_Width", "4", "3.5", "4"},
                                           ConversionCase{"Needle_Width", "4", "40000", "4"},
                                           ConversionCase{"Needle_Width", "4", "-32768", "-32768"},
                                           ConversionCase{"Dial_Color", "0", "-1", "-1"},
                                           ConversionCase{"Dial_Color", "5", "4294967295", "5"},
                                           ConversionCase{"SuffixNum", "1", "12", "12"}));

INSTANTIATE_TEST_SUITE_P(Booleans, SettingsConversionTest,
                         ::testing::Values(ConversionCase{"RecordVisible", "False", "1", "True"},
                                           ConversionCase{"RecordVisible", "False", "-1", "True"},
                                           ConversionCase{"RecordVisible", "True", "0", "False"},
                                           ConversionCase{"RecordVisible", "False", "TRUE", "True"},
                                           ConversionCase{"RecordVisible", "True", "false",
                                                          "False"},
                                           ConversionCase{"RecordVisible", "False", "yes", "False"},
                                           ConversionCase{"PlayLoopEnable", "True", "", "True"}));

INSTANTIATE_TEST_SUITE_P(Texts, SettingsConversionTest,
                         ::testing::Values(ConversionCase{"GraphTimescale", "8", "3.0", "3.0"},
                                           ConversionCase{"GraphTimescale", "8", "", ""},
                                           ConversionCase{"GraphHeight_Index", "3", "many", "many"},
                                           ConversionCase{"SavePrefix", "P_", "\"Q_\"", "Q_"}));

TEST_F(SettingsFileTest, ColoursAreSignedLongsInTheFile) {
    test::writeAll(defaultFile(), "[Colors]\r\nDial_Color=-1\r\n");
    LoadSettings(store);
    EXPECT_EQ(store.values.Dial_Color, 0xFFFFFFFFu);
    SaveSettings(store);
    EXPECT_EQ(ReadProfileValue("Colors", "Dial_Color", "", defaultFile()), "-1");
}

TEST_F(SettingsFileTest, SavingEditsTheFileInPlaceAndKeepsWhatIsNotOurs) {
    test::writeAll(defaultFile(), "[Graph]\r\nGraphGain=5\r\n; keep me\r\n[Other]\r\nx=1\r\n");
    LoadSettings(store);
    store.values.GraphGain = 6;
    ASSERT_TRUE(SaveSettings(store));
    const std::vector<std::string> lines = linesOf(test::readAll(defaultFile()));
    ASSERT_GE(lines.size(), 10u);
    const std::vector<std::string> head(lines.begin(), lines.begin() + 10);
    EXPECT_EQ(head, (std::vector<std::string>{"[Graph]", "GraphGain=6", "GraphInvert=False",
                                              "GraphPenWidth_Index=2", "GridX=False", "GridY=False",
                                              "GraphTimescale=8", "; keep me", "[Other]", "x=1"}));
    EXPECT_EQ(lines[10], "[Colors]");
}

TEST_F(SettingsFileTest, SaveSettingsAsReplacesTheChosenFile) {
    const std::string other = dir.file("other.ini");
    test::writeAll(other, "[Recording]\r\nSavePrefix=Old_\r\n[Junk]\r\na=1\r\n");
    LoadSettings(store);
    ASSERT_TRUE(SaveSettingsAs(store, other));
    EXPECT_EQ(store.SettingsFilePath, other);
    const std::vector<std::string> lines = linesOf(test::readAll(other));
    std::vector<std::string> sections;
    for (const std::string& line : lines)
        if (line.front() == '[') sections.push_back(line);
    EXPECT_EQ(sections,
              (std::vector<std::string>{"[Colors]", "[Format]", "[Settings]", "[Graph]"}));
}

TEST_F(SettingsFileTest, FileExistsReportsThroughTheStore) {
    test::writeAll(dir.file("there.ini"), "");
    struct Case {
        std::string path;
        bool found;
    };
    for (const Case& c : {Case{dir.file("there.ini"), true}, Case{dir.folderText(), true},
                          Case{dir.file("missing.ini"), false}, Case{"", false}}) {
        store.SettingsFileFound = !c.found;
        FileExists(store, c.path);
        EXPECT_EQ(store.SettingsFileFound, c.found) << "path: " << c.path;
    }
}

struct CompareCase {
    const char* name;
    const char* fileKey;  // written over the saved file, or nullptr
    const char* fileText;
    const char* memoryKey;  // changed in memory after the save, or nullptr
    const char* memoryText;
    bool unchanged;
};
void PrintTo(const CompareCase& c, std::ostream* os) {
    *os << c.name;
}

class SettingsUnchangedTest : public SettingsFileTest,
                              public ::testing::WithParamInterface<CompareCase> {};

TEST_P(SettingsUnchangedTest, ComparesEachKindItsOwnWay) {
    const CompareCase& c = GetParam();
    LoadSettings(store);
    SaveSettings(store);
    SaveRecordingSettings(store);
    if (c.fileKey) {
        const SettingEntry* e = findSetting(c.fileKey);
        ASSERT_NE(e, nullptr);
        ASSERT_TRUE(WriteProfileValue(e->section, e->key, c.fileText, store.SettingsFilePath));
    }
    if (c.memoryKey) set(store.values, c.memoryKey, c.memoryText);
    EXPECT_EQ(SettingsUnchanged(store), c.unchanged);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, SettingsUnchangedTest,
    ::testing::Values(
        CompareCase{"JustSaved", nullptr, "", nullptr, "", true},
        CompareCase{"NumberWrittenOtherwise", "Needle_Width", "4.0", nullptr, "", true},
        CompareCase{"ExponentForm", "Dial_Color", "1.6777215E7", nullptr, "", true},
        CompareCase{"FractionIsNotRounded", "Needle_Width", "4.4", nullptr, "", false},
        CompareCase{"NotANumber", "GraphGain", "abc", nullptr, "", false},
        CompareCase{"ColourInMemory", nullptr, "", "Scale_Color", "1", false},
        CompareCase{"SignedColourSame", "Dial_Color", "-1", "Dial_Color", "-1", true},
        CompareCase{"UnsignedColourDiffers", "Dial_Color", "4294967295", "Dial_Color", "-1", false},
        CompareCase{"KeptTextByItsText", "GraphHeight_Index", "3.0", nullptr, "", false},
        CompareCase{"KeptTextInMemory", nullptr, "", "GraphTimescale", "08", false},
        CompareCase{"BooleanAsNumber", "GridX", "-1", "GridX", "True", true},
        CompareCase{"BooleanAsOne", "GridX", "1", "GridX", "True", true},
        CompareCase{"BooleanDiffers", "GridX", "0", "GridX", "True", false},
        CompareCase{"BooleanNotABoolean", "ClockLeft", "maybe", nullptr, "", false},
        CompareCase{"LastKeyStillCompared", "GraphGain", "1", nullptr, "", false},
        CompareCase{"RecordingInMemory", nullptr, "", "SavePrefix", "Other_", true},
        CompareCase{"RecordingInFile", "SuffixNum", "99", nullptr, "", true}),
    [](const auto& info) { return std::string(info.param.name); });

// The default values themselves are pinned by the first-run test above.
TEST(SetDefaults, ResetsTheFourteenColoursAndNothingElse) {
    Settings values;
    for (const SettingEntry& e : settingsTable())
        ASSERT_TRUE(applySettingText(values, e, "7")) << e.key;
    setDefaultColours(values);
    std::size_t reset = 0;
    for (const SettingEntry& e : settingsTable()) {
        const std::string now = settingText(values, e);
        if (e.section == "Colors") {
            ++reset;
            EXPECT_EQ(now, defaultText(e)) << e.key;
        } else {
            EXPECT_TRUE(now == "7" || now == "True") << e.key << " was touched: " << now;
        }
    }
    EXPECT_EQ(reset, 14u);
}

}  // namespace
}  // namespace lv
