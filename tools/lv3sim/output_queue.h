#pragma once
#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>

// Bytes waiting to go out, each piece with the earliest time it may be
// written. Order is kept: a piece never overtakes one queued before it.
namespace lv::sim {

using Nanos = std::chrono::nanoseconds;

class OutputQueue {
public:
    // byteTime 0: each piece goes out in one write. Otherwise each byte is its
    // own piece, byteTime after the one before, as on a real serial line.
    explicit OutputQueue(Nanos byteTime = Nanos::zero()) : m_byteTime(byteTime) {}

    void push(std::string bytes, Nanos earliest);

    // Bytes that could not be written: back to the front, due at once.
    void pushFront(std::string bytes, Nanos now);

    std::optional<Nanos> nextDue() const;
    std::string takeDue(Nanos now);

    bool empty() const { return m_pieces.empty(); }
    std::size_t bytes() const { return m_bytes; }
    void clear();

private:
    struct Piece {
        Nanos due;
        std::string bytes;
    };

    Nanos m_byteTime;
    std::deque<Piece> m_pieces;
    Nanos m_lastDue = Nanos::min();
    std::size_t m_bytes = 0;
};

}  // namespace lv::sim
