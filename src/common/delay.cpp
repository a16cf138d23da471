#include "common/pump.h"

namespace lv {

namespace {
constexpr double kTickSeconds = 0.054;
constexpr double kTicksPerSecond = 18;
constexpr double kSecondsPerDay = 86400;
// Closer than this to the end counts as there: the clock cannot tell it apart.
constexpr double kTimerResolution = 1e-6;
}  // namespace

void TDelay(Pump& pump, double ticks) {
    double start = pump.Timer();
    double end = start + ticks * kTickSeconds;
    for (;;) {
        const double now = pump.Timer();
        if (now < start) {  // midnight passed
            end -= kSecondsPerDay;
            start = 0;
        }
        if (now >= end - kTimerResolution) break;
        pump.wait(end - now);
    }
}

double secondsSince(Pump& pump, double start) {
    double now = pump.Timer();
    if (now < start) now += kSecondsPerDay;
    return now - start;
}

void SDelay(Pump& pump, double secs) {
    TDelay(pump, secs * kTicksPerSecond);
}

}  // namespace lv
