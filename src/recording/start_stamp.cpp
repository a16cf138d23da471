#include "recording/start_stamp.h"

#include "common/vb_date.h"

namespace lv {

StartStamp startStampFor(const Settings& settings, std::int32_t startTimeSecs,
                         std::int32_t startDays) {
    StartStamp stamp;
    stamp.StartTimeSecs = startTimeSecs;
    stamp.StartDays = startDays;
    stamp.clockByte = static_cast<std::uint8_t>(settings.ClockType & 0xFF);
    stamp.dateByte = static_cast<std::uint8_t>(settings.DateType & 0xFF);
    return stamp;
}

void layTimeStamp(lvdRecord& record1, const StartStamp& stamp) {
    // Arithmetic shifts give the bytes of Int(value / 2^n) AND 255, negative
    // values included.
    const std::int32_t t = stamp.StartTimeSecs;
    record1.Stamp[0] = stamp.clockByte;
    record1.Stamp[1] = static_cast<std::uint8_t>((t >> 16) & 0xFF);
    record1.Stamp[2] = static_cast<std::uint8_t>((t >> 8) & 0xFF);
    record1.Stamp[3] = static_cast<std::uint8_t>(t & 0xFF);
    record1.StampMarker = kTimeStampMarker;
}

void layDateStamp(lvdRecord& record2, const StartStamp& stamp) {
    const auto days = static_cast<std::uint16_t>(stamp.StartDays);
    record2.Stamp[0] = stamp.dateByte;
    record2.Stamp[2] = static_cast<std::uint8_t>(days >> 8);
    record2.Stamp[3] = static_cast<std::uint8_t>(days & 0xFF);
    record2.StampMarker = kDateStampMarker;
}

StartInfo readStartStamps(const lvdRecord& record1, const lvdRecord& record2) {
    StartInfo info;
    if (record1.StampMarker == kTimeStampMarker)
        info.StartTimeSecs = record1.Stamp[1] * 65536 + record1.Stamp[2] * 256 + record1.Stamp[3];
    // Read unsigned: a day count past 32767 (after September 2089) does not
    // fit 16 signed bits, but it is still a date.
    if (record2.StampMarker == kDateStampMarker) {
        info.StartDays = record2.Stamp[2] * 256 + record2.Stamp[3];
        info.RecordingDate = dateFromDays(info.StartDays);
    }
    return info;
}

}  // namespace lv
