#include "lv3sim/frame_script.h"

#include <algorithm>

namespace lv::sim {

namespace {

bool blank(const std::string& line) {
    return std::all_of(line.begin(), line.end(), [](char c) { return c == ' ' || c == '\t'; });
}

}  // namespace

std::vector<std::string> readScript(std::istream& in) {
    std::vector<std::string> frames;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (blank(line) || line.front() == '#') continue;
        frames.push_back(line);
    }
    return frames;
}

FrameScript::FrameScript(std::vector<std::string> frames, bool repeat)
    : m_frames(std::move(frames)), m_repeat(repeat) {}

std::optional<std::string> FrameScript::nextLine() {
    if (m_frames.empty()) return std::nullopt;
    if (m_next == m_frames.size()) {
        if (!m_repeat) return std::nullopt;
        m_next = 0;
    }
    return m_frames[m_next++] + '\r';
}

}  // namespace lv::sim
