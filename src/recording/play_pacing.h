#pragma once
#include <cstdint>
#include <span>

#include "recording/lvd_record.h"

// The arithmetic of playback, apart from any device or display: when a record
// is due by the audio clock, where skips land, what the position bar selects.
namespace lv {

// A record is due once its time is less than this far ahead of the audio.
inline constexpr double kDueMarginMs = 10.0;
// Records a second: skips count in them, and a forward skip past the end
// lands one second before it.
inline constexpr std::int32_t kRecordsPerSecond = 50;

// Milliseconds of audio at a device position (bytes of a wave; milliseconds of
// a compressed track or the placeholder, whose rate is 1000).
double audioTimeMs(std::int64_t position, std::int32_t bytesPerSec);
// Whole seconds of audio at a device position.
std::int64_t audioSeconds(std::int64_t position, std::int32_t bytesPerSec);
// The device position of a record's time: the whole part of
// bytesPerSec / 1000 * timeMs.
std::int64_t audioPositionFor(std::int32_t timeMs, std::int32_t bytesPerSec);

inline bool recordDue(std::int32_t timeMs, double audioMs) {
    return timeMs - audioMs < kDueMarginMs;
}

struct DueRecords {
    std::int32_t count = 0;  // records whose time has come, from `next` on
    std::int32_t last = 0;   // the latest of them, the one to show; 0 when none
};
// Among records next..last (1-based; `last` is cut to the records there are),
// those due at audioMs. Times only grow, so the first one not due ends the run.
DueRecords dueRecords(std::span<const lvdRecord> records, std::int32_t next, std::int32_t last,
                      double audioMs);

// More records fell due in one step than the lag limit allows: the display has
// fallen behind the sound, as more frames than the limit waiting at once do live.
// The pacing sleeps until the next record falls due, never longer than
// kMaxStepWaitMs. A step that found nothing due (the sound's clock is reported
// in steps, or has stalled) is followed by shorter waits, and after
// kIdleStepsBeforePoll of them by a plain poll every kStepPollMs, so a sound
// that stopped moving never turns the pacing into a busy loop.
inline constexpr int kStepPollMs = 10;
inline constexpr int kMaxStepWaitMs = 20;
inline constexpr int kIdleStepsBeforePoll = 5;
int stepWaitMs(std::int32_t nextTimeMs, double audioMs, int idleSteps);

inline bool playbackLagged(std::int32_t recordsInStep, int lagLimit) {
    return recordsInStep > lagLimit;
}

// The skip step in seconds for a recording of this many whole seconds.
std::int16_t skipSecondsFor(std::int32_t totalSeconds);

// Where a skip of `records` lands from `index` within the play range. Forward
// past the play end lands one second before it; reverse before the start lands
// on it. Neither leaves the range start (a range shorter than a second).
std::int32_t skipForwardIndex(std::int32_t index, std::int32_t records, std::int32_t playStart,
                              std::int32_t playEnd);
std::int32_t skipReverseIndex(std::int32_t index, std::int32_t records, std::int32_t playStart);

// The play end a release on the position bar selects at `fraction` of its
// width (clamped to 0..1): the whole part of fraction * recCount, recCount at
// the right edge.
std::int32_t playEndAt(double fraction, std::int32_t recCount);

}  // namespace lv
