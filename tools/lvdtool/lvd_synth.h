#pragma once
#include <cstdint>
#include <vector>

#include "recording/lvd_record.h"

namespace lv::tool {

// A recording as the program would have made it from the virtual meter's
// lifelike reading: every frame goes through the program's own frame path
// and needle model, and is stamped 20 ms after the one before (the timing of
// a recording without audio).
std::vector<lvdRecord> synthRecords(double seconds, int dialType, std::uint64_t seed);

}  // namespace lv::tool
