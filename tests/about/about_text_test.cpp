#include <gtest/gtest.h>

#include <fstream>

#include "about/about_text.h"
#include "app/data_folder.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

TEST(AboutText, VersionIsMajorMinorRevision) {
    const struct {
        const char* project;
        const char* shown;
    } cases[] = {
        {"1.0.0", "1.0.0"}, {"1.2", "1.2.0"},     {"3", "3.0.0"},
        {"", "0.0.0"},      {"1.2.3.4", "1.2.3"}, {"10.20.30", "10.20.30"},
    };
    for (const auto& c : cases) EXPECT_EQ(threePartVersion(c.project), c.shown) << c.project;
}

TEST(AboutText, MeterTextsGoToTheirLabels) {
    const AboutInfo info = aboutInfoFrom("1.4", {"LV3A", "3A", "1.02", "2.10"});
    EXPECT_EQ(info.versionText, "1.4.0");
    EXPECT_EQ(info.firmware, "2.10");
    EXPECT_EQ(info.boot, "1.02");
    EXPECT_EQ(info.hardware, "LV3A");
    const AboutInfo none = aboutInfoFrom("1.0.0", {});
    EXPECT_EQ(none.firmware + none.boot + none.hardware, "");
}

TEST(AboutText, CaptionAndDisclaimer) {
    EXPECT_EQ(aboutCaption(), "About lv_Analog");
    const std::string licence =
        "  This software is licensed to the user, to assist in operating the associated "
        "hardware. It is accepted as-is and no warranties, or suggestions of suitability for "
        "any purpose are implied.";
    const std::string text = disclaimerText();
    ASSERT_GT(text.size(), licence.size());
    EXPECT_EQ(text.substr(text.size() - licence.size()), licence);
    // The designed caption before it is a sentence of its own.
    EXPECT_EQ(text[text.size() - licence.size() - 1], '.');
}

// The message names the places findResource really tries, in its order.
TEST(AboutText, GuideSearchPathsAreWhereFindResourceLooks) {
    test::TempDir root("lv_guide_paths");
    const fs::path exeDir = root.path() / "bin";
    fs::create_directories(exeDir);
    const auto paths = userGuideSearchPaths(exeDir);
    ASSERT_EQ(paths.size(), 2u);
    for (const fs::path& path : paths) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "%PDF-";
        EXPECT_EQ(findResource(kUserGuideFileName, exeDir), path);
        fs::remove(path);
    }
    EXPECT_EQ(paths[1], (root.path() / "share" / "lv_Analog" / kUserGuideFileName));

    const std::string missing = userGuideMissingText(paths);
    for (const fs::path& path : paths)
        EXPECT_NE(missing.find("\n" + path.string() + "\n"), std::string::npos) << missing;
    EXPECT_NE(userGuideOpenFailedText(paths[0]).find(paths[0].string()), std::string::npos);
}

TEST(AboutText, SerialPortRows) {
    const struct {
        const char* description;
        const char* manufacturer;
        bool accessible;
        const char* detail;
    } cases[] = {
        {"FT232R USB UART", "FTDI", true, "FT232R USB UART, FTDI"},
        {"", "", true, ""},
        {"CP2102", "CP2102", true, "CP2102"},
        {"", "FTDI", true, "FTDI"},
        {"FT232R USB UART", "", false,
         "FT232R USB UART, not allowed to open it: join the group \"dialout\" and log in again"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(serialPortRow("/dev/ttyUSB0", c.description, c.manufacturer, c.accessible),
                  (InfoRow{"/dev/ttyUSB0", c.detail}))
            << c.description << "/" << c.manufacturer;
    EXPECT_EQ(audioDeviceRow("Null Output", true), (InfoRow{"Null Output", "default"}));
    EXPECT_EQ(audioDeviceRow("Monitor", false), (InfoRow{"Monitor", ""}));
}

TEST(AboutText, SystemInfoAsText) {
    const std::vector<InfoSection> sections{
        {"Program", {{"lv_Analog", "1.0.0"}, {"Display", "offscreen"}}, ""},
        {"Serial ports", {}, "None found"},
        {"Sound inputs", {{"Microphone", ""}}, "None"},
    };
    EXPECT_EQ(systemInfoText(sections),
              "Program\n"
              "    lv_Analog: 1.0.0\n"
              "    Display: offscreen\n"
              "\n"
              "Serial ports\n"
              "    None found\n"
              "\n"
              "Sound inputs\n"
              "    Microphone\n");
}

}  // namespace
}  // namespace lv
