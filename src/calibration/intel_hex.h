#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// One line of an Intel HEX file: ":" count(2) address(4) type(2) data(2*count)
// checksum(2). The meter's loader takes the correction table in this form, one
// acknowledged line at a time, so the line is the unit here, not the file.
namespace lv {

enum class HexRecordType : std::uint8_t {
    Data = 0x00,
    EndOfFile = 0x01,
    ExtendedSegmentAddress = 0x02,
    StartSegmentAddress = 0x03,
    ExtendedLinearAddress = 0x04,
    StartLinearAddress = 0x05,
};

struct HexRecord {
    HexRecordType type = HexRecordType::Data;  // any byte parses; the loader judges it
    std::uint16_t address = 0;
    std::vector<std::uint8_t> data;  // at most 255 bytes

    friend bool operator==(const HexRecord&, const HexRecord&) = default;
};

enum class HexLineError {
    None,
    MissingColon,   // first character is not ':'
    OddDigits,      // an odd number of characters after the colon
    NotHex,         // a character that is not a hex digit
    TooShort,       // fewer than the 5 bytes of count, address, type, checksum
    CountMismatch,  // the count byte disagrees with the number of data bytes
    BadChecksum,
};

const char* hexLineErrorText(HexLineError error);

// Parses one line without its line ending; hex digits in either case. The
// checksum is verified. On failure returns nullopt and, when asked, the reason.
std::optional<HexRecord> parseHexLine(std::string_view line, HexLineError* error = nullptr);

// (256 - sum of bytes) mod 256: the byte that makes the whole record sum to 0.
std::uint8_t hexChecksum(std::span<const std::uint8_t> bytes);

// Checksum of a record: over count, both address bytes, type and data.
std::uint8_t recordChecksum(const HexRecord& record);

// The line for a record, upper-case hex, no line ending. Data beyond 255
// bytes cannot be expressed and is cut off.
std::string formatHexRecord(const HexRecord& record);

// Data record at a 16-bit address: ":10E00000" + 32 digits + checksum for
// the 16-byte records of the correction table.
std::string formatDataRecord(std::uint16_t address, std::span<const std::uint8_t> data);

// ":020000040000FA" for upper address 0.
std::string formatExtendedLinearAddress(std::uint16_t upperAddress);

// ":00000001FF".
std::string formatEndOfFile();

}  // namespace lv
