#include "app/reconnect_policy.h"

namespace lv {

void ReconnectPolicy::lost(const std::string& path) {
    m_path = path;
    m_nextTry = 0;
}

bool ReconnectPolicy::due(double now, bool pathPresent) {
    if (!waiting()) return false;
    if (!pathPresent) {
        // Gone: its return is worth a probe at once, whatever failed before.
        m_nextTry = 0;
        return false;
    }
    return now >= m_nextTry;
}

}  // namespace lv
