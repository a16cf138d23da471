#include "app/data_folder.h"

#include <system_error>

#include "settings/session_config.h"
#include "settings/settings_file.h"

namespace lv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kFolderName = "lv_Analog";

// Callers glue file names straight on, so the folder always ends in one '/'.
std::string withSlash(const fs::path& dir) {
    std::string s = dir.lexically_normal().string();
    while (s.size() > 1 && s.back() == '/') s.pop_back();
    if (s != "/") s += '/';
    return s;
}

bool isFile(const fs::path& p) {
    std::error_code ec;
    return fs::is_regular_file(p, ec);
}

DataFolderResult ensureFolder(const fs::path& dir) {
    std::error_code ec;
    const fs::path absolute = fs::absolute(dir, ec);
    if (ec) return {"", "cannot use the data folder \"" + dir.string() + "\": " + ec.message(), ""};
    const std::string folder = withSlash(absolute);
    const std::string shown = folder.size() > 1 ? folder.substr(0, folder.size() - 1) : folder;
    if (fs::exists(absolute, ec) && !fs::is_directory(absolute, ec))
        return {"", "the data folder \"" + shown + "\" exists but is not a folder", ""};
    fs::create_directories(absolute, ec);
    if (ec) return {"", "cannot create the data folder \"" + shown + "\": " + ec.message(), ""};
    return {folder, "", ""};
}

DataFolderResult withRecordingsInside(DataFolderResult result) {
    if (result.error.empty()) result.recordings = recordingsInside(result.folder);
    return result;
}

DataFolderResult withRecordingsIn(DataFolderResult result, const std::string& documents) {
    if (!result.error.empty()) return result;
    if (documents.empty() || !fs::path(documents).is_absolute())
        return withRecordingsInside(result);
    result.recordings = withSlash(fs::path(documents) / kFolderName);
    return result;
}

}  // namespace

std::string recordingsInside(const std::string& dataFolder) {
    return withSlash(fs::path(dataFolder) / "recordings");
}

DataFolderResult chooseDataFolder(const DataFolderInputs& in) {
    if (!in.dataDirOption.empty()) return withRecordingsInside(ensureFolder(in.dataDirOption));

    if (!in.exeDir.empty() &&
        (isFile(in.exeDir / kSettingsFileName) || isFile(in.exeDir / kSessionConfigFileName)))
        return withRecordingsInside(ensureFolder(in.exeDir));

    // A relative XDG_CONFIG_HOME is invalid and must be ignored.
    if (!in.xdgConfigHome.empty() && fs::path(in.xdgConfigHome).is_absolute())
        return withRecordingsIn(ensureFolder(fs::path(in.xdgConfigHome) / kFolderName),
                                in.documentsFolder);
    if (!in.home.empty())
        return withRecordingsIn(ensureFolder(fs::path(in.home) / ".config" / kFolderName),
                                in.documentsFolder);
    return {"",
            "cannot choose a data folder: neither XDG_CONFIG_HOME nor HOME is set "
            "(give one with --data-dir DIR)",
            ""};
}

std::optional<fs::path> findResource(std::string_view name, const fs::path& exeDir) {
    // Without a known folder the search would wander into the current one.
    if (exeDir.empty()) return std::nullopt;
    for (const fs::path& dir : {exeDir, exeDir / ".." / "share" / kFolderName}) {
        const fs::path candidate = (dir / name).lexically_normal();
        if (isFile(candidate)) return candidate;
    }
    return std::nullopt;
}

}  // namespace lv
