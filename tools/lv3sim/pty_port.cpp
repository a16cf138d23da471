#include "lv3sim/pty_port.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace lv::sim {

PtyPort::~PtyPort() {
    if (m_master >= 0) ::close(m_master);
}

bool PtyPort::open(std::string& error) {
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master < 0) {
        error = std::string("posix_openpt: ") + std::strerror(errno);
        return false;
    }
    if (::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
        error = std::string("grantpt/unlockpt: ") + std::strerror(errno);
        return false;
    }
    char name[256];
    if (::ptsname_r(m_master, name, sizeof name) != 0) {
        error = std::string("ptsname: ") + std::strerror(errno);
        return false;
    }
    m_slavePath = name;
    if (!applyLineSettings()) {
        error = std::string("tcsetattr: ") + std::strerror(errno);
        return false;
    }
    resetSlave();
    return true;
}

bool PtyPort::applyLineSettings() {
    // On Linux the master's termios calls reach the slave's settings, which
    // are what the program reads and what governs echo and CR translation.
    termios t{};
    if (::tcgetattr(m_master, &t) != 0) return false;
    ::cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    ::cfsetispeed(&t, B9600);
    ::cfsetospeed(&t, B9600);
    return ::tcsetattr(m_master, TCSANOW, &t) == 0;
}

PtyPort::State PtyPort::state() const {
    pollfd p{m_master, POLLIN, 0};
    if (::poll(&p, 1, 0) < 0) return {};
    return {(p.revents & POLLHUP) == 0, (p.revents & POLLIN) != 0};
}

void PtyPort::resetSlave() {
    applyLineSettings();
    const int slave = ::open(m_slavePath.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (slave < 0) return;  // a program got there first, or holds it exclusively
    ::tcflush(slave, TCIFLUSH);
    ::close(slave);
}

}  // namespace lv::sim
