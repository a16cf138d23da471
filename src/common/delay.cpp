#include "common/pump.h"

namespace lv {

namespace {
constexpr double kTickSeconds = 0.054;
constexpr double kTicksPerSecond = 18;
constexpr double kSecondsPerDay = 86400;
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
        if (now >= end) break;
        pump.wait(end - now);
    }
}

void SDelay(Pump& pump, double secs) { TDelay(pump, secs * kTicksPerSecond); }

}  // namespace lv
