#include <gtest/gtest.h>

#include <utility>

#include "recording/play_pacing.h"
#include "recording/play_time.h"

namespace {

using namespace lv;

TEST(PlayPacing, RecordIsDueOnceTheSoundIsLessThanTenMillisecondsShortOfIt) {
    struct Case {
        std::int32_t timeMs;
        double audioMs;
        bool due;
    };
    const Case cases[] = {{1000, 990.0, false}, {1000, 990.5, true}, {1000, 5000.0, true}};
    for (const Case& c : cases)
        EXPECT_EQ(recordDue(c.timeMs, c.audioMs), c.due) << c.timeMs << " at " << c.audioMs;
}

TEST(PlayPacing, SkipStepFromTheRecordingsLength) {
    const std::pair<int, int> cases[] = {{599, 10}, {600, 15}, {1799, 15}, {1800, 30}, {3600, 60}};
    for (const auto& [seconds, skip] : cases) EXPECT_EQ(skipSecondsFor(seconds), skip) << seconds;
}

// The pacing wakes when the next record falls due, at most 20 ms on; a clock
// that did not move is asked again soon, then polled, never in a busy loop.
TEST(PlayPacing, StepWaitsUntilTheNextRecordIsDue) {
    struct Case {
        double audioMs;
        int idleSteps;
        int waitMs;
    };
    // The next record is at 100 ms, due from 90 ms of sound on.
    const Case cases[] = {{75.0, 0, 15}, {60.0, 0, 20}, {89.2, 0, 1}, {95.0, 0, 1},
                          {95.0, 1, 2},  {85.0, 4, 5},  {95.0, 5, 10}, {60.0, 9, 20}};
    for (const Case& c : cases)
        EXPECT_EQ(stepWaitMs(100, c.audioMs, c.idleSteps), c.waitMs)
            << c.audioMs << " ms, " << c.idleSteps << " idle";
}

TEST(PlayTime, MinutesBelowAnHourHoursFromOne) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {65, "1:05"}, {3599, "59:59"}, {3725, "1:02:05"}, {36610, "10:10:10"}, {-3, "0:00"}};
    for (const auto& [seconds, text] : cases) EXPECT_EQ(playTimeText(seconds), text) << seconds;
}

}  // namespace
