#include "settings/settings_table.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "common/vb_format.h"

namespace lv {

namespace {

using K = SettingKind;
using S = Settings;

constexpr std::string_view kColors = "Colors";
constexpr std::string_view kFormat = "Format";
constexpr std::string_view kSettings = "Settings";
constexpr std::string_view kGraph = "Graph";
constexpr std::string_view kRecording = "Recording";

// The defaults live in the member initialisers of Settings.
constexpr SettingEntry kTable[] = {
    {kColors, "Dial_Color", K::ColourLong, &S::Dial_Color},
    {kColors, "LED_Set_Color", K::ColourLong, &S::LED_Set_Color},
    {kColors, "LED_BM_Color", K::ColourLong, &S::LED_BM_Color},
    {kColors, "LED_Lag_Color", K::ColourLong, &S::LED_Lag_Color},
    {kColors, "Panel_Color", K::ColourLong, &S::Panel_Color},
    {kColors, "Background_Color", K::ColourLong, &S::Background_Color},
    {kColors, "GraphSheet_Color", K::ColourLong, &S::GraphSheet_Color},
    {kColors, "GraphPen_Color", K::ColourLong, &S::GraphPen_Color},
    {kColors, "GraphGrid_Color", K::ColourLong, &S::GraphGrid_Color},
    {kColors, "MainNeedle_Color", K::ColourLong, &S::MainNeedle_Color},
    {kColors, "ShadowNeedleColor_Index", K::Integer, &S::ShadowNeedleColor_Index},
    {kColors, "FreezeNeedle_Color", K::ColourLong, &S::FreezeNeedle_Color},
    {kColors, "Scale_Color", K::ColourLong, &S::Scale_Color},
    {kColors, "Text_Color", K::ColourLong, &S::Text_Color},

    {kFormat, "Needle_Width", K::Integer, &S::Needle_Width},
    {kFormat, "DialType", K::Long, &S::DialType},
    {kFormat, "ScaleType", K::Long, &S::ScaleType},
    {kFormat, "RecordVisible", K::Boolean, &S::RecordVisible},
    {kFormat, "GraphVisible", K::Boolean, &S::GraphVisible},
    {kFormat, "GraphHeight_Index", K::KeptText, &S::GraphHeight_Index},
    {kFormat, "ClockType", K::Long, &S::ClockType},
    {kFormat, "ClockLeft", K::Boolean, &S::ClockLeft},
    {kFormat, "DateType", K::Long, &S::DateType},

    {kSettings, "SwitchMode_Index", K::Integer, &S::SwitchMode_Index},
    {kSettings, "DataLag_Index", K::Integer, &S::DataLag_Index},
    {kSettings, "BM_Threshold_Index", K::Integer, &S::BM_Threshold_Index},
    {kSettings, "Freeze_Threshold_Index", K::Integer, &S::Freeze_Threshold_Index},
    {kSettings, "FreezeEnable", K::Boolean, &S::FreezeEnable},
    {kSettings, "NeedleBdEnable", K::Boolean, &S::NeedleBdEnable},
    {kSettings, "lv3SensorMode", K::Boolean, &S::lv3SensorMode},

    {kGraph, "GraphInvert", K::Boolean, &S::GraphInvert},
    {kGraph, "GraphPenWidth_Index", K::KeptText, &S::GraphPenWidth_Index},
    {kGraph, "GridX", K::Boolean, &S::GridX},
    {kGraph, "GridY", K::Boolean, &S::GridY},
    {kGraph, "GraphTimescale", K::KeptText, &S::GraphTimescale},
    {kGraph, "GraphGain", K::Integer, &S::GraphGain},

    {kRecording, "SavePath", K::Text, &S::SavePath},
    {kRecording, "SavePrefix", K::Text, &S::SavePrefix},
    {kRecording, "LoadPath", K::Text, &S::LoadPath},
    {kRecording, "RecordingMode", K::Long, &S::RecordingMode},
    {kRecording, "SuffixType", K::Long, &S::SuffixType},
    {kRecording, "SuffixNum", K::Integer, &S::SuffixNum},
    {kRecording, "AudioEnable", K::Boolean, &S::AudioEnable},
    {kRecording, "RecPromptEnable", K::Boolean, &S::RecPromptEnable},
    {kRecording, "TimeDateEnable", K::Boolean, &S::TimeDateEnable},
    {kRecording, "PlayLoopEnable", K::Boolean, &S::PlayLoopEnable},
};

constexpr bool kindFitsMember(const SettingEntry& e) {
    switch (e.kind) {
        case K::Long:
            return std::holds_alternative<std::int32_t S::*>(e.member);
        case K::Integer:
            return std::holds_alternative<std::int16_t S::*>(e.member);
        case K::Boolean:
            return std::holds_alternative<bool S::*>(e.member);
        case K::ColourLong:
            return std::holds_alternative<Colour S::*>(e.member);
        case K::KeptText:
        case K::Text:
            return std::holds_alternative<std::string S::*>(e.member);
    }
    return false;
}
static_assert(std::all_of(std::begin(kTable), std::end(kTable), kindFitsMember),
              "a key's kind must match the type of its member");

// A misspelt key name stops the build here rather than a save at run time.
constexpr const SettingEntry* key(std::string_view name) {
    for (const SettingEntry& e : kTable)
        if (e.key == name) return &e;
    throw "not a key of the settings table";
}

constexpr const SettingEntry* kSaveOrder[] = {
    key("Dial_Color"),
    key("LED_Set_Color"),
    key("LED_BM_Color"),
    key("LED_Lag_Color"),
    key("Panel_Color"),
    key("Background_Color"),
    key("GraphSheet_Color"),
    key("GraphPen_Color"),
    key("GraphGrid_Color"),
    key("MainNeedle_Color"),
    key("ShadowNeedleColor_Index"),
    key("Scale_Color"),
    key("FreezeNeedle_Color"),
    key("Text_Color"),

    key("Needle_Width"),
    key("DialType"),
    key("ScaleType"),
    key("RecordVisible"),
    key("GraphHeight_Index"),
    key("GraphVisible"),
    key("ClockType"),
    key("ClockLeft"),
    key("DateType"),

    key("SwitchMode_Index"),
    key("DataLag_Index"),
    key("BM_Threshold_Index"),
    key("Freeze_Threshold_Index"),
    key("FreezeEnable"),
    key("NeedleBdEnable"),
    key("lv3SensorMode"),

    key("GraphInvert"),
    key("GraphPenWidth_Index"),
    key("GridX"),
    key("GridY"),
    key("GraphTimescale"),
    key("GraphGain"),
};

constexpr const SettingEntry* kRecordingOrder[] = {
    key("SavePath"),       key("SavePrefix"),     key("LoadPath"),    key("RecordingMode"),
    key("SuffixType"),     key("SuffixNum"),      key("AudioEnable"), key("RecPromptEnable"),
    key("TimeDateEnable"), key("PlayLoopEnable"),
};

const Settings& defaults() {
    static const Settings values;
    return values;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::span<const SettingEntry> settingsTable() {
    return kTable;
}
std::span<const SettingEntry* const> saveSettingsOrder() {
    return kSaveOrder;
}
std::span<const SettingEntry* const> saveRecordingOrder() {
    return kRecordingOrder;
}

const SettingEntry* findSetting(std::string_view name) {
    for (const SettingEntry& e : kTable)
        if (std::equal(e.key.begin(), e.key.end(), name.begin(), name.end(),
                       [](char a, char b) { return lower(a) == lower(b); }))
            return &e;
    return nullptr;
}

std::string settingText(const Settings& values, const SettingEntry& entry) {
    return std::visit(
        [&](auto member) -> std::string {
            using T = std::remove_cvref_t<decltype(values.*member)>;
            const T& v = values.*member;
            if constexpr (std::is_same_v<T, bool>)
                return vbBoolText(v);
            else if constexpr (std::is_same_v<T, std::string>)
                return v;
            else if constexpr (std::is_same_v<T, Colour>)
                return std::to_string(static_cast<std::int32_t>(v));  // held in a signed Long
            else
                return std::to_string(v);
        },
        entry.member);
}

std::string defaultText(const SettingEntry& entry) {
    return settingText(defaults(), entry);
}

bool applySettingText(Settings& values, const SettingEntry& entry, std::string_view text) {
    return std::visit(
        [&](auto member) -> bool {
            using T = std::remove_cvref_t<decltype(values.*member)>;
            if constexpr (std::is_same_v<T, std::string>) {
                values.*member = std::string(text);
                return true;
            } else {
                std::optional<T> converted;
                if constexpr (std::is_same_v<T, bool>) {
                    converted = vbCBool(text);
                } else if constexpr (std::is_same_v<T, std::int16_t>) {
                    converted = vbCInt(text);
                } else if constexpr (std::is_same_v<T, std::int32_t>) {
                    converted = vbCLng(text);
                } else {
                    static_assert(std::is_same_v<T, Colour>);
                    if (const std::optional<std::int32_t> v = vbCLng(text))
                        converted = static_cast<Colour>(*v);
                }
                if (!converted) return false;
                values.*member = *converted;
                return true;
            }
        },
        entry.member);
}

Settings blankSettings() {
    Settings values;
    for (const SettingEntry& e : kTable)
        std::visit([&](auto member) { values.*member = {}; }, e.member);
    return values;
}

void setDefaultColours(Settings& values) {
    for (const SettingEntry& e : kTable)
        if (e.section == kColors)
            std::visit([&](auto member) { values.*member = defaults().*member; }, e.member);
}

}  // namespace lv
