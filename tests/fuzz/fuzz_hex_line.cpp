// Arbitrary bytes into the HEX line parser. Whatever parses must format back
// to the same line (up to letter case) and parse again to the same record.
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "calibration/intel_hex.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    lv::HexLineError error = lv::HexLineError::None;
    const auto record = lv::parseHexLine(line, &error);
    if (!record) {
        if (error == lv::HexLineError::None) std::abort();
        return 0;
    }
    const std::string formatted = lv::formatHexRecord(*record);
    std::string upper(line);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (formatted != upper) std::abort();
    const auto again = lv::parseHexLine(formatted);
    if (!again || !(*again == *record)) std::abort();
    return 0;
}
