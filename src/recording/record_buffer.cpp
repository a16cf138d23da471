#include "recording/record_buffer.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "common/vb_format.h"

namespace lv {

RecBuffer::RecBuffer() : m_records(kGrowth) {}

lvdRecord& RecBuffer::operator()(std::int32_t i) {
    if (i < 1 || i > upperBound())
        throw std::out_of_range("RecBuffer(" + std::to_string(i) + ") beyond 1.." +
                                std::to_string(upperBound()));
    return m_records[static_cast<std::size_t>(i - 1)];
}

const lvdRecord& RecBuffer::operator()(std::int32_t i) const {
    return const_cast<RecBuffer&>(*this)(i);
}

std::span<const lvdRecord> RecBuffer::valid() const {
    const std::int32_t n = std::clamp(RecCount, 0, upperBound());
    return {m_records.data(), static_cast<std::size_t>(n)};
}

void RecBuffer::clear() {
    std::vector<lvdRecord>(kGrowth).swap(m_records);
    RecCount = 0;
    RecIndex = 1;
    TotalTimeMs = 0;
    CurRecord = lvdRecord{};
}

void RecBuffer::append(lvdRecord record) {
    record.TimeMs = std::max(record.TimeMs, 0);
    if (RecIndex > upperBound()) m_records.resize(static_cast<std::size_t>(RecIndex) + kGrowth);
    (*this)(RecIndex) = record;
    CurRecord = record;
    RecCount = RecIndex;
    TotalTimeMs = record.TimeMs;
    ++RecIndex;
}

std::int32_t RecBuffer::FindlvdRecord(std::int32_t TimeMs) {
    if (RecCount < 1) return 0;
    // The estimate can fall below record 1 only for negative times; record 1
    // is where those land anyway.
    std::int64_t estimate = roundHalfEven(TimeMs / 20.0 + 1.0);
    estimate = std::clamp<std::int64_t>(estimate, 1, RecCount);
    auto i = static_cast<std::int32_t>(estimate);

    do {
        CurRecord = (*this)(i);
        --i;
        if (CurRecord.TimeMs < TimeMs) break;
    } while (i != 0);

    do {
        ++i;
        CurRecord = (*this)(i);
        if (CurRecord.TimeMs >= TimeMs) break;
    } while (i != RecCount);

    return i;
}

void RecBuffer::replaceRecords(std::vector<lvdRecord>&& records) {
    m_records = std::move(records);
}

void RecBuffer::markStart(const LocalDateTime& now) {
    StartTimeSecs = secondsOfDay(now);
    StartDays = daysSince1999(now.date);
    RecordingDate = now.date;
}

}  // namespace lv
