#include "device/port_candidates.h"

#include <algorithm>

namespace lv {

std::vector<std::string> portCandidates(const std::vector<std::string>& commandLine,
                                        std::string_view environment,
                                        const std::vector<std::string>& system) {
    std::vector<std::string> out;
    auto add = [&out](std::string_view path) {
        if (path.empty()) return;
        if (std::find(out.begin(), out.end(), path) == out.end()) out.emplace_back(path);
    };
    for (const auto& p : commandLine) add(p);
    while (!environment.empty()) {
        const auto colon = environment.find(':');
        add(environment.substr(0, colon));
        if (colon == std::string_view::npos) break;
        environment.remove_prefix(colon + 1);
    }
    for (const auto& p : system) add(p);
    return out;
}

}  // namespace lv
