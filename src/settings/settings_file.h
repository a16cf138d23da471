#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "settings/settings.h"
#include "settings/settings_table.h"

// Moving the settings between memory and lv_Analog.ini: the load, the two
// saves, the changed-settings test used at exit, and the file-existence test
// the load and the recorder share.
namespace lv {

inline constexpr std::string_view kSettingsFileName = "lv_Analog.ini";

// AutoSaveMode: what happens to changed settings at exit.
inline constexpr std::int32_t kAutoSaveOff = 0;
inline constexpr std::int32_t kAutoSaveOn = 1;
inline constexpr std::int32_t kAutoSavePrompt = 2;

// The program-wide settings state. Before the first LoadSettings every value
// is zero or empty, as the program's globals were: a key whose text fails to
// convert on start-up is left there, while a missing key takes its default.
struct SettingsStore {
    Settings values = blankSettings();
    std::string SettingsFilePath;  // full path of the settings file in use
    std::int32_t AutoSaveMode = kAutoSaveOff;
    bool SettingsFileFound = false;  // the answer of the last FileExists
    std::string DataFolder;          // the program's data folder, ending in "/"
    // Where recordings go while SavePath names no folder of its own; ends in "/".
    std::string RecordingsFolder;
    // SavePath as the file holds it. Memory holds it resolved (resolveSavePath);
    // saving writes this text back while the folder is unchanged, so an empty
    // or relative path stays one in the file.
    std::string SavePathAsRead;
};

// The folder a SavePath text stands for: an absolute path as it is; an empty
// one, or one written for another system ("C:\..."), the recordings folder;
// a relative one inside the data folder, never the current directory. The
// answer ends in "/"; it is empty only when the recordings folder is unknown
// and the text is empty.
std::string resolveSavePath(const std::string& text, const std::string& dataFolder,
                            const std::string& recordingsFolder);

// Sets SettingsFileFound: true when the path names something that is there
// (a file or a folder). An empty path is never found.
void FileExists(SettingsStore& store, std::string_view path);

// A missing or vanished SettingsFilePath becomes the data folder's
// lv_Analog.ini; then every key is read in table order. A key that is missing
// takes its default; one whose text does not convert keeps its value.
// SavePath is then resolved (resolveSavePath).
void LoadSettings(SettingsStore& store);

// Colors, Format, Settings and Graph, in the save order. The write is not
// checked by the program; false is for tests.
bool SaveSettings(const SettingsStore& store);
// Recording only.
bool SaveRecordingSettings(const SettingsStore& store);

// True when every Colors, Format, Settings and Graph key in the file equals
// memory: numbers by value ("4.0" is 4), booleans as booleans, the keys kept
// as text by their text. Recording is never compared.
bool SettingsUnchanged(const SettingsStore& store);

// "Save Settings As" once a name has been chosen: an existing file is deleted
// first, so the new file holds only the sections SaveSettings writes, and the
// name becomes the file in use.
bool SaveSettingsAs(SettingsStore& store, const std::string& path);

}  // namespace lv
