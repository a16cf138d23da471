#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The lv3 meter's serial protocol: command texts, the data frame, the version
// reply and the playback line. Shared by the program and the virtual meter.
namespace lv::protocol {

inline constexpr char kCR = '\r';

// Commands, each sent as its text and one carriage return.
inline constexpr std::string_view kQuiet = "Q";
inline constexpr std::string_view kVersion = "V";
inline constexpr std::string_view kStart = "U";
inline constexpr std::string_view kRun = "R";
inline constexpr std::string_view kSensorLocal = "SL";
inline constexpr std::string_view kSensorRemote = "SR";
inline constexpr std::string_view kDialTest = "N0C6";
inline constexpr std::string_view kDialTestEnd = "I";
inline constexpr std::string_view kScaleMode = "S";
inline constexpr std::string_view kLoader = "H";
inline constexpr std::string_view kHexEnd = ":00000001FF";

std::string commandLine(std::string_view text);

// A data frame is 12 characters and a CR: letter, 4 hex needle, 2 hex knob,
// 1 hex status digit, 4 hex BD (tenths, 16-bit signed).
inline constexpr std::size_t kFrameFieldsLength = 11;  // after the letter

struct FrameFields {
    char letter = 'P';
    std::uint16_t needle = 0;  // 0..65535
    std::uint8_t knob = 0;     // raw 0..255; SensPos is knob / 2
    std::uint8_t status = 0;   // low four bits
    std::int16_t bd = 0;       // tenths
};

// Splits one line (without its CR). nullopt when the part after the letter
// is not exactly 11 characters or a hex field holds a non-hex character. The
// letter is returned as received; checking it is the caller's business.
std::optional<FrameFields> splitFrame(std::string_view line);

// One frame line with its CR, hex in upper case.
std::string encodeFrame(const FrameFields& f);

// Hex field as the original reads "&H" + digits; either case; nullopt on any
// other character or an empty field.
std::optional<std::uint32_t> hexField(std::string_view digits);

// Version reply. Only characters ',' (44) to 'Z' (90) are kept while it is collected.
inline bool keptInVersionReply(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u >= 44 && u <= 90;
}

struct VersionInfo {
    std::string hardware;  // "LV3A"
    std::string code;      // "3A"
    std::string boot;
    std::string firmware;
};

// Parses the kept characters of a reply. False (and `info` untouched) unless
// it begins "V,LV". A missing comma leaves the field that needed it unchanged
// and empties the fields after it.
bool parseVersionReply(std::string_view kept, VersionInfo& info);

// The line a meter sends: "V,LV" + code + "," + boot + "," + firmware + CR.
std::string versionReplyLine(std::string_view code, std::string_view boot,
                             std::string_view firmware);

// Calibration: drive the meter's own needle to a 12-bit value, "800N" for 2048.
std::string dialNeedleCommand(int drive);

// Playback line to the meter: "P" + needle (3 hex) + BD (3 decimal or three
// blanks when not counting) + Base (3 digits) + flags (1 hex) + CR.
std::string playbackLine(std::int32_t needleValue, bool bdCounting, std::int32_t bdQuarter,
                         std::string_view shownBase, int statusFlags);

}  // namespace lv::protocol
