#include "app/exit_sequence.h"

namespace lv {

ExitResult runExitSequence(SettingsStore& store, Prompter& prompter, const ExitRequest& request,
                           const ExitHooks& hooks) {
    const bool recordingAtRisk = request.recordingInProgress || request.recordingNotSaved;
    if (request.unattended) {
        // Kept whatever RecPromptEnable says: the operator was not there to
        // decide that the recording could go.
        if (recordingAtRisk && hooks.keepRecordingForRecovery) hooks.keepRecordingForRecovery();
    } else if (recordingAtRisk && store.values.RecPromptEnable) {
        if (prompter.ask("Warning", kRecordingNotSavedText, Buttons::YesNo, Icon::None) !=
            Answer::Yes)
            return ExitResult::Cancelled;
    }

    if (hooks.writeSessionConfig) {
        if (const auto error = hooks.writeSessionConfig()) {
            // The program closes anyway; the operator only learns of it.
            if (!request.unattended)
                prompter.ask(error->title, error->text, Buttons::Ok, Icon::Critical,
                             {.informative = error->detail});
            else if (hooks.report)
                hooks.report(error->text + ": " + error->detail);
        }
    }

    SaveRecordingSettings(store);
    if (store.AutoSaveMode == kAutoSaveOn) SaveSettings(store);
    // Also after the save above, which it then finds unchanged.
    const bool unchanged = SettingsUnchanged(store);
    if (!unchanged && store.AutoSaveMode == kAutoSavePrompt && !request.unattended) {
        const std::string text = "Save settings?\n\n( to " + store.SettingsFilePath + ")";
        if (prompter.ask(kSettingsChangedTitle, text, Buttons::YesNo, Icon::None) == Answer::Yes)
            SaveSettings(store);
    }

    if (hooks.closeAudio) hooks.closeAudio();
    return ExitResult::Closed;
}

}  // namespace lv
