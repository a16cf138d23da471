#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "settings/settings.h"

// Every key of lv_Analog.ini in one table: the load, both saves, the
// comparison and the colour defaults all walk it, so a key is named once.
namespace lv {

enum class SettingKind {
    Long,        // 32-bit signed
    Integer,     // 16-bit signed
    Boolean,     // "True"/"False" on save; any number or either word on load
    ColourLong,  // a Long holding 0x00BBGGRR
    KeptText,    // a number choice kept as the text read, converted where used
    Text,
};

using SettingMember = std::variant<std::int32_t Settings::*, std::int16_t Settings::*,
                                   bool Settings::*, Colour Settings::*, std::string Settings::*>;

struct SettingEntry {
    std::string_view section;
    std::string_view key;
    SettingKind kind;
    SettingMember member;
};

// In load order: Colors, Format, Settings, Graph, Recording.
std::span<const SettingEntry> settingsTable();

// The keys SaveSettings writes, in its own order: it differs from the load
// order in Colors (Scale_Color before FreezeNeedle_Color) and in Format
// (GraphHeight_Index before GraphVisible).
std::span<const SettingEntry* const> saveSettingsOrder();
// The Recording keys, in the order SaveRecordingSettings writes them.
std::span<const SettingEntry* const> saveRecordingOrder();

// nullptr for a key that is not in the table (any letter case).
const SettingEntry* findSetting(std::string_view key);

// The value as the save writes it: decimal for numbers (a colour as the signed
// Long it is stored in), "True"/"False", text as it stands.
std::string settingText(const Settings& values, const SettingEntry& entry);
// The text the load passes as the default: the default value turned into text
// as the save would write it.
std::string defaultText(const SettingEntry& entry);
// Converts text to the key's type and stores it; false, and the member left
// as it was, when the text is not a value of that type.
bool applySettingText(Settings& values, const SettingEntry& entry, std::string_view text);

// Every member zero or empty: what the program holds before its first load,
// and so what a key that fails to load on start-up is left at.
Settings blankSettings();

// The colour menu's "Set Defaults": the fourteen Colors keys back to their
// defaults, nothing else.
void setDefaultColours(Settings& values);

}  // namespace lv
