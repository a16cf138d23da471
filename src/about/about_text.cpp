#include "about/about_text.h"

#include <array>

namespace lv {

namespace fs = std::filesystem;

namespace {

// The install prefix's folder of read-only files, as findResource knows it.
constexpr const char* kShareFolder = "lv_Analog";
constexpr const char* kIndent = "    ";

}  // namespace

std::string threePartVersion(std::string_view projectVersion) {
    std::array<std::string, 3> parts{"0", "0", "0"};
    std::size_t part = 0;
    std::size_t start = 0;
    while (part < parts.size() && start <= projectVersion.size()) {
        const std::size_t dot = projectVersion.find('.', start);
        const std::string_view piece =
            projectVersion.substr(start, dot == std::string_view::npos ? dot : dot - start);
        if (!piece.empty()) parts[part] = std::string(piece);
        ++part;
        if (dot == std::string_view::npos) break;
        start = dot + 1;
    }
    return parts[0] + "." + parts[1] + "." + parts[2];
}

AboutInfo aboutInfoFrom(std::string_view projectVersion, const protocol::VersionInfo& meter) {
    return {threePartVersion(projectVersion), meter.firmware, meter.boot, meter.hardware};
}

std::string aboutCaption(std::string_view title) {
    return "About " + std::string(title);
}

std::string disclaimerText() {
    // The box's own line, then the licence in the four pieces it was built from.
    return std::string("lv_Analog shows, records and plays back the readings of the lv3 meter.") +
           "  This software is licensed to the user, to assist in operating" +
           " the associated hardware. It is accepted " + "as-is" +
           " and no warranties, or suggestions of suitability for any purpose are implied.";
}

std::vector<fs::path> userGuideSearchPaths(const fs::path& exeDir) {
    return {(exeDir / kUserGuideFileName).lexically_normal(),
            (exeDir / ".." / "share" / kShareFolder / kUserGuideFileName).lexically_normal()};
}

std::string userGuideMissingText(const std::vector<fs::path>& searched) {
    std::string text = "The user guide could not be found. It was looked for here:\n";
    for (const fs::path& path : searched) text += "\n" + path.string();
    text += std::string("\n\nReinstall lv_Analog, or copy \"") + kUserGuideFileName +
            "\" to one of these places.";
    return text;
}

std::string userGuideOpenFailedText(const fs::path& guide) {
    return "The user guide\n\n" + guide.string() +
           "\n\ncould not be opened: the desktop found no program for PDF files. Install a PDF "
           "viewer, or open the file above by hand.";
}

InfoRow serialPortRow(const std::string& path, const std::string& description,
                      const std::string& manufacturer, bool accessible) {
    std::string detail = description;
    const auto add = [&detail](const std::string& piece) {
        if (piece.empty()) return;
        if (!detail.empty()) detail += ", ";
        detail += piece;
    };
    if (manufacturer != description) add(manufacturer);
    if (!accessible) add("not allowed to open it: join the group \"dialout\" and log in again");
    return {path, detail};
}

InfoRow audioDeviceRow(const std::string& description, bool isDefault) {
    return {description, isDefault ? "default" : ""};
}

std::string systemInfoText(const std::vector<InfoSection>& sections) {
    std::string text;
    for (const InfoSection& section : sections) {
        if (!text.empty()) text += "\n";
        text += section.title + "\n";
        if (section.rows.empty()) text += kIndent + section.emptyText + "\n";
        for (const InfoRow& row : section.rows)
            text += kIndent + row.item + (row.detail.empty() ? "" : ": " + row.detail) + "\n";
    }
    return text;
}

}  // namespace lv
