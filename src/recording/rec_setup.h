#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "recording/naming.h"
#include "settings/settings.h"

// The choices of the recording setup dialog that are more than a setting
// shown in a control: which modes can be chosen, what a chosen folder and a
// typed prefix become, and the texts that describe the result. The names and
// captions themselves come from naming.h.
namespace lv {

enum RecordingModeValue : std::int32_t {
    kModeManual = 1,
    kModeAutoName = 2,
    kModeAutoSave = 3,
    kModeCapture = 4,
};

struct RecordingModeChoice {
    std::int32_t mode;
    const char* description;
};
// The dialog's options, top to bottom.
inline constexpr std::array<RecordingModeChoice, 4> kRecordingModeChoices{{
    {kModeAutoSave, "Auto name and auto save"},
    {kModeAutoName, "Auto name and manually save"},
    {kModeManual, "Manual"},
    {kModeCapture, "Capture only (kept in memory, never saved)"},
}};

// The dialog's description of a mode; empty for a value no mode stands for.
std::string recordingModeDescription(std::int32_t mode);

// The modes that name a recording in the save folder.
bool isAutomaticMode(std::int32_t mode);
// An automatic mode needs a save folder; the others can always be chosen.
bool modeSelectable(std::int32_t mode, const std::string& savePath);
// The mode the dialog starts from: an automatic mode without a folder falls
// back to "Manual" rather than offering a choice that cannot be made.
std::int32_t selectableMode(std::int32_t mode, const std::string& savePath);

// The folder browser's answer as SavePath: ends in "/"; empty stays empty.
std::string saveFolderText(const std::string& chosenFolder);

// The prefix check on confirming the dialog. A prefix names files in the
// save folder: one that reaches into another folder is refused before any
// file is tried, since a reset could never find that series again. With a
// folder set, prefix + "000.lvd" must be creatable there (validatePrefix).
// Without one nothing is named automatically, so only the first rule applies.
std::optional<PrefixProblem> checkPrefix(const std::string& savePath, const std::string& prefix);

// The next file name, as the dialog previews it: prefix + SuffixNum + ".lvd",
// or the date-time pattern in place of the number.
std::string nextNameText(const Settings& settings);
// The recording panel's mode tooltip: the mode's description, and for an
// automatic mode the folder the recordings go to.
std::string recordingModeTooltip(const Settings& settings);

// The settings the dialog edits, copied from its working copy back into the
// settings in force; no other setting is touched.
void copyRecordingSetup(const Settings& from, Settings& to);

}  // namespace lv
