#include "lv3sim/line_splitter.h"

namespace lv::sim {

std::vector<std::string> LineSplitter::feed(std::string_view bytes) {
    std::vector<std::string> lines;
    for (char c : bytes) {
        const bool swallow = c == '\n' && m_afterCr;
        m_afterCr = c == '\r';
        if (swallow) continue;
        if (c == '\r' || c == '\n') {
            lines.push_back(std::move(m_pending));
            m_pending.clear();
            continue;
        }
        m_pending += c;
        if (m_pending.size() >= kMaxLine) {
            lines.push_back(std::move(m_pending));
            m_pending.clear();
        }
    }
    return lines;
}

void LineSplitter::reset() {
    m_pending.clear();
    m_afterCr = false;
}

}  // namespace lv::sim
