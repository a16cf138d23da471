#pragma once
#include <algorithm>
#include <cstdint>

namespace lv {

// When the next frame may go to the screen. The meter's 50 readings a second
// set the pace, and each goes out at once; only a reading that follows its
// predecessor's frame too closely (a burst after a stall) waits. A cap at
// exactly 50 a second would hold every reading of a meter whose clock runs a
// little fast, each on a timer of its own.
class FramePacer {
public:
    static constexpr std::int64_t kMinGapMs = 12;

    // Milliseconds to hold a frame that is ready now; 0 draws it at once.
    std::int64_t waitMs(std::int64_t nowMs) const {
        return m_drawn ? std::max<std::int64_t>(0, m_lastMs + kMinGapMs - nowMs) : 0;
    }
    void drawn(std::int64_t nowMs) {
        m_lastMs = nowMs;
        m_drawn = true;
    }

private:
    std::int64_t m_lastMs = 0;
    bool m_drawn = false;
};

}  // namespace lv
