#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace lv {

// The ports to search, in order: paths given on the command line, then the
// colon-separated LV_ANALOG_PORTS list, then the system's serial ports
// (already sorted by the caller). Duplicates keep their first place; port n
// of the program is entry n-1.
std::vector<std::string> portCandidates(const std::vector<std::string>& commandLine,
                                        std::string_view environment,
                                        const std::vector<std::string>& system);

}  // namespace lv
