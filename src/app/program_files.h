#pragma once
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "settings/session_config.h"
#include "settings/settings_file.h"

namespace lv {

// Where the main window stood, in screen pixels.
struct WindowPlacement {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    // A zero size means nothing was saved: the window keeps its own size.
    bool valid() const { return width > 0 && height > 0; }
};

// Start-up: lv_Analog.cfg first (written afresh when it cannot be read),
// then lv_Analog.ini from the file the session names. The store learns the
// data folder, the settings file in use and the autosave choice. A cfg that
// cannot be read is first kept as lv_Analog.cfg.bak (.bak.2, ... when taken):
// it holds the dial calibration. What the operator should be told about
// that comes back; empty when there is nothing to tell.
std::string loadProgramFiles(const std::filesystem::path& dataFolder, SettingsStore& store,
                             SessionConfig& session);

// The port to try first. Port n is the n-th candidate, so a number saved
// when the list had another length may now name another device: then none.
std::int16_t savedPort(const SessionConfig& session, int portCount);

WindowPlacement placementOf(const SessionConfig& session);

// What the exit (or a calibration upload) writes to lv_Analog.cfg: the
// session as loaded, brought up to date with what may have changed since.
SessionConfig sessionToSave(SessionConfig session, const SettingsStore& store,
                            std::int16_t portNumber, int portCount,
                            std::optional<WindowPlacement> placement);

}  // namespace lv
