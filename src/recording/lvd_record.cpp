#include "recording/lvd_record.h"

#include "signal/needle_model.h"

namespace lv {

namespace {

void put16(std::uint8_t* out, std::uint16_t v) {
    out[0] = static_cast<std::uint8_t>(v & 0xFF);
    out[1] = static_cast<std::uint8_t>(v >> 8);
}

void put32(std::uint8_t* out, std::uint32_t v) {
    put16(out, static_cast<std::uint16_t>(v & 0xFFFF));
    put16(out + 2, static_cast<std::uint16_t>(v >> 16));
}

std::uint16_t get16(const std::uint8_t* in) {
    return static_cast<std::uint16_t>(in[0] | (in[1] << 8));
}

std::uint32_t get32(const std::uint8_t* in) {
    return static_cast<std::uint32_t>(get16(in)) |
           (static_cast<std::uint32_t>(get16(in + 2)) << 16);
}

}  // namespace

void encodeRecord(const lvdRecord& r, std::uint8_t* out) {
    using namespace lvd_offset;
    put32(out + kTimeMs, static_cast<std::uint32_t>(r.TimeMs));
    put16(out + kRawData, static_cast<std::uint16_t>(r.RawData));
    put16(out + kNeedlePos, static_cast<std::uint16_t>(r.NeedlePos));
    put16(out + kBdCount, static_cast<std::uint16_t>(r.BdCount));
    out[kBaseCode] = r.BaseCode;
    out[kSensitivity] = r.Sensitivity;
    out[kStatusFlags] = r.StatusFlags;
    out[kReserved] = r.Reserved;
    for (std::size_t k = 0; k < r.Stamp.size(); ++k) out[kStamp + k] = r.Stamp[k];
    out[kStampMarker] = r.StampMarker;
    out[kFrameType] = r.FrameType;
}

lvdRecord decodeRecord(const std::uint8_t* in) {
    using namespace lvd_offset;
    lvdRecord r;
    r.TimeMs = static_cast<std::int32_t>(get32(in + kTimeMs));
    r.RawData = static_cast<std::int16_t>(get16(in + kRawData));
    r.NeedlePos = static_cast<std::int16_t>(get16(in + kNeedlePos));
    r.BdCount = static_cast<std::int16_t>(get16(in + kBdCount));
    r.BaseCode = in[kBaseCode];
    r.Sensitivity = in[kSensitivity];
    r.StatusFlags = in[kStatusFlags];
    r.Reserved = in[kReserved];
    for (std::size_t k = 0; k < r.Stamp.size(); ++k) r.Stamp[k] = in[kStamp + k];
    r.StampMarker = in[kStampMarker];
    r.FrameType = in[kFrameType];
    return r;
}

std::uint8_t packStatusFlags(int lampCode, bool stateFlag, bool bdFlag, int dialType) {
    return static_cast<std::uint8_t>((lampCode & 0x03) | (stateFlag ? 0x04 : 0) |
                                     (bdFlag ? 0x08 : 0) | ((dialType & 0x07) * 32));
}

RecordReadout readoutOf(const lvdRecord& record) {
    RecordReadout out;
    out.base = baseText(record.BaseCode);
    out.bd = bdText(record.BdCount);
    out.lampCode = lampCodeOf(record.StatusFlags);
    out.bdFlag = bdFlagOf(record.StatusFlags);
    out.dialType = dialTypeOf(record.StatusFlags);
    out.sensitivity = record.Sensitivity;
    out.needlePos = record.NeedlePos;
    out.rawReading = static_cast<std::uint16_t>(record.RawData);
    return out;
}

}  // namespace lv
