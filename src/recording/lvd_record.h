#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

// One frame of a recording as it lies in a .lvd file: 20 bytes, little-endian,
// no padding. The layout is fixed by the files already out there.
namespace lv {

inline constexpr std::size_t kLvdRecordSize = 20;

struct lvdRecord {
    std::int32_t TimeMs = 0;     // ms since the start of the recording
    std::int16_t RawData = 0;    // the meter's 16-bit reading, two's complement
    std::int16_t NeedlePos = 0;  // 65536 units to a full turn
    std::int16_t BdCount = 0;    // BD counter in tenths
    std::uint8_t BaseCode = 0;   // Base = ((code >> 1) + 8) / 20
    std::uint8_t Sensitivity = 0;
    std::uint8_t StatusFlags = 0;  // see packStatusFlags
    std::uint8_t Reserved = 0;     // byte 13: kept as found, read by nobody
    // Bytes 14..17 and 18: the start stamp in records 1 and 2, left-overs of
    // the recorder's working record elsewhere. Kept so a file survives a
    // load and a "Save As" byte for byte.
    std::array<std::uint8_t, 4> Stamp{};
    std::uint8_t StampMarker = 0;
    std::uint8_t FrameType = 0;  // 'O', 'P' or 'T'

    friend bool operator==(const lvdRecord&, const lvdRecord&) = default;
};

// The loader reads a file straight into an array of these and decodes it in
// place, so the in-memory record must be exactly as large as the file's and
// every byte pattern must be a valid object.
static_assert(sizeof(lvdRecord) == kLvdRecordSize);
static_assert(std::is_trivially_copyable_v<lvdRecord>);
static_assert(std::has_unique_object_representations_v<lvdRecord>);

// Byte offsets within a record.
namespace lvd_offset {
inline constexpr std::size_t kTimeMs = 0;
inline constexpr std::size_t kRawData = 4;
inline constexpr std::size_t kNeedlePos = 6;
inline constexpr std::size_t kBdCount = 8;
inline constexpr std::size_t kBaseCode = 10;
inline constexpr std::size_t kSensitivity = 11;
inline constexpr std::size_t kStatusFlags = 12;
inline constexpr std::size_t kReserved = 13;
inline constexpr std::size_t kStamp = 14;
inline constexpr std::size_t kStampMarker = 18;
inline constexpr std::size_t kFrameType = 19;
}  // namespace lvd_offset

// Field by field, little-endian whatever the host's byte order.
void encodeRecord(const lvdRecord& record, std::uint8_t* out);
lvdRecord decodeRecord(const std::uint8_t* in);

// The frame letters a valid file may hold.
inline bool isValidFrameType(std::uint8_t type) {
    return type == 'O' || type == 'P' || type == 'T';
}

// StatusFlags: bits 0-1 lamp code 0..3, bit 2 the live path's state flag,
// bit 3 the BD flag, bit 4 zero, bits 5-7 the dial type. Out-of-range lamp
// codes and dial types keep only the bits that fit.
std::uint8_t packStatusFlags(int lampCode, bool stateFlag, bool bdFlag, int dialType);
inline int lampCodeOf(std::uint8_t flags) {
    return flags & 0x03;
}
inline bool stateFlagOf(std::uint8_t flags) {
    return (flags & 0x04) != 0;
}
inline bool bdFlagOf(std::uint8_t flags) {
    return (flags & 0x08) != 0;
}
inline int dialTypeOf(std::uint8_t flags) {
    return (flags & 0xE0) / 32;
}

// What playback shows for one record.
struct RecordReadout {
    std::string base;  // "0.0#" of ((BaseCode >> 1) + 8) / 20
    std::string bd;    // "#0.0" of BdCount / 10, "000" from 1000 on
    int lampCode = 0;
    bool bdFlag = false;
    int dialType = 0;
    int sensitivity = 0;
    std::int32_t needlePos = 0;
    std::int32_t rawReading = 0;  // RawData as the meter sent it, 0..65535
};
RecordReadout readoutOf(const lvdRecord& record);

}  // namespace lv
