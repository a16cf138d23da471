#pragma once
#include <algorithm>
#include <cstdint>

namespace lv {

// When the next frame may go to the screen: at most 50 a second on average,
// and at once when a reading comes on time. Each drawn frame moves the next
// slot at least one period on, so the rate cannot creep up, yet a frame may
// come up to kEarlyMs before its slot, so that jittering readings wait for
// nothing.
class FramePacer {
public:
    static constexpr std::int64_t kPeriodMs = 20;
    static constexpr std::int64_t kEarlyMs = 5;

    // Milliseconds to hold a frame that is ready now; 0 draws it at once.
    std::int64_t waitMs(std::int64_t nowMs) const {
        return std::max<std::int64_t>(0, m_nextMs - kEarlyMs - nowMs);
    }
    void drawn(std::int64_t nowMs) {
        m_nextMs = std::max(m_nextMs + kPeriodMs, nowMs + kPeriodMs - kEarlyMs);
    }

private:
    std::int64_t m_nextMs = 0;
};

}  // namespace lv
