#include "recording/time_axis.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace lv::tool {

namespace {

constexpr double kSecondMs = 1000;
constexpr double kMinuteMs = 60 * kSecondMs;
constexpr double kHourMs = 60 * kMinuteMs;
// Shorter than three of the next unit up stays in the smaller one: "2:30"
// reads better as 150 seconds than as 2.5 minutes.
constexpr double kUnitsBeforeNext = 3;
constexpr double kMaxTicks = 10;

struct Unit {
    const char* name;
    double ms;
    std::array<double, 11> steps;  // round steps in this unit, increasing
};

constexpr std::array<Unit, 3> kUnits{{
    {"seconds", kSecondMs, {0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 20, 30, 60}},
    {"minutes", kMinuteMs, {0.5, 1, 2, 5, 10, 15, 20, 30, 60, 120, 180}},
    {"hours", kHourMs, {0.5, 1, 2, 3, 6, 12, 24, 48, 96, 168, 336}},
}};

}  // namespace

TimeAxis timeAxisFor(double totalMs) {
    totalMs = std::max(0.0, totalMs);
    std::size_t u = 0;
    while (u + 1 < kUnits.size() && totalMs >= kUnitsBeforeNext * kUnits[u + 1].ms) ++u;
    const Unit& unit = kUnits[u];
    const double length = totalMs / unit.ms;

    TimeAxis axis;
    axis.unit = unit.name;
    axis.unitMs = unit.ms;
    axis.step = unit.steps.back();
    for (double step : unit.steps)
        if (length / step <= kMaxTicks) {
            axis.step = step;
            break;
        }
    // Counted in whole steps, so 0.1 + 0.2 never drifts past a tick.
    const auto count = static_cast<long>(std::floor(length / axis.step + 1e-9));
    for (long i = 0; i <= count; ++i) axis.ticks.push_back(static_cast<double>(i) * axis.step);
    return axis;
}

}  // namespace lv::tool
