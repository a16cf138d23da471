#pragma once
#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// lv_Analog.cfg: the program's own state between runs, in the data folder.
// Sequential "write" text: items separated by commas, text in double quotes,
// numbers in plain decimal, lines ended by "\r\n". The items are read back by
// position, so their order is the format.
namespace lv {

inline constexpr std::string_view kSessionConfigFileName = "lv_Analog.cfg";

struct SessionConfig {
    std::string SettingsFilePath;   // 1
    std::int32_t AutoSaveMode = 0;  // 2
    std::int16_t PortNumber = 0;    // 3: the port last used, 1-based; 0 = none
    // 4: how many port candidates there were when PortNumber was chosen, 0
    // when none was looked for. If the list has changed size since, the
    // same number may name another device.
    std::int16_t PortCandidateCount = 0;
    std::int16_t WindowLeft = 0;    // 5
    std::int16_t WindowTop = 0;     // 6
    std::int16_t WindowWidth = 0;   // 7
    std::int16_t WindowHeight = 0;  // 8
    // 9: the meter's serial number as last reported. Written for whoever
    // reads the file; never read back, the meter reports it afresh.
    std::string HardwareSerial;
    std::int32_t ScaleType = 0;  // 10
    // 11-21 are indexes 0..10; index 11 is not kept in the file.
    std::array<std::int16_t, 12> DialCalibration{};
};

// What the window shows when the file cannot be written.
struct SessionConfigError {
    std::string text;
    std::string title;
    std::string detail;  // the file and the system's reason
};

// The file's bytes.
std::string sessionConfigText(const SessionConfig& config);

// Reads the items in order into config. Items 1-8 must all be there and be
// valid, else false, with the items before the bad one already taken. After
// them the rest is optional: a file that stops early, or has a bad item, still
// loads, with the calibration values up to that point taken.
bool parseSessionConfig(std::string_view text, SessionConfig& config);

// The file in the data folder. A missing or unreadable file gives false.
bool LoadSessionConfig(const std::filesystem::path& dataFolder, SessionConfig& config);
// Replaces the file; the error to show when it could not be written.
std::optional<SessionConfigError> SaveSessionConfig(const std::filesystem::path& dataFolder,
                                                    const SessionConfig& config);

}  // namespace lv
