#include "settings/settings_file.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <type_traits>
#include <variant>

#include "common/vb_format.h"
#include "settings/profile_file.h"
#include "settings/settings_table.h"

namespace lv {

namespace {

constexpr std::string_view kRecordingSection = "Recording";

// The blanks the number conversions trim.
bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

bool isBooleanWord(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    if (text.size() != 4 && text.size() != 5) return false;
    std::string lowered(text);
    for (char& c : lowered)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lowered == "true" || lowered == "false";
}

// Text to a double the way the comparison converts it: any number form the
// integer conversions accept, unrounded. Apart from the two words, vbCBool
// accepts exactly those forms, and for them vbVal gives the value.
std::optional<double> numberOf(std::string_view text) {
    if (isBooleanWord(text) || !vbCBool(text)) return std::nullopt;
    return vbVal(text);
}

bool fileMatches(const Settings& values, const SettingEntry& entry, const std::string& text) {
    switch (entry.kind) {
        case SettingKind::Boolean: {
            const std::optional<bool> b = vbCBool(text);
            return b && *b == values.*std::get<bool Settings::*>(entry.member);
        }
        case SettingKind::KeptText:
        case SettingKind::Text:
            return text == values.*std::get<std::string Settings::*>(entry.member);
        case SettingKind::Long:
        case SettingKind::Integer:
        case SettingKind::ColourLong: {
            // A file text that is not a number counts as a change: saving mends it.
            const std::optional<double> fromFile = numberOf(text);
            const double inMemory = std::visit(
                [&](auto member) -> double {
                    using T = std::remove_cvref_t<decltype(values.*member)>;
                    if constexpr (std::is_same_v<T, Colour>)
                        return static_cast<std::int32_t>(values.*member);
                    else if constexpr (std::is_arithmetic_v<T>)
                        return values.*member;
                    else
                        return 0.0;  // not reached: the table ties numeric kinds to numeric members
                },
                entry.member);
            return fromFile && *fromFile == inMemory;
        }
    }
    return false;
}

std::string withSlash(std::string folder) {
    if (!folder.empty() && folder.back() != '/') folder += '/';
    return folder;
}

// SavePath as the file should hold it: the text it was read from while it
// still stands for the folder in use.
std::string savedText(const SettingsStore& store, const SettingEntry& e) {
    const std::string text = settingText(store.values, e);
    if (e.key != "SavePath") return text;
    const std::string asRead =
        resolveSavePath(store.SavePathAsRead, store.DataFolder, store.RecordingsFolder);
    return asRead == store.values.SavePath ? store.SavePathAsRead : text;
}

template <typename Entries>
bool writeEntries(const SettingsStore& store, const Entries& entries) {
    // One read and one write of the file: the same bytes as writing the keys
    // one by one, without rewriting the file thirty-six times.
    std::optional<ProfileFile> profile = ProfileFile::loadForUpdate(store.SettingsFilePath);
    if (!profile) return false;
    for (const SettingEntry* e : entries) profile->write(e->section, e->key, savedText(store, *e));
    return profile->save(store.SettingsFilePath);
}

}  // namespace

std::string resolveSavePath(const std::string& text, const std::string& dataFolder,
                            const std::string& recordingsFolder) {
    // A drive letter or a backslash: a Windows folder, nowhere on this system.
    const bool foreign =
        text.find('\\') != std::string::npos || (text.size() >= 2 && text[1] == ':');
    if (text.empty() || foreign) return withSlash(recordingsFolder);
    if (text.front() == '/' || dataFolder.empty()) return withSlash(text);
    return withSlash(dataFolder) + withSlash(text);
}

void FileExists(SettingsStore& store, std::string_view path) {
    std::error_code ec;
    store.SettingsFileFound =
        !path.empty() && std::filesystem::exists(std::filesystem::path(path), ec);
}

void LoadSettings(SettingsStore& store) {
    FileExists(store, store.SettingsFilePath);
    if (!store.SettingsFileFound)
        store.SettingsFilePath = store.DataFolder + std::string(kSettingsFileName);

    const ProfileFile profile = ProfileFile::load(store.SettingsFilePath);
    for (const SettingEntry& e : settingsTable())
        applySettingText(store.values, e, profile.read(e.section, e.key, defaultText(e)));
    store.SavePathAsRead = store.values.SavePath;
    store.values.SavePath =
        resolveSavePath(store.SavePathAsRead, store.DataFolder, store.RecordingsFolder);
}

bool SaveSettings(const SettingsStore& store) {
    return writeEntries(store, saveSettingsOrder());
}

bool SaveRecordingSettings(const SettingsStore& store) {
    return writeEntries(store, saveRecordingOrder());
}

bool SettingsUnchanged(const SettingsStore& store) {
    const ProfileFile profile = ProfileFile::load(store.SettingsFilePath);
    bool unchanged = true;
    for (const SettingEntry& e : settingsTable()) {
        if (e.section == kRecordingSection) continue;
        if (!fileMatches(store.values, e, profile.read(e.section, e.key, defaultText(e))))
            unchanged = false;
    }
    return unchanged;
}

bool SaveSettingsAs(SettingsStore& store, const std::string& path) {
    FileExists(store, path);
    if (store.SettingsFileFound) {
        std::error_code ec;
        std::filesystem::remove(path, ec);
    }
    store.SettingsFilePath = path;
    return SaveSettings(store);
}

}  // namespace lv
