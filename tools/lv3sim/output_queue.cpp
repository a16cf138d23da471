#include "lv3sim/output_queue.h"

#include <algorithm>

namespace lv::sim {

void OutputQueue::push(std::string bytes, Nanos earliest) {
    if (bytes.empty()) return;
    m_bytes += bytes.size();
    if (m_byteTime == Nanos::zero()) {
        m_lastDue = std::max(earliest, m_lastDue);
        m_pieces.push_back({m_lastDue, std::move(bytes)});
        return;
    }
    // Each byte waits a character time after the previous one, whoever
    // queued it: the line cannot carry bytes faster than the baud rate.
    Nanos due = std::max(earliest, m_lastDue + m_byteTime);
    for (char c : bytes) {
        m_pieces.push_back({due, std::string(1, c)});
        m_lastDue = due;
        due += m_byteTime;
    }
}

void OutputQueue::pushFront(std::string bytes, Nanos now) {
    if (bytes.empty()) return;
    m_bytes += bytes.size();
    m_pieces.push_front({now, std::move(bytes)});
    m_lastDue = std::max(m_lastDue, now);
}

std::optional<Nanos> OutputQueue::nextDue() const {
    if (m_pieces.empty()) return std::nullopt;
    return m_pieces.front().due;
}

std::string OutputQueue::takeDue(Nanos now) {
    std::string out;
    while (!m_pieces.empty() && m_pieces.front().due <= now) {
        out += m_pieces.front().bytes;
        m_pieces.pop_front();
    }
    m_bytes -= out.size();
    return out;
}

void OutputQueue::clear() {
    m_pieces.clear();
    m_bytes = 0;
}

}  // namespace lv::sim
