#pragma once
#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

#include "common/vb_date.h"
#include "recording/lvd_record.h"

namespace lv {

// The records of one recording in memory, indexed from 1, with the state the
// recorder and the player keep beside them. The recorder appends, the player
// reads and seeks, the file reader and writer move it whole.
class RecBuffer {
public:
    // Records added at a time when a recording outgrows the buffer (one minute).
    static constexpr std::int32_t kGrowth = 3000;

    RecBuffer();

    // RecBuffer(i), 1 <= i <= upperBound(); std::out_of_range otherwise.
    lvdRecord& operator()(std::int32_t i);
    const lvdRecord& operator()(std::int32_t i) const;
    // Records the buffer holds room for; RecCount of them are valid.
    std::int32_t upperBound() const { return static_cast<std::int32_t>(m_records.size()); }
    // Records 1..RecCount.
    std::span<const lvdRecord> valid() const;

    // Discards every record: kGrowth empty records, RecCount 0, RecIndex 1,
    // TotalTimeMs 0. Releases the memory of a long recording.
    void clear();

    // The recorder's per-frame store: at RecIndex, growing to RecIndex +
    // kGrowth when full; the record becomes CurRecord, RecCount = RecIndex,
    // TotalTimeMs its time, then RecIndex moves on. A negative TimeMs is
    // stored as 0.
    void append(lvdRecord record);

    // The first record at or after TimeMs, found from an estimate of 20 ms a
    // record by a backward and then a forward pass; RecCount when no record
    // reaches the time, 0 when the buffer has none. CurRecord holds the
    // record found.
    std::int32_t FindlvdRecord(std::int32_t TimeMs);

    // Takes these as records 1..n, exactly n long (the file reader's use).
    void replaceRecords(std::vector<lvdRecord>&& records);

    // Start time and date of a recording that starts now.
    void markStart(const LocalDateTime& now);

    std::int32_t RecIndex = 1;       // next to write while recording; current while playing
    std::int32_t RecCount = 0;       // valid records
    std::int32_t TotalTimeMs = 0;    // TimeMs of the last valid record
    lvdRecord CurRecord;             // the working record
    std::int32_t StartTimeSecs = 0;  // seconds since midnight
    std::int32_t StartDays = 0;      // days since 31 December 1999
    std::chrono::year_month_day RecordingDate = kDayZero;

private:
    std::vector<lvdRecord> m_records;  // RecBuffer(i) is m_records[i - 1]
};

}  // namespace lv
