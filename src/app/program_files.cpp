#include "app/program_files.h"

#include <algorithm>
#include <limits>
#include <system_error>

namespace lv {

namespace {

std::int16_t toItem(int value) {
    return static_cast<std::int16_t>(std::clamp<int>(
        value, std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()));
}

// Copies the cfg beside itself under a name no file has yet.
std::optional<std::filesystem::path> keepCopy(const std::filesystem::path& cfg) {
    namespace fs = std::filesystem;
    std::error_code ec;
    for (int n = 1; n < 100; ++n) {
        const fs::path bak =
            fs::path(cfg.string() + ".bak" + (n == 1 ? std::string() : "." + std::to_string(n)));
        if (fs::exists(fs::symlink_status(bak, ec))) continue;
        if (fs::copy_file(cfg, bak, ec) && !ec) return bak;
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::string loadProgramFiles(const std::filesystem::path& dataFolder, SettingsStore& store,
                             SessionConfig& session) {
    namespace fs = std::filesystem;
    std::string folder = dataFolder.string();
    if (!folder.empty() && folder.back() != '/') folder += '/';
    store.DataFolder = folder;
    std::string notice;
    if (!LoadSessionConfig(dataFolder, session)) {
        // What was read before a bad item stays, and the fresh file holds it;
        // the values never reached (the dial calibration last) would be
        // written as zeros, so the old file is kept first.
        const fs::path cfg = dataFolder / kSessionConfigFileName;
        std::error_code ec;
        const fs::file_status status = fs::status(cfg, ec);
        if (status.type() == fs::file_type::not_found) {
            SaveSessionConfig(dataFolder, session);
        } else if (!fs::is_regular_file(status)) {
            // Writing to a pipe or device would wait, or go nowhere.
            notice = cfg.string() + " is not an ordinary file, so it is left as it is.";
        } else if (const auto bak = keepCopy(cfg)) {
            SaveSessionConfig(dataFolder, session);
            notice = cfg.string() +
                     " could not be read in full, so it has been written afresh; settings it "
                     "held past the damage, the dial calibration among them, are lost from "
                     "it.\n\nThe old file is kept as\n" +
                     bak->string();
        } else {
            notice = cfg.string() +
                     " could not be read in full, and no copy of it could be made, so it is "
                     "left as it is for now.";
        }
    }
    store.SettingsFilePath = session.SettingsFilePath;
    store.AutoSaveMode = session.AutoSaveMode;
    // The settings file has the last word on the scale.
    store.values.ScaleType = session.ScaleType;
    LoadSettings(store);
    return notice;
}

std::int16_t savedPort(const SessionConfig& session, int portCount) {
    if (session.PortNumber < 1 || session.PortNumber > portCount) return 0;
    if (session.PortCandidateCount != 0 && session.PortCandidateCount != portCount) return 0;
    return session.PortNumber;
}

WindowPlacement placementOf(const SessionConfig& session) {
    return {session.WindowLeft, session.WindowTop, session.WindowWidth, session.WindowHeight};
}

SessionConfig sessionToSave(SessionConfig session, const SettingsStore& store,
                            std::int16_t portNumber, int portCount,
                            std::optional<WindowPlacement> placement) {
    session.SettingsFilePath = store.SettingsFilePath;
    session.AutoSaveMode = store.AutoSaveMode;
    session.ScaleType = store.values.ScaleType;
    session.PortNumber = portNumber;
    session.PortCandidateCount = portNumber != 0 ? toItem(portCount) : 0;
    if (placement && placement->valid()) {
        session.WindowLeft = toItem(placement->left);
        session.WindowTop = toItem(placement->top);
        session.WindowWidth = toItem(placement->width);
        session.WindowHeight = toItem(placement->height);
    }
    return session;
}

}  // namespace lv
