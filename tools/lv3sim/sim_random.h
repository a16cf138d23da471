#pragma once
#include <cmath>
#include <cstdint>
#include <numbers>

// A small seeded random source of our own (SplitMix64). The standard
// distributions are implementation-defined, and a test run must produce the
// same frames for the same --seed on every build.
namespace lv::sim {

class SimRandom {
public:
    explicit SimRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

    // [0, 1)
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

    double uniform(double lo, double hi) { return lo + (hi - lo) * uniform(); }

    // lo..hi inclusive.
    int range(int lo, int hi) {
        const auto span = static_cast<std::uint64_t>(hi - lo) + 1;
        return lo + static_cast<int>(next() % span);
    }

    bool chance(double p) { return uniform() < p; }

    // Standard normal, Box-Muller.
    double gauss() {
        const double u1 = 1.0 - uniform();  // (0, 1]: log stays finite
        const double u2 = uniform();
        return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * std::numbers::pi * u2);
    }

private:
    std::uint64_t m_state;
};

}  // namespace lv::sim
