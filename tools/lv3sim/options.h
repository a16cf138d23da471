#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The command line of the virtual meter.
namespace lv::sim {

enum class Pace {
    Line,  // each 13-byte line in one write
    Byte,  // the bytes of a line spread at the 9600-baud character time
};

struct Options {
    std::string link;  // symlink published to the pty's slave

    std::string code = "40";
    std::string boot = "1.02";
    std::string firmware = "2.10";

    std::uint64_t seed = 1;
    Pace pace = Pace::Line;

    std::string scriptPath;
    bool repeat = true;  // --repeat (default) or --once

    std::string tableOut;
    std::string logPath;
    bool ackSplit = false;
    int replyDelayMs = 0;
    int failEvery = 0;  // loader answers FAIL to every Nth HEX line

    int burst = 1;
    int badEvery = 0;
    bool garbage = false;
    std::optional<double> stallAfter;
    std::optional<double> stallFor;  // unset: the stall lasts for ever
    std::optional<double> exitAfter;
    bool mute = false;

    bool help = false;
    bool version = false;
};

struct ParsedOptions {
    Options options;
    std::string error;  // empty when the command line is good
};

// args excludes the program name. Accepts "--name value" and "--name=value".
ParsedOptions parseOptions(const std::vector<std::string_view>& args);

std::string helpText();

}  // namespace lv::sim
