#include "calibration/intel_hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace lv {
namespace {

struct GoodLine {
    const char* line;
    HexRecordType type;
    std::uint16_t address;
    std::vector<std::uint8_t> data;
};

// Worked examples from the format's common descriptions, and the records the
// loader dialogue uses; checksums worked out by hand.
const GoodLine kGoodLines[] = {
    {":10010000214601360121470136007EFE09D2190140",
     HexRecordType::Data,
     0x0100,
     {0x21, 0x46, 0x01, 0x36, 0x01, 0x21, 0x47, 0x01, 0x36, 0x00, 0x7E, 0xFE, 0x09, 0xD2, 0x19,
      0x01}},
    {":0B0010006164647265737320676170A7",
     HexRecordType::Data,
     0x0010,
     {'a', 'd', 'd', 'r', 'e', 's', 's', ' ', 'g', 'a', 'p'}},
    {":10e0000000000100020003000400050006000700f4",
     HexRecordType::Data,
     0xE000,
     {0, 0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0}},
    {":020000040000FA", HexRecordType::ExtendedLinearAddress, 0, {0, 0}},
    {":020000040800F2", HexRecordType::ExtendedLinearAddress, 0, {0x08, 0}},
    {":00000001FF", HexRecordType::EndOfFile, 0, {}},
    {":0000000AF6", static_cast<HexRecordType>(0x0A), 0, {}},
};

std::string upper(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::toupper(c); });
    return s;
}

TEST(IntelHex, ParsesGoodLinesAndFormatsThemBack) {
    for (const GoodLine& g : kGoodLines) {
        SCOPED_TRACE(g.line);
        HexLineError error = HexLineError::BadChecksum;
        const auto record = parseHexLine(g.line, &error);
        ASSERT_TRUE(record.has_value());
        EXPECT_EQ(error, HexLineError::None);
        EXPECT_EQ(record->type, g.type);
        EXPECT_EQ(record->address, g.address);
        EXPECT_EQ(record->data, g.data);
        EXPECT_EQ(formatHexRecord(*record), upper(g.line));
        EXPECT_EQ(parseHexLine(formatHexRecord(*record)), record);
    }
}

TEST(IntelHex, RejectsBadLinesWithTheReason) {
    const struct {
        const char* line;
        HexLineError error;
    } cases[] = {
        {"", HexLineError::MissingColon},
        {"00000001FF", HexLineError::MissingColon},
        {" :00000001FF", HexLineError::MissingColon},
        {":00000001F", HexLineError::OddDigits},
        {":00000001FG", HexLineError::NotHex},
        {":00000001FF\r", HexLineError::NotHex},
        {":00 000001FF", HexLineError::NotHex},
        {":", HexLineError::TooShort},
        {":000001FF", HexLineError::TooShort},
        {":0200000400FA", HexLineError::CountMismatch},
        {":01000001FF", HexLineError::CountMismatch},
        {":00000001FE", HexLineError::BadChecksum},
        {":020000040000FB", HexLineError::BadChecksum},
        {":10E0000000000100020003000400050006000700F5", HexLineError::BadChecksum},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        HexLineError error = HexLineError::None;
        EXPECT_FALSE(parseHexLine(c.line, &error).has_value());
        EXPECT_EQ(error, c.error) << hexLineErrorText(error);
    }
}

TEST(IntelHex, ChecksumMakesTheBytesSumToZero) {
    const struct {
        std::vector<std::uint8_t> bytes;
        std::uint8_t checksum;
    } cases[] = {
        {{}, 0x00},
        {{0x01}, 0xFF},
        {{0x80, 0x80}, 0x00},
        {{0x00, 0x00, 0x00, 0x01}, 0xFF},
        {{0xFF, 0xFF, 0xFF}, 0x03},
    };
    for (const auto& c : cases) EXPECT_EQ(hexChecksum(c.bytes), c.checksum);
}

TEST(IntelHex, FormatsTheLoaderRecords) {
    EXPECT_EQ(formatEndOfFile(), ":00000001FF");
    EXPECT_EQ(formatExtendedLinearAddress(0), ":020000040000FA");
    // The last record of the table: 16 bytes of 0xFF at 0xFFF0. Sum is
    // 0x10 + 0xFF + 0xF0 + 16 * 0xFF = 0x11EF, so the checksum is 0x11.
    const std::vector<std::uint8_t> ones(16, 0xFF);
    EXPECT_EQ(formatDataRecord(0xFFF0, ones), ":10FFF000" + std::string(32, 'F') + "11");
}

}  // namespace
}  // namespace lv
