#include "recording/play_time.h"

namespace lv {

namespace {

std::string twoDigits(std::int64_t n) {
    return (n < 10 ? "0" : "") + std::to_string(n);
}

}  // namespace

std::string playTimeText(std::int64_t seconds) {
    if (seconds < 0) seconds = 0;
    const std::int64_t hours = seconds / 3600;
    const std::int64_t minutes = seconds / 60 % 60;
    const std::string tail = twoDigits(seconds % 60);
    if (hours == 0) return std::to_string(minutes) + ":" + tail;
    return std::to_string(hours) + ":" + twoDigits(minutes) + ":" + tail;
}

}  // namespace lv
