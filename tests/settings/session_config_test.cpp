#include "settings/session_config.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "settings/temp_folder.h"

namespace lv {
namespace {

SessionConfig sample() {
    SessionConfig c;
    c.SettingsFilePath = "/home/op/my, settings.ini";
    c.AutoSaveMode = 2;
    c.PortNumber = 3;
    c.PortCandidateCount = 4;
    c.WindowLeft = -8;
    c.WindowTop = 20;
    c.WindowWidth = 1024;
    c.WindowHeight = 700;
    c.HardwareSerial = "LV3-0042";
    c.ScaleType = 1;
    for (std::size_t i = 0; i < 11; ++i)
        c.DialCalibration[i] = static_cast<std::int16_t>(200 + 370 * i);
    return c;
}

// Everything the file holds; HardwareSerial is never read back.
void expectSameItems(const SessionConfig& a, const SessionConfig& b) {
    EXPECT_EQ(a.SettingsFilePath, b.SettingsFilePath);
    EXPECT_EQ(a.AutoSaveMode, b.AutoSaveMode);
    EXPECT_EQ(a.PortNumber, b.PortNumber);
    EXPECT_EQ(a.PortCandidateCount, b.PortCandidateCount);
    EXPECT_EQ(a.WindowLeft, b.WindowLeft);
    EXPECT_EQ(a.WindowTop, b.WindowTop);
    EXPECT_EQ(a.WindowWidth, b.WindowWidth);
    EXPECT_EQ(a.WindowHeight, b.WindowHeight);
    EXPECT_EQ(a.ScaleType, b.ScaleType);
    EXPECT_EQ(a.DialCalibration, b.DialCalibration);
}

TEST(SessionConfigFile, IsWrittenInTheSequentialWriteFormat) {
    EXPECT_EQ(
        sessionConfigText(sample()),
        "\"/home/op/my, "
        "settings.ini\",2\r\n3\r\n4\r\n-8\r\n20\r\n1024\r\n700\r\n\"LV3-0042\"\r\n1\r\n"
        "200\r\n570\r\n940\r\n1310\r\n1680\r\n2050\r\n2420\r\n2790\r\n3160\r\n3530\r\n3900\r\n");
}

TEST(SessionConfigFile, RoundTripsThroughTheDataFolder) {
    test::TempFolder dir;
    SessionConfig written = sample();
    written.DialCalibration[11] = 99;  // not part of the file
    ASSERT_EQ(SaveSessionConfig(dir.folderText(), written), std::nullopt);
    SessionConfig read;
    ASSERT_TRUE(LoadSessionConfig(dir.folderText(), read));
    written.DialCalibration[11] = 0;
    expectSameItems(read, written);
    EXPECT_EQ(read.HardwareSerial, "") << "the serial number is thrown away";
}

TEST(SessionConfigFile, TextsThatNeedQuotingSurviveARoundTrip) {
    for (const std::string path :
         {"", "a \"quoted\" name", "\"", "two\r\nlines,", "C:\\lv\\lv_Analog.ini"}) {
        SessionConfig written = sample();
        written.SettingsFilePath = path;
        SessionConfig read;
        EXPECT_TRUE(parseSessionConfig(sessionConfigText(written), read)) << path;
        expectSameItems(read, written);
    }
}

struct ParseCase {
    const char* name;
    std::string text;
    bool loaded;
    std::string path;
    std::int16_t port;
    std::int16_t height;         // item 8
    std::int32_t scaleType;      // item 10
    std::int16_t calibration0;   // item 11
    std::int16_t calibration10;  // item 21
};
void PrintTo(const ParseCase& c, std::ostream* os) {
    *os << c.name;
}

class SessionConfigParseTest : public ::testing::TestWithParam<ParseCase> {};

// Each case starts from values the file must overwrite, or leave alone.
TEST_P(SessionConfigParseTest, ReadsItemsInTwoStages) {
    const ParseCase& c = GetParam();
    SessionConfig config;
    config.SettingsFilePath = "before";
    config.PortNumber = config.WindowHeight = -1;
    config.ScaleType = -1;
    config.DialCalibration.fill(-1);
    EXPECT_EQ(parseSessionConfig(c.text, config), c.loaded);
    EXPECT_EQ(config.SettingsFilePath, c.path);
    EXPECT_EQ(config.PortNumber, c.port);
    EXPECT_EQ(config.WindowHeight, c.height);
    EXPECT_EQ(config.ScaleType, c.scaleType);
    EXPECT_EQ(config.DialCalibration[0], c.calibration0);
    EXPECT_EQ(config.DialCalibration[10], c.calibration10);
}

const std::string kFirstEight = "\"a.ini\",1\r\n5\r\n0\r\n10\r\n20\r\n300\r\n400\r\n";
const std::string kAll =
    kFirstEight + "\"SN\"\r\n1\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n";

INSTANTIATE_TEST_SUITE_P(
    Files, SessionConfigParseTest,
    ::testing::Values(
        ParseCase{"Complete", kAll, true, "a.ini", 5, 400, 1, 1, 11},
        ParseCase{"OnlyTheFirstEight", kFirstEight, true, "a.ini", 5, 400, -1, -1, -1},
        ParseCase{"StopsInTheCalibration", kFirstEight + "\"SN\",0,7,8", true, "a.ini", 5, 400, 0,
                  7, -1},
        ParseCase{"BadCalibrationValue", kFirstEight + "\"SN\",0,7,x,9,9,9,9,9,9,9,9,9", true,
                  "a.ini", 5, 400, 0, 7, -1},
        ParseCase{"FiveItems", "\"a.ini\",1\r\n5\r\n0\r\n10\r\n", false, "a.ini", 5, -1, -1, -1,
                  -1},
        ParseCase{"BadPortNumber", "\"a.ini\",1\r\nCOM3\r\n0\r\n10\r\n20\r\n300\r\n400\r\n", false,
                  "a.ini", -1, -1, -1, -1, -1},
        ParseCase{"PortOutOfRange", "\"a.ini\",1\r\n40000\r\n0\r\n10\r\n20\r\n300\r\n400\r\n",
                  false, "a.ini", -1, -1, -1, -1, -1},
        ParseCase{"Empty", "", false, "before", -1, -1, -1, -1, -1},
        ParseCase{"LineFeedsAndBlanks", "  \"a.ini\" , 1\n 5 \n0\n10\n20\n300\n 400\n", true,
                  "a.ini", 5, 400, -1, -1, -1},
        ParseCase{"AllOnOneLine", "\"a,b\",1,5,0,10,20,300,400,\"SN\",1,3", true, "a,b", 5, 400, 1,
                  3, -1},
        ParseCase{"EmptyItemsReadAsZero", "\"\",1\r\n\r\n0,,20,300,400\r\n", true, "", 0, 400, -1,
                  -1, -1},
        ParseCase{"UnquotedText", "a.ini,1,5,0,10,20,300,400", true, "a.ini", 5, 400, -1, -1, -1}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SessionConfigFile, AMissingFileDoesNotLoad) {
    test::TempFolder dir;
    SessionConfig config = sample();
    EXPECT_FALSE(LoadSessionConfig(dir.folderText(), config));
    expectSameItems(config, sample());
}

TEST(SessionConfigFile, AWriteFailureGivesTheMessageToShow) {
    test::TempFolder dir;
    test::writeAll(dir.file("notafolder"), "x");
    const auto error = SaveSessionConfig(dir.file("notafolder"), sample());
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->text, "Error Saving Session Config File");
    EXPECT_EQ(error->title, "Save Config File");
}

TEST(SessionConfigFile, SavingReplacesTheWholeFile) {
    test::TempFolder dir;
    test::writeAll(dir.file("lv_Analog.cfg"), std::string(2000, 'z'));
    ASSERT_EQ(SaveSessionConfig(dir.folderText(), sample()), std::nullopt);
    EXPECT_EQ(test::readAll(dir.file("lv_Analog.cfg")), sessionConfigText(sample()));
}

}  // namespace
}  // namespace lv
