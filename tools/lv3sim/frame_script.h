#pragma once
#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "lv3sim/frame_source.h"

// A fixed list of frames for tests: one frame a line, sent exactly as
// written, good or bad. Blank lines and lines starting with '#' are skipped.
namespace lv::sim {

// The frames of a script text. The line ending (LF or CR LF) is not part of
// a frame; anything else, spaces included, is.
std::vector<std::string> readScript(std::istream& in);

class FrameScript final : public FrameSource {
public:
    FrameScript(std::vector<std::string> frames, bool repeat);

    std::optional<std::string> nextLine() override;

private:
    std::vector<std::string> m_frames;
    bool m_repeat;
    std::size_t m_next = 0;
};

}  // namespace lv::sim
