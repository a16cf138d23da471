#include "recording/rec_setup.h"

namespace lv {

std::string recordingModeDescription(std::int32_t mode) {
    for (const RecordingModeChoice& choice : kRecordingModeChoices)
        if (choice.mode == mode) return choice.description;
    return {};
}

bool isAutomaticMode(std::int32_t mode) {
    return mode == kModeAutoName || mode == kModeAutoSave;
}

bool modeSelectable(std::int32_t mode, const std::string& savePath) {
    return !isAutomaticMode(mode) || !savePath.empty();
}

std::int32_t selectableMode(std::int32_t mode, const std::string& savePath) {
    return modeSelectable(mode, savePath) ? mode : kModeManual;
}

std::string saveFolderText(const std::string& chosenFolder) {
    if (chosenFolder.empty() || chosenFolder.back() == '/') return chosenFolder;
    return chosenFolder + "/";
}

std::optional<PrefixProblem> checkPrefix(const std::string& savePath, const std::string& prefix) {
    if (!prefixStaysInFolder(prefix))
        return PrefixProblem{"Validate Filename", "Error: Invalid Prefix name "};
    if (savePath.empty()) return std::nullopt;
    return validatePrefix(savePath, prefix);
}

std::string nextNameText(const Settings& settings) {
    const std::string name = settings.SuffixType == kSuffixNumber
                                 ? numberedName(settings.SavePrefix, settings.SuffixNum)
                                 : settings.SavePrefix + "yy-mm-dd__Hh.Nn.Ss";
    return name + ".lvd";
}

std::string recordingModeTooltip(const Settings& settings) {
    std::string text = recordingModeDescription(settings.RecordingMode);
    if (isAutomaticMode(settings.RecordingMode) && !settings.SavePath.empty())
        text += " in " + settings.SavePath;
    return text;
}

void copyRecordingSetup(const Settings& from, Settings& to) {
    to.RecordingMode = from.RecordingMode;
    to.SavePath = from.SavePath;
    to.SavePrefix = from.SavePrefix;
    to.SuffixType = from.SuffixType;
    to.SuffixNum = from.SuffixNum;
    to.AudioEnable = from.AudioEnable;
    to.TimeDateEnable = from.TimeDateEnable;
    to.RecPromptEnable = from.RecPromptEnable;
}

}  // namespace lv
