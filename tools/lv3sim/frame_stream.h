#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "lv3sim/frame_source.h"
#include "lv3sim/sim_random.h"

// The data stream as it leaves the meter, tick by tick, with the faults a
// test can ask for laid over the frames of the source.
namespace lv::sim {

struct StreamFaults {
    int burst = 1;         // frames gathered and sent together
    int badEvery = 0;      // every Nth frame spoiled; 0 = none
    bool garbage = false;  // random bytes between frames now and then
    std::uint64_t seed = 1;
};

class FrameStream {
public:
    FrameStream(std::unique_ptr<FrameSource> source, StreamFaults faults);

    // One 20 ms tick of a running stream: the bytes to send now. Usually one
    // line; with a burst of N, nothing for N-1 ticks and then N lines.
    std::string tick();

    // The stream was stopped: a half-gathered burst is never sent.
    void stop();

    // A script played --once has run out.
    bool exhausted() const { return m_exhausted; }

private:
    std::string spoil(std::string line);
    std::string garbage();

    std::unique_ptr<FrameSource> m_source;
    StreamFaults m_faults;
    SimRandom m_rng;  // garbage only, so the frames themselves do not change with it
    std::uint64_t m_frames = 0;
    std::uint64_t m_spoiled = 0;
    std::string m_gathered;
    int m_gatheredFrames = 0;
    bool m_exhausted = false;
};

}  // namespace lv::sim
