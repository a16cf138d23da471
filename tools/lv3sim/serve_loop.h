#pragma once
#include <ctime>
#include <string>

#include "lv3sim/pty_port.h"
#include "lv3sim/session.h"

// The one thread of the virtual meter: poll() on the pseudo-terminal, a
// timerfd on CLOCK_MONOTONIC and a signalfd. Ticks fall at start + n x 20 ms
// on absolute times, so they do not drift with the time spent working.
namespace lv::sim {

class ServeLoop {
public:
    ServeLoop(Session& session, PtyPort& port) : m_session(session), m_port(port) {}
    ~ServeLoop();
    ServeLoop(const ServeLoop&) = delete;
    ServeLoop& operator=(const ServeLoop&) = delete;

    // Blocks SIGTERM, SIGINT and SIGHUP into a signalfd (before the link is
    // published, so an early SIGTERM is not lost) and makes the timer.
    bool init(std::string& error);

    // Serves until a signal or --exit-after. Time 0 of the log is the call.
    void run();

private:
    Nanos elapsed() const;
    void armTimer(Nanos at);
    void onTick(Nanos now);
    void readPort(Nanos now);
    void writeDue(Nanos now);
    void hangUp(Nanos now);

    Session& m_session;
    PtyPort& m_port;
    int m_timer = -1;
    int m_signals = -1;
    timespec m_start{};
    Nanos m_nextTick{};
    bool m_writeBlocked = false;
};

}  // namespace lv::sim
