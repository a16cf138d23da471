#pragma once
#include <cstdint>
#include <string>

namespace lv {

// The time text of the play-time and total-time labels: minutes and two-digit
// seconds below one hour ("0:00", "1:05", "59:59"), hours, two-digit minutes
// and two-digit seconds from one hour on ("1:00:00"). Negative times read as 0.
std::string playTimeText(std::int64_t seconds);

}  // namespace lv
