#pragma once
#include <cstdint>

#include "device/protocol.h"
#include "lv3sim/frame_source.h"
#include "lv3sim/sim_random.h"

// A lifelike reading, one frame per 20 ms: a needle that wanders with some
// momentum, with falls (and fewer rises) of a few hundred to a few thousand
// units that come back; now and then an "O" frame; a knob that is turned
// rarely; SET and body-motion lamps from time to time; BD counting periods
// whose count grows with the needle's falls. Everything follows from the seed.
namespace lv::sim {

// A flag that is off for a random while, then on for a random while.
class Episodes {
public:
    Episodes(SimRandom& rng, int offMin, int offMax, int onMin, int onMax);

    // Advances one frame; true while on. Reports the frame it switched on.
    bool step(SimRandom& rng);
    bool startedNow() const { return m_startedNow; }

private:
    int m_offMin, m_offMax, m_onMin, m_onMax;
    int m_countdown;
    bool m_on = false;
    bool m_startedNow = false;
};

class ReadingGenerator final : public FrameSource {
public:
    explicit ReadingGenerator(std::uint64_t seed);

    protocol::FrameFields nextFields();
    std::optional<std::string> nextLine() override;

private:
    double excursionOffset();
    void stepKnob();
    bool stepBd(int needle);  // true while counting

    SimRandom m_rng;
    double m_centre;
    double m_level;
    double m_velocity = 0;

    // The current fall or rise: its depth (signed) and where it is in its
    // attack, hold and recovery.
    double m_depth = 0;
    int m_age = 0, m_attack = 0, m_hold = 0, m_recovery = 0;
    int m_untilExcursion;

    int m_knob;
    int m_untilKnobMove;

    Episodes m_reference;
    Episodes m_set;
    Episodes m_motion;
    Episodes m_counting;
    std::int16_t m_bd = 0;
    double m_fallSinceCount = 0;
    int m_lastNeedle = -1;
};

}  // namespace lv::sim
