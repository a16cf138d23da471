#pragma once
#include <optional>
#include <string>

namespace lv::sim {

// Where the data stream's lines come from: the simulated reading or a script.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    // The next line with its CR; nullopt once the source has nothing more.
    virtual std::optional<std::string> nextLine() = 0;
};

}  // namespace lv::sim
