#pragma once
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "device/protocol.h"

// The texts of the about box, the system information and the user guide:
// what they say and where the guide is looked for, without Qt.
namespace lv {

inline constexpr const char* kProgramTitle = "lv_Analog";
// The guide's file name, exactly; it ships beside the program or under
// <prefix>/share/lv_Analog.
inline constexpr const char* kUserGuideFileName = "lv3 Prime User Guide V1.0.pdf";
inline constexpr const char* kSystemInfoUnavailable =
    "System Information Is Unavailable At This Time";
inline constexpr const char* kUserGuideTitle = "User Guide";
inline constexpr const char* kSystemInfoTitle = "System Information";

// What frmAbout shows: the program's version and the meter's identity (the
// three meter texts are empty while no meter has answered).
struct AboutInfo {
    std::string versionText;  // major.minor.revision
    std::string firmware;     // lblFirm
    std::string boot;         // lblBoot
    std::string hardware;     // lblhard
};

// major.minor.revision from a version such as the build's project version:
// missing parts read 0, parts past the third are dropped ("1.2" -> "1.2.0").
std::string threePartVersion(std::string_view projectVersion);
// The program's version and the last version reply of a meter.
AboutInfo aboutInfoFrom(std::string_view projectVersion, const protocol::VersionInfo& meter);

// "About " + the program's title.
std::string aboutCaption(std::string_view title = kProgramTitle);
// lblDisclaimer: the box's own line, then the licence sentences.
std::string disclaimerText();

// Where the guide is looked for, in order: the places findResource tries.
std::vector<std::filesystem::path> userGuideSearchPaths(const std::filesystem::path& exeDir);
// The guide is in none of those places.
std::string userGuideMissingText(const std::vector<std::filesystem::path>& searched);
// The guide is there but the desktop could not open it.
std::string userGuideOpenFailedText(const std::filesystem::path& guide);

// One line of the system information: an item and what is known about it.
struct InfoRow {
    std::string item;
    std::string detail;
    friend bool operator==(const InfoRow&, const InfoRow&) = default;
};
struct InfoSection {
    std::string title;
    std::vector<InfoRow> rows;
    std::string emptyText;  // shown when there are no rows
};

// A serial port as the system information lists it. A port the user may not
// open says so, with the usual cure.
InfoRow serialPortRow(const std::string& path, const std::string& description,
                      const std::string& manufacturer, bool accessible);
// A sound device; the default one is marked.
InfoRow audioDeviceRow(const std::string& description, bool isDefault);
// The whole report as plain text, for the clipboard: each section's title,
// then its rows indented ("item: detail", or the empty text).
std::string systemInfoText(const std::vector<InfoSection>& sections);

}  // namespace lv
