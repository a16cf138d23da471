// lv_Analog.cfg is read first thing at start-up, whatever is in it. Any text
// must parse safely, and whatever was taken from it, written out again, must
// read back to exactly the same items and the same bytes.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "settings/session_config.h"

namespace {

void check(bool ok) {
    if (!ok) std::abort();
}

// The items of the file; DialCalibration index 11 is not one of them.
bool sameItems(const lv::SessionConfig& a, const lv::SessionConfig& b) {
    for (std::size_t i = 0; i < 11; ++i)
        if (a.DialCalibration[i] != b.DialCalibration[i]) return false;
    return a.SettingsFilePath == b.SettingsFilePath && a.AutoSaveMode == b.AutoSaveMode &&
           a.PortNumber == b.PortNumber && a.PortCandidateCount == b.PortCandidateCount &&
           a.WindowLeft == b.WindowLeft && a.WindowTop == b.WindowTop &&
           a.WindowWidth == b.WindowWidth && a.WindowHeight == b.WindowHeight &&
           a.ScaleType == b.ScaleType;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    lv::SessionConfig read;
    lv::parseSessionConfig(text, read);
    // The serial number is written but never read: give it text that needs
    // quoting, taken from the input.
    read.HardwareSerial = std::string(text.substr(0, 32));

    const std::string written = lv::sessionConfigText(read);
    lv::SessionConfig again;
    again.DialCalibration.fill(-7);  // each value must come from the file
    check(lv::parseSessionConfig(written, again));
    check(sameItems(read, again));
    again.HardwareSerial = read.HardwareSerial;
    check(lv::sessionConfigText(again) == written);
    return 0;
}
