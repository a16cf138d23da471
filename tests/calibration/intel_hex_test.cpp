#include "calibration/intel_hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace lv {
namespace {

// A worked example from the format's common descriptions and the records the
// loader dialogue uses; checksums worked out by hand.
TEST(IntelHex, ParsesGoodLinesAndFormatsThemBack) {
    const struct {
        std::string line;
        HexRecordType type;
        std::uint16_t address;
        std::vector<std::uint8_t> data;
    } cases[] = {
        {":10010000214601360121470136007EFE09D2190140",
         HexRecordType::Data,
         0x0100,
         {0x21, 0x46, 0x01, 0x36, 0x01, 0x21, 0x47, 0x01, 0x36, 0x00, 0x7E, 0xFE, 0x09, 0xD2, 0x19,
          0x01}},
        {":06e0000000000100ff0119", HexRecordType::Data, 0xE000, {0, 0, 1, 0, 0xFF, 1}},
        {":020000040800F2", HexRecordType::ExtendedLinearAddress, 0, {0x08, 0}},
        {":00000001FF", HexRecordType::EndOfFile, 0, {}},
        {":0000000AF6", static_cast<HexRecordType>(0x0A), 0, {}},
    };
    for (const auto& c : cases) {
        HexLineError error = HexLineError::BadChecksum;
        const auto record = parseHexLine(c.line, &error);
        ASSERT_TRUE(record.has_value()) << c.line;
        EXPECT_EQ(error, HexLineError::None);
        EXPECT_EQ(*record, (HexRecord{c.type, c.address, c.data})) << c.line;
        std::string upper = c.line;
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](unsigned char ch) { return std::toupper(ch); });
        EXPECT_EQ(formatHexRecord(*record), upper);
    }
}

TEST(IntelHex, RejectsBadLinesWithTheReason) {
    const std::pair<const char*, HexLineError> cases[] = {
        {"", HexLineError::MissingColon},
        {" :00000001FF", HexLineError::MissingColon},
        {":00000001F", HexLineError::OddDigits},
        {":00000001FG", HexLineError::NotHex},
        {":00000001FF\r", HexLineError::NotHex},
        {":00 000001FF", HexLineError::NotHex},
        {":000001FF", HexLineError::TooShort},
        {":0200000400FA", HexLineError::CountMismatch},
        {":01000001FF", HexLineError::CountMismatch},
        {":00000001FE", HexLineError::BadChecksum},
        {":10E0000000000100020003000400050006000700F5", HexLineError::BadChecksum},
    };
    for (const auto& [line, expected] : cases) {
        HexLineError error = HexLineError::None;
        EXPECT_FALSE(parseHexLine(line, &error).has_value()) << line;
        EXPECT_EQ(error, expected) << line << ": " << hexLineErrorText(error);
    }
}

TEST(IntelHex, FormatsTheLoaderRecords) {
    EXPECT_EQ(hexChecksum(std::vector<std::uint8_t>{0x80, 0x80}), 0x00);
    EXPECT_EQ(formatEndOfFile(), ":00000001FF");
    EXPECT_EQ(formatExtendedLinearAddress(0x0800), ":020000040800F2");
    // The last record of the table: 16 bytes of 0xFF at 0xFFF0. Sum is
    // 0x10 + 0xFF + 0xF0 + 16 * 0xFF = 0x11EF, so the checksum is 0x11.
    const std::vector<std::uint8_t> ones(16, 0xFF);
    EXPECT_EQ(formatDataRecord(0xFFF0, ones), ":10FFF000" + std::string(32, 'F') + "11");
}

}  // namespace
}  // namespace lv
