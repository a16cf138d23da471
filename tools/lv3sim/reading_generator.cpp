#include "lv3sim/reading_generator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace lv::sim {

namespace {

constexpr int kFramesPerSecond = 50;
constexpr int seconds(double s) {
    return static_cast<int>(s * kFramesPerSecond);
}

// The wander: velocity keeps 99 % of itself each frame, a weak spring pulls
// the level back to its centre (a period of about 90 s), and the level is
// kept well inside the 16-bit range so that falls still fit below it.
constexpr double kMomentum = 0.99;
constexpr double kKick = 0.7;
constexpr double kSpring = 2e-6;
constexpr double kLowest = 6000;
constexpr double kHighest = 60000;
constexpr double kJitter = 2.0;

constexpr double kSmallestExcursion = 300;
constexpr double kLargestExcursion = 3000;
constexpr double kFallShare = 0.7;

// Needle units of fall per tenth on the BD counter.
constexpr double kFallPerTenth = 120;

constexpr int kKnobMax = 127;

constexpr unsigned kSetBit = 0x1;
constexpr unsigned kMotionBit = 0x2;
constexpr unsigned kCountingBit = 0x8;

double raisedCosine(double t) {
    return (1 - std::cos(std::numbers::pi * t)) / 2;
}

}  // namespace

Episodes::Episodes(SimRandom& rng, int offMin, int offMax, int onMin, int onMax)
    : m_offMin(offMin),
      m_offMax(offMax),
      m_onMin(onMin),
      m_onMax(onMax),
      m_countdown(rng.range(offMin, offMax)) {}

bool Episodes::step(SimRandom& rng) {
    m_startedNow = false;
    if (--m_countdown <= 0) {
        m_on = !m_on;
        m_startedNow = m_on;
        m_countdown = m_on ? rng.range(m_onMin, m_onMax) : rng.range(m_offMin, m_offMax);
    }
    return m_on;
}

ReadingGenerator::ReadingGenerator(std::uint64_t seed)
    : m_rng(seed),
      m_centre(m_rng.uniform(20000, 45000)),
      m_level(m_centre),
      m_untilExcursion(m_rng.range(seconds(2), seconds(10))),
      m_knob(m_rng.range(30, 100)),
      m_untilKnobMove(m_rng.range(seconds(30), seconds(120))),
      m_reference(m_rng, seconds(20), seconds(60), 1, 1),
      m_set(m_rng, seconds(10), seconds(40), seconds(0.5), seconds(2)),
      m_motion(m_rng, seconds(15), seconds(60), seconds(0.3), seconds(1.5)),
      m_counting(m_rng, seconds(8), seconds(30), seconds(10), seconds(30)) {}

double ReadingGenerator::excursionOffset() {
    if (m_depth == 0) {
        if (--m_untilExcursion > 0) return 0;
        // Log-uniform: small dips are common, deep falls are rare.
        const double size =
            kSmallestExcursion * std::pow(kLargestExcursion / kSmallestExcursion, m_rng.uniform());
        m_depth = m_rng.chance(kFallShare) ? -size : size;
        m_age = 0;
        m_attack = m_rng.range(seconds(0.2), seconds(0.8));
        m_hold = m_rng.range(0, seconds(0.5));
        m_recovery = m_rng.range(seconds(2), seconds(5));
    }
    const int t = m_age++;
    double offset = 0;
    if (t < m_attack) {
        offset = m_depth * raisedCosine(static_cast<double>(t) / m_attack);
    } else if (t < m_attack + m_hold) {
        offset = m_depth;
    } else if (t < m_attack + m_hold + m_recovery) {
        offset =
            m_depth * (1 - raisedCosine(static_cast<double>(t - m_attack - m_hold) / m_recovery));
    } else {
        m_depth = 0;
        m_untilExcursion = m_rng.range(seconds(4), seconds(15));
    }
    return offset;
}

void ReadingGenerator::stepKnob() {
    if (--m_untilKnobMove > 0) return;
    static constexpr int kSteps[] = {-2, -1, 1, 2};
    m_knob = std::clamp(m_knob + kSteps[m_rng.range(0, 3)], 0, kKnobMax);
    m_untilKnobMove = m_rng.range(seconds(30), seconds(120));
}

bool ReadingGenerator::stepBd(int needle) {
    const bool counting = m_counting.step(m_rng);
    if (m_counting.startedNow()) {
        m_bd = 0;
        m_fallSinceCount = 0;
    }
    if (counting && m_lastNeedle >= 0 && needle < m_lastNeedle) {
        m_fallSinceCount += m_lastNeedle - needle;
        while (m_fallSinceCount >= kFallPerTenth && m_bd < INT16_MAX) {
            m_fallSinceCount -= kFallPerTenth;
            ++m_bd;
        }
    }
    m_lastNeedle = needle;
    return counting;
}

protocol::FrameFields ReadingGenerator::nextFields() {
    m_velocity = kMomentum * m_velocity + kKick * m_rng.gauss() + kSpring * (m_centre - m_level);
    m_level += m_velocity;
    if (m_level < kLowest || m_level > kHighest) {
        m_level = std::clamp(m_level, kLowest, kHighest);
        m_velocity = -m_velocity;
    }
    const double value = m_level + excursionOffset() + kJitter * m_rng.gauss();
    const int needle = static_cast<int>(std::lround(std::clamp(value, 0.0, 65535.0)));

    stepKnob();
    const bool counting = stepBd(needle);
    const bool reference = m_reference.step(m_rng);  // on for one frame at a time
    const bool set = m_set.step(m_rng);
    const bool motion = m_motion.step(m_rng);

    protocol::FrameFields f;
    f.letter = reference ? 'O' : 'P';
    f.needle = static_cast<std::uint16_t>(needle);
    f.knob = static_cast<std::uint8_t>(m_knob);
    f.status = static_cast<std::uint8_t>((set ? kSetBit : 0) | (motion ? kMotionBit : 0) |
                                         (counting ? kCountingBit : 0));
    f.bd = m_bd;
    return f;
}

std::optional<std::string> ReadingGenerator::nextLine() {
    return protocol::encodeFrame(nextFields());
}

}  // namespace lv::sim
