#include "device/protocol.h"

#include <algorithm>

#include "common/hex_text.h"
#include "common/vb_format.h"

namespace lv::protocol {

std::string commandLine(std::string_view text) {
    std::string line(text);
    line += kCR;
    return line;
}

std::optional<std::uint32_t> hexField(std::string_view digits) {
    if (digits.empty() || digits.size() > 8) return std::nullopt;
    std::uint32_t value = 0;
    for (char c : digits) {
        const int d = hexDigitValue(c);
        if (d < 0) return std::nullopt;
        value = value * 16 + static_cast<std::uint32_t>(d);
    }
    return value;
}

std::optional<FrameFields> splitFrame(std::string_view line) {
    if (line.empty() || line.size() - 1 != kFrameFieldsLength) return std::nullopt;
    const auto needle = hexField(line.substr(1, 4));
    const auto knob = hexField(line.substr(5, 2));
    const auto status = hexField(line.substr(7, 1));
    const auto bd = hexField(line.substr(8, 4));
    if (!needle || !knob || !status || !bd) return std::nullopt;
    FrameFields f;
    f.letter = line[0];
    f.needle = static_cast<std::uint16_t>(*needle);
    f.knob = static_cast<std::uint8_t>(*knob);
    f.status = static_cast<std::uint8_t>(*status);
    f.bd = static_cast<std::int16_t>(static_cast<std::uint16_t>(*bd));
    return f;
}

std::string encodeFrame(const FrameFields& f) {
    std::string line(1, f.letter);
    line += hexUpper(f.needle, 4);
    line += hexUpper(f.knob, 2);
    line += hexUpper(f.status & 0xFu, 1);
    line += hexUpper(static_cast<std::uint16_t>(f.bd), 4);
    line += kCR;
    return line;
}

bool parseVersionReply(std::string_view kept, VersionInfo& info) {
    if (kept.substr(0, 4) != "V,LV") return false;
    info.code = std::string(kept.substr(4, 2));
    // Fields follow the header's own comma at position 2.
    const auto c1 = kept.find(',', 2);
    if (c1 == std::string_view::npos) {
        info.boot.clear();
        info.firmware.clear();
        return true;
    }
    info.hardware = std::string(kept.substr(2, c1 - 2));
    const auto c2 = kept.find(',', c1 + 1);
    if (c2 == std::string_view::npos) {
        info.firmware.clear();
        return true;
    }
    info.boot = std::string(kept.substr(c1 + 1, c2 - c1 - 1));
    info.firmware = std::string(kept.substr(c2 + 1));
    return true;
}

std::string versionReplyLine(std::string_view code, std::string_view boot,
                             std::string_view firmware) {
    std::string line = "V,LV";
    line += code;
    line += ',';
    line += boot;
    line += ',';
    line += firmware;
    line += kCR;
    return line;
}

std::string dialNeedleCommand(int drive) {
    return hexUpper(static_cast<std::uint32_t>(drive) & 0xFFFu, 3) + "N";
}

std::string playbackLine(std::int32_t needleValue, bool bdCounting, std::int32_t bdQuarter,
                         std::string_view shownBase, int statusFlags) {
    const std::int32_t n = std::clamp(needleValue * 1024 / 5542 + 2048, 0, 4095);
    std::string base = formatNumber(vbVal(shownBase), "0.00");
    base.erase(std::remove(base.begin(), base.end(), '.'), base.end());
    std::string line = "P";
    line += hexUpper(static_cast<std::uint32_t>(n), 3);
    line += bdCounting ? formatNumber(bdQuarter, "000") : std::string("   ");
    line += base;
    line += hexUpper(static_cast<std::uint32_t>(statusFlags) & 0xFu, 1);
    line += kCR;
    return line;
}

}  // namespace lv::protocol
