#include "recording/play_pacing.h"

#include <algorithm>
#include <cmath>

namespace lv {

double audioTimeMs(std::int64_t position, std::int32_t bytesPerSec) {
    return static_cast<double>(position) * 1000.0 / bytesPerSec;
}

std::int64_t audioSeconds(std::int64_t position, std::int32_t bytesPerSec) {
    return position / bytesPerSec;
}

std::int64_t audioPositionFor(std::int32_t timeMs, std::int32_t bytesPerSec) {
    // Computed as the rate in bytes a millisecond, in floating point, so that
    // positions match those of files that were played before.
    return static_cast<std::int64_t>(std::floor(bytesPerSec / 1000.0 * timeMs));
}

DueRecords dueRecords(std::span<const lvdRecord> records, std::int32_t next, std::int32_t last,
                      double audioMs) {
    DueRecords due;
    last = std::min<std::int32_t>(last, static_cast<std::int32_t>(records.size()));
    for (std::int32_t i = std::max(next, 1); i <= last; ++i) {
        if (!recordDue(records[static_cast<std::size_t>(i - 1)].TimeMs, audioMs)) break;
        ++due.count;
        due.last = i;
    }
    return due;
}

std::int16_t skipSecondsFor(std::int32_t totalSeconds) {
    if (totalSeconds < 600) return 10;
    if (totalSeconds < 1800) return 15;
    if (totalSeconds < 3600) return 30;
    return 60;
}

std::int32_t skipForwardIndex(std::int32_t index, std::int32_t records, std::int32_t playStart,
                              std::int32_t playEnd) {
    std::int32_t to = index + records;
    if (to > playEnd) to = playEnd - kRecordsPerSecond;
    return std::max(to, playStart);
}

std::int32_t skipReverseIndex(std::int32_t index, std::int32_t records, std::int32_t playStart) {
    return std::max(index - records, playStart);
}

std::int32_t playEndAt(double fraction, std::int32_t recCount) {
    if (std::isnan(fraction)) fraction = 0.0;
    fraction = std::clamp(fraction, 0.0, 1.0);
    if (fraction >= 1.0) return recCount;
    return static_cast<std::int32_t>(fraction * recCount);
}

int stepWaitMs(std::int32_t nextTimeMs, double audioMs, int idleSteps) {
    const int shortest = idleSteps == 0                     ? 1
                         : idleSteps < kIdleStepsBeforePoll ? 2
                                                            : kStepPollMs;
    const double until = std::ceil(nextTimeMs - kDueMarginMs - audioMs);
    const int wait = until > kMaxStepWaitMs ? kMaxStepWaitMs : static_cast<int>(std::max(until, 0.0));
    return std::max(wait, shortest);
}

}  // namespace lv
