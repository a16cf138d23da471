#pragma once
#include <string>
#include <vector>

namespace lv::tool {

// The time axis of a plot: the unit a recording of this length reads best
// in, and round ticks from 0, about four to ten of them.
struct TimeAxis {
    std::string unit;           // "seconds", "minutes" or "hours"
    double unitMs = 1000;       // milliseconds in one unit
    double step = 1;            // between ticks, in units
    std::vector<double> ticks;  // in units, from 0 to at most the length
};

TimeAxis timeAxisFor(double totalMs);

}  // namespace lv::tool
