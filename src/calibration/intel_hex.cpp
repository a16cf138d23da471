#include "calibration/intel_hex.h"

#include <algorithm>

#include "common/hex_text.h"

namespace lv {

namespace {

constexpr std::size_t kOverheadBytes = 5;  // count, address high, address low, type, checksum
constexpr std::size_t kMaxData = 255;

void appendHexByte(std::string& out, std::uint8_t byte) {
    out += hexUpper(byte, 2);
}

std::optional<HexRecord> fail(HexLineError* error, HexLineError why) {
    if (error) *error = why;
    return std::nullopt;
}

}  // namespace

const char* hexLineErrorText(HexLineError error) {
    switch (error) {
        case HexLineError::None:
            return "ok";
        case HexLineError::MissingColon:
            return "no leading colon";
        case HexLineError::OddDigits:
            return "odd number of hex digits";
        case HexLineError::NotHex:
            return "not a hex digit";
        case HexLineError::TooShort:
            return "record too short";
        case HexLineError::CountMismatch:
            return "byte count does not match the data";
        case HexLineError::BadChecksum:
            return "bad checksum";
    }
    return "unknown";
}

std::optional<HexRecord> parseHexLine(std::string_view line, HexLineError* error) {
    if (line.empty() || line.front() != ':') return fail(error, HexLineError::MissingColon);
    const std::string_view digits = line.substr(1);
    // Non-hex characters are reported before an odd length: a stray character
    // is the more useful diagnosis for a line that is both.
    if (!std::all_of(digits.begin(), digits.end(), [](char c) { return hexDigitValue(c) >= 0; }))
        return fail(error, HexLineError::NotHex);
    if (digits.size() % 2 != 0) return fail(error, HexLineError::OddDigits);

    std::vector<std::uint8_t> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(hexDigitValue(digits[2 * i]) * 16 +
                                             hexDigitValue(digits[2 * i + 1]));
    if (bytes.size() < kOverheadBytes) return fail(error, HexLineError::TooShort);
    if (bytes[0] != bytes.size() - kOverheadBytes) return fail(error, HexLineError::CountMismatch);

    const std::span<const std::uint8_t> body(bytes.data(), bytes.size() - 1);
    if (hexChecksum(body) != bytes.back()) return fail(error, HexLineError::BadChecksum);

    HexRecord record;
    record.address = static_cast<std::uint16_t>(bytes[1] << 8 | bytes[2]);
    record.type = static_cast<HexRecordType>(bytes[3]);
    record.data.assign(bytes.begin() + 4, bytes.end() - 1);
    if (error) *error = HexLineError::None;
    return record;
}

std::uint8_t hexChecksum(std::span<const std::uint8_t> bytes) {
    unsigned sum = 0;
    for (std::uint8_t b : bytes) sum += b;
    return static_cast<std::uint8_t>((256 - (sum & 0xFF)) & 0xFF);
}

std::uint8_t recordChecksum(const HexRecord& record) {
    const std::size_t count = std::min(record.data.size(), kMaxData);
    unsigned sum = static_cast<unsigned>(count) + (record.address >> 8) + (record.address & 0xFFu) +
                   static_cast<unsigned>(record.type);
    for (std::size_t i = 0; i < count; ++i) sum += record.data[i];
    return static_cast<std::uint8_t>((256 - (sum & 0xFF)) & 0xFF);
}

std::string formatHexRecord(const HexRecord& record) {
    const std::size_t count = std::min(record.data.size(), kMaxData);
    std::string line;
    line.reserve(1 + 2 * (count + kOverheadBytes));
    line += ':';
    appendHexByte(line, static_cast<std::uint8_t>(count));
    appendHexByte(line, static_cast<std::uint8_t>(record.address >> 8));
    appendHexByte(line, static_cast<std::uint8_t>(record.address & 0xFF));
    appendHexByte(line, static_cast<std::uint8_t>(record.type));
    for (std::size_t i = 0; i < count; ++i) appendHexByte(line, record.data[i]);
    appendHexByte(line, recordChecksum(record));
    return line;
}

std::string formatDataRecord(std::uint16_t address, std::span<const std::uint8_t> data) {
    HexRecord record;
    record.type = HexRecordType::Data;
    record.address = address;
    record.data.assign(data.begin(), data.end());
    return formatHexRecord(record);
}

std::string formatExtendedLinearAddress(std::uint16_t upperAddress) {
    HexRecord record;
    record.type = HexRecordType::ExtendedLinearAddress;
    record.data = {static_cast<std::uint8_t>(upperAddress >> 8),
                   static_cast<std::uint8_t>(upperAddress & 0xFF)};
    return formatHexRecord(record);
}

std::string formatEndOfFile() {
    HexRecord record;
    record.type = HexRecordType::EndOfFile;
    return formatHexRecord(record);
}

}  // namespace lv
