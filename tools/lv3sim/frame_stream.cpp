#include "lv3sim/frame_stream.h"

#include <utility>

namespace lv::sim {

namespace {

constexpr double kGarbageChance = 1.0 / 25;  // about twice a second
constexpr int kMaxGarbage = 6;

}  // namespace

FrameStream::FrameStream(std::unique_ptr<FrameSource> source, StreamFaults faults)
    : m_source(std::move(source)), m_faults(faults), m_rng(faults.seed ^ 0x6A09E667F3BCC908ull) {}

std::string FrameStream::tick() {
    if (m_exhausted) return {};
    auto line = m_source->nextLine();
    if (!line) {
        m_exhausted = true;
        // What was gathered of a burst still goes out: a script's tail is
        // part of the script.
        m_gatheredFrames = 0;
        return std::exchange(m_gathered, {});
    }
    ++m_frames;
    if (m_faults.badEvery > 0 && m_frames % static_cast<std::uint64_t>(m_faults.badEvery) == 0)
        *line = spoil(std::move(*line));
    if (m_faults.garbage && m_rng.chance(kGarbageChance)) m_gathered += garbage();
    m_gathered += *line;
    if (++m_gatheredFrames < m_faults.burst) return {};
    m_gatheredFrames = 0;
    return std::exchange(m_gathered, {});
}

void FrameStream::stop() {
    m_gathered.clear();
    m_gatheredFrames = 0;
}

std::string FrameStream::spoil(std::string line) {
    // In turn: a letter in the needle field, then a line one character short.
    const bool shortLine = ++m_spoiled % 2 == 0;
    if (shortLine) {
        if (line.size() >= 2) line.erase(line.size() - 2, 1);
    } else if (line.size() >= 3) {
        line[2] = 'G';
    }
    return line;
}

std::string FrameStream::garbage() {
    std::string bytes;
    const int n = m_rng.range(1, kMaxGarbage);
    while (static_cast<int>(bytes.size()) < n) {
        const char c = static_cast<char>(m_rng.range(0, 255));
        // No line ends: each burst of garbage spoils exactly the frame after it.
        if (c != '\r' && c != '\n') bytes += c;
    }
    return bytes;
}

}  // namespace lv::sim
