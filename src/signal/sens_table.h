#pragma once
#include <array>
#include <cstdint>
#include <string>

namespace lv {

// Knob positions 0..63: entries 0..63 hold the gain as text, 65..128 the knob
// labels, 64 and 129 stay empty. Kept as text and converted at each use, as the
// original does (the rows repeat: the knob has more steps than gains).
using SensTableType = std::array<std::string, 130>;

const SensTableType& SensTable();

// Gain of a knob position as a number; 0 for positions the table has no gain
// for (64 gives 0 by design; positions past the table too).
std::int32_t sensGain(int sensPos);
// Label of a knob position ("1.0" .. "40"); empty outside 0..63.
std::string sensLabel(int sensPos);

}  // namespace lv
