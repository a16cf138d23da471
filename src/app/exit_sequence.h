#pragma once
#include <functional>
#include <optional>
#include <string>

#include "common/prompter.h"
#include "settings/session_config.h"
#include "settings/settings_file.h"

namespace lv {

// What the window knows when it is asked to close.
struct ExitRequest {
    bool recordingInProgress = false;
    bool recordingNotSaved = false;  // the recorder's RecNotSaved
    // Closing on SIGTERM or SIGINT: nobody is there to answer, so nothing is asked.
    bool unattended = false;
};

// The window's side of the exit. Empty members are skipped.
struct ExitHooks {
    // Writes lv_Analog.cfg; the error to show when it could not.
    std::function<std::optional<SessionConfigError>()> writeSessionConfig;
    // Unattended only: keeps an unsaved recording where the next start finds it.
    std::function<void()> keepRecordingForRecovery;
    // Unattended only: where an error goes that would have been a message box.
    std::function<void(const std::string&)> report;
    // Sends "close WavFile" to the audio track.
    std::function<void()> closeAudio;
};

enum class ExitResult { Cancelled, Closed };

inline constexpr const char* kRecordingNotSavedText = "Recording not saved, Exit?";
inline constexpr const char* kSettingsChangedTitle = "Program settings have changed";

// The main window's query-unload. Cancelled means the operator chose to stay
// and nothing has been written.
//
// Unattended, an AutoSaveMode of Prompt keeps the file as it is: writing a
// settings file nobody agreed to could overwrite one chosen or edited by
// hand, while an unsaved change is only a preference to set again.
ExitResult runExitSequence(SettingsStore& store, Prompter& prompter, const ExitRequest& request,
                           const ExitHooks& hooks);

}  // namespace lv
