#include "app/program_files.h"

#include <algorithm>
#include <limits>

namespace lv {

namespace {

std::int16_t toItem(int value) {
    return static_cast<std::int16_t>(std::clamp<int>(
        value, std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()));
}

}  // namespace

void loadProgramFiles(const std::filesystem::path& dataFolder, SettingsStore& store,
                      SessionConfig& session) {
    std::string folder = dataFolder.string();
    if (!folder.empty() && folder.back() != '/') folder += '/';
    store.DataFolder = folder;
    // What was read before a bad item stays, and the fresh file holds it.
    if (!LoadSessionConfig(dataFolder, session)) SaveSessionConfig(dataFolder, session);
    store.SettingsFilePath = session.SettingsFilePath;
    store.AutoSaveMode = session.AutoSaveMode;
    // The settings file has the last word on the scale.
    store.values.ScaleType = session.ScaleType;
    LoadSettings(store);
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
