#include "calibration/intel_hex.h"

#include <gtest/gtest.h>

namespace lv {
namespace {

// Checksums worked out by hand; lower-case digits are read, upper-case written.
TEST(IntelHex, ParsesGoodLinesAndFormatsThemBack) {
    const struct {
        std::string line;
        HexRecord record;
    } cases[] = {
        {":06e0000000000100ff0119", {HexRecordType::Data, 0xE000, {0, 0, 1, 0, 0xFF, 1}}},
        {":020000040800F2", {HexRecordType::ExtendedLinearAddress, 0, {0x08, 0}}},
        {":00000001FF", {HexRecordType::EndOfFile, 0, {}}},
        {":0000000AF6", {static_cast<HexRecordType>(0x0A), 0, {}}},
    };
    for (const auto& c : cases) {
        HexLineError error = HexLineError::BadChecksum;
        const auto record = parseHexLine(c.line, &error);
        ASSERT_TRUE(record.has_value()) << c.line;
        EXPECT_EQ(error, HexLineError::None);
        EXPECT_EQ(*record, c.record) << c.line;
    }
    EXPECT_EQ(formatHexRecord(cases[0].record), ":06E0000000000100FF0119");
    EXPECT_EQ(formatExtendedLinearAddress(0x0800), ":020000040800F2");
    EXPECT_EQ(formatEndOfFile(), ":00000001FF");
    // 16 bytes of 0xFF at 0xFFF0: 0x10 + 0xFF + 0xF0 + 16 * 0xFF = 0x11EF.
    EXPECT_EQ(formatDataRecord(0xFFF0, std::vector<std::uint8_t>(16, 0xFF)),
              ":10FFF000" + std::string(32, 'F') + "11");
}

TEST(IntelHex, RejectsBadLinesWithTheReason) {
    const std::pair<const char*, HexLineError> cases[] = {
        {" :00000001FF", HexLineError::MissingColon},
        {":00000001F", HexLineError::OddDigits},
        {":00000001FF\r", HexLineError::NotHex},
        {":00 000001FF", HexLineError::NotHex},
        {":000001FF", HexLineError::TooShort},
        {":0200000400FA", HexLineError::CountMismatch},
        {":01000001FF", HexLineError::CountMismatch},
        {":00000001FE", HexLineError::BadChecksum},
    };
    for (const auto& [line, expected] : cases) {
        HexLineError error = HexLineError::None;
        EXPECT_FALSE(parseHexLine(line, &error).has_value()) << line;
        EXPECT_EQ(error, expected) << line << ": " << hexLineErrorText(error);
    }
}

}  // namespace
}  // namespace lv
