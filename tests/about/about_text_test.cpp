#include "about/about_text.h"

#include <gtest/gtest.h>

#include <fstream>

#include "app/data_folder.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

TEST(AboutText, VersionCaptionAndMeterTexts) {
    const std::pair<const char*, const char*> versions[] = {{"1.2", "1.2.0"},
                                                            {"3", "3.0.0"},
                                                            {"", "0.0.0"},
                                                            {"1.2.3.4", "1.2.3"},
                                                            {"10.20.30", "10.20.30"}};
    for (const auto& [project, shown] : versions) EXPECT_EQ(threePartVersion(project), shown);
    const std::string licence =
        ".  This software is licensed to the user, to assist in operating the associated "
        "hardware. It is accepted as-is and no warranties, or suggestions of suitability for "
        "any purpose are implied.";
    EXPECT_TRUE(disclaimerText().ends_with(licence)) << disclaimerText();
    const AboutInfo info = aboutInfoFrom("1.4", {"LV3A", "3A", "1.02", "2.10"});
    EXPECT_EQ(info.versionText + info.firmware + info.boot + info.hardware, "1.4.02.101.02LV3A");
}

// The message names the places findResource really tries, in its order.
TEST(AboutText, GuideSearchPathsAreWhereFindResourceLooks) {
    test::TempDir root("lv_guide_paths");
    const fs::path exeDir = root.path() / "bin";
    const auto paths = userGuideSearchPaths(exeDir);
    ASSERT_EQ(paths.size(), 2u);
    for (const fs::path& path : paths) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "%PDF-";
        EXPECT_EQ(findResource(kUserGuideFileName, exeDir), path);
        fs::remove(path);
    }
    const std::string missing = userGuideMissingText(paths);
    for (const fs::path& path : paths)
        EXPECT_NE(missing.find("\n" + path.string() + "\n"), std::string::npos) << missing;
    EXPECT_NE(userGuideOpenFailedText(paths[0]).find(paths[0].string()), std::string::npos);
}

TEST(AboutText, SystemInfoRowsAndText) {
    const struct {
        const char* description;
        const char* manufacturer;
        bool accessible;
        const char* detail;
    } ports[] = {
        {"FT232R USB UART", "FTDI", true, "FT232R USB UART, FTDI"},
        {"CP2102", "CP2102", true, "CP2102"},
        {"", "FTDI", true, "FTDI"},
        {"FT232R USB UART", "", false,
         "FT232R USB UART, not allowed to open it: join the group \"dialout\" and log in again"},
    };
    for (const auto& c : ports)
        EXPECT_EQ(serialPortRow("/dev/ttyUSB0", c.description, c.manufacturer, c.accessible),
                  (InfoRow{"/dev/ttyUSB0", c.detail}));
    EXPECT_EQ(audioDeviceRow("Null Output", true), (InfoRow{"Null Output", "default"}));
    EXPECT_EQ(audioDeviceRow("Monitor", false), (InfoRow{"Monitor", ""}));
    EXPECT_EQ(systemInfoText({{"Program", {{"lv_Analog", "1.0.0"}, {"Display", "offscreen"}}, ""},
                              {"Serial ports", {}, "None found"},
                              {"Sound inputs", {{"Microphone", ""}}, "None"}}),
              "Program\n    lv_Analog: 1.0.0\n    Display: offscreen\n\n"
              "Serial ports\n    None found\n\nSound inputs\n    Microphone\n");
}

}  // namespace
}  // namespace lv
