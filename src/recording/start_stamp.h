#pragma once
#include <chrono>
#include <cstdint>

#include "common/vb_date.h"
#include "recording/lvd_record.h"
#include "settings/settings.h"

// The start time and date of a recording, carried in bytes 14..18 of its first
// two records (the file has no header of its own).
namespace lv {

inline constexpr std::uint8_t kTimeStampMarker = 'C';  // record 1
inline constexpr std::uint8_t kDateStampMarker = 'D';  // record 2

// What the writer lays over records 1 and 2.
struct StartStamp {
    std::int32_t StartTimeSecs = 0;  // seconds since midnight, stored in 24 bits
    std::int32_t StartDays = 0;      // days since 31 December 1999, stored in 16 bits
    std::uint8_t clockByte = 0;      // byte 14 of record 1
    std::uint8_t dateByte = 0;       // byte 14 of record 2
};

// Byte 14 of the two records carries the low bytes of the clock style and the
// date style in force, the first and the date setting the clock update reads.
StartStamp startStampFor(const Settings& settings, std::int32_t startTimeSecs,
                         std::int32_t startDays);

// "C": byte 14 the clock byte, bytes 15..17 the start time big-endian.
void layTimeStamp(lvdRecord& record1, const StartStamp& stamp);
// "D": byte 14 the date byte, bytes 16..17 the days big-endian; byte 15 stays.
void layDateStamp(lvdRecord& record2, const StartStamp& stamp);

// What a loaded file says about its start.
struct StartInfo {
    std::int32_t StartTimeSecs = 0;                        // 0 without a "C" stamp
    std::int32_t StartDays = 0;                            // 0 without a "D" stamp
    std::chrono::year_month_day RecordingDate = kDayZero;  // without a "D" stamp
};
StartInfo readStartStamps(const lvdRecord& record1, const lvdRecord& record2);

}  // namespace lv
