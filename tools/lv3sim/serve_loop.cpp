#include "lv3sim/serve_loop.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace lv::sim {

namespace {

constexpr std::int64_t kNanosPerSecond = 1'000'000'000;

timespec operator+(timespec t, Nanos d) {
    const std::int64_t total = t.tv_nsec + d.count();
    t.tv_sec += static_cast<time_t>(total / kNanosPerSecond);
    t.tv_nsec = static_cast<long>(total % kNanosPerSecond);
    return t;
}

}  // namespace

ServeLoop::~ServeLoop() {
    if (m_timer >= 0) ::close(m_timer);
    if (m_signals >= 0) ::close(m_signals);
}

bool ServeLoop::init(std::string& error) {
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, SIGTERM);
    ::sigaddset(&set, SIGINT);
    ::sigaddset(&set, SIGHUP);
    if (::sigprocmask(SIG_BLOCK, &set, nullptr) != 0) {
        error = std::string("sigprocmask: ") + std::strerror(errno);
        return false;
    }
    ::signal(SIGPIPE, SIG_IGN);
    m_signals = ::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    m_timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (m_signals < 0 || m_timer < 0) {
        error = std::string("signalfd/timerfd: ") + std::strerror(errno);
        return false;
    }
    return true;
}

Nanos ServeLoop::elapsed() const {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return Nanos((now.tv_sec - m_start.tv_sec) * kNanosPerSecond + (now.tv_nsec - m_start.tv_nsec));
}

void ServeLoop::armTimer(Nanos at) {
    itimerspec when{};
    when.it_value = m_start + at;
    ::timerfd_settime(m_timer, TFD_TIMER_ABSTIME, &when, nullptr);
}

void ServeLoop::run() {
    ::clock_gettime(CLOCK_MONOTONIC, &m_start);
    m_nextTick = kTickPeriod;
    for (;;) {
        Nanos now = elapsed();
        if (now >= m_nextTick) {
            onTick(now);
            if (m_session.expired(now)) return;
        }
        writeDue(now);

        Nanos wake = m_nextTick;
        if (const auto due = m_session.nextDue(); due && !m_writeBlocked)
            wake = std::min(wake, *due);
        armTimer(wake);

        // While nobody holds the slave, the master reports POLLHUP without
        // end; it stays out of the set and is looked at on each tick instead.
        pollfd fds[3] = {{m_timer, POLLIN, 0}, {m_signals, POLLIN, 0}, {-1, 0, 0}};
        if (m_session.connected())
            fds[2] = {m_port.fd(), static_cast<short>(POLLIN | (m_writeBlocked ? POLLOUT : 0)), 0};
        if (::poll(fds, 3, -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        if (fds[1].revents & POLLIN) return;  // SIGTERM, SIGINT or SIGHUP
        if (fds[0].revents & POLLIN) {
            std::uint64_t expirations = 0;
            [[maybe_unused]] const ssize_t n = ::read(m_timer, &expirations, sizeof expirations);
        }
        now = elapsed();
        if (fds[2].revents & POLLOUT) m_writeBlocked = false;
        if (fds[2].revents & (POLLIN | POLLHUP | POLLERR)) readPort(now);
        if (fds[2].revents & (POLLHUP | POLLERR)) hangUp(now);
    }
}

void ServeLoop::onTick(Nanos now) {
    // Late ticks are not caught up: the missed lines are simply gone.
    const std::int64_t tick = now / kTickPeriod;
    m_nextTick = kTickPeriod * (tick + 1);
    if (!m_session.connected()) {
        const PtyPort::State state = m_port.state();
        // A program may have written and closed between two ticks.
        if (state.readable) readPort(now);
        if (state.slaveOpen) {
            m_session.setConnected(true, now);
            m_writeBlocked = false;
        }
    }
    m_session.tick(now);
}

void ServeLoop::readPort(Nanos now) {
    char buf[512];
    for (;;) {
        const ssize_t n = ::read(m_port.fd(), buf, sizeof buf);
        if (n <= 0) return;  // EAGAIN, or EIO once a closed slave has nothing left
        m_session.receive(std::string_view(buf, static_cast<std::size_t>(n)), now);
    }
}

void ServeLoop::hangUp(Nanos now) {
    m_session.setConnected(false, now);
    m_writeBlocked = false;
    m_port.resetSlave();
}

void ServeLoop::writeDue(Nanos now) {
    if (m_writeBlocked) return;
    const std::string bytes = m_session.takeOutput(now);
    if (bytes.empty()) return;
    const ssize_t n = ::write(m_port.fd(), bytes.data(), bytes.size());
    if (n == static_cast<ssize_t>(bytes.size())) return;
    if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) return;  // gone: the hang-up follows
    const std::size_t written = n < 0 ? 0 : static_cast<std::size_t>(n);
    m_session.unwritten(bytes.substr(written), now);
    m_writeBlocked = true;
}

}  // namespace lv::sim
