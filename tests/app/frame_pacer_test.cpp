#include "app/frame_pacer.h"

#include <gtest/gtest.h>

#include <vector>

namespace lv {
namespace {

struct Replayed {
    int drawn = 0;
    int heldReadings = 0;  // readings that waited for their frame
};

// Readings arriving at the given times, drawn the way the window draws them:
// at once when the pacer allows, else when its wait is over (readings that
// arrive meanwhile join that frame).
Replayed replay(const std::vector<std::int64_t>& arrivals) {
    FramePacer pacer;
    Replayed run;
    std::int64_t pendingAt = -1;
    for (const std::int64_t now : arrivals) {
        if (pendingAt >= 0 && pendingAt <= now) {
            pacer.drawn(pendingAt);
            ++run.drawn;
            pendingAt = -1;
        }
        if (pendingAt >= 0) continue;
        const std::int64_t wait = pacer.waitMs(now);
        if (wait == 0) {
            pacer.drawn(now);
            ++run.drawn;
        } else {
            pendingAt = now + wait;
            ++run.heldReadings;
        }
    }
    if (pendingAt >= 0) ++run.drawn;
    return run;
}

std::vector<std::int64_t> every(std::int64_t stepMs, int count, int jitterMs = 0) {
    std::vector<std::int64_t> t;
    for (int i = 0; i < count; ++i) t.push_back(1000 + i * stepMs + (i % 2 ? jitterMs : -jitterMs));
    return t;
}

TEST(FramePacer, OnTimeReadingsGoStraightToTheScreenAndFloodsAreCapped) {
    struct Case {
        const char* what;
        std::vector<std::int64_t> arrivals;
        int drawnAtMost;
        int drawnAtLeast;
        int heldAtMost;
    };
    const Case cases[] = {
        {"50 a second, on the dot", every(20, 500), 500, 500, 0},
        {"50 a second, jittering 4 ms", every(20, 500, 4), 500, 500, 0},
        {"a meter 5 % fast", every(19, 500), 500, 500, 0},
        {"200 a second for 10 s", every(5, 2000), 834, 800, 834},
        {"a burst of three", {1000, 1000, 1000}, 2, 2, 1},
        {"a reading after a long pause", {1000, 5000}, 2, 2, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Replayed run = replay(c.arrivals);
        EXPECT_LE(run.drawn, c.drawnAtMost);
        EXPECT_GE(run.drawn, c.drawnAtLeast);
        EXPECT_LE(run.heldReadings, c.heldAtMost);
    }
}

}  // namespace
}  // namespace lv
