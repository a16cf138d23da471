#include "lv3sim/pty_client.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <utility>

namespace lv::sim::test {

PtyClient::PtyClient(const std::string& path) {
    m_fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios t{};
    if (m_fd < 0 || ::tcgetattr(m_fd, &t) != 0) return;
    ::cfmakeraw(&t);
    ::cfsetspeed(&t, B9600);
    ::tcsetattr(m_fd, TCSANOW, &t);
}

PtyClient::~PtyClient() {
    if (m_fd >= 0) ::close(m_fd);
}

Clock::time_point PtyClient::send(std::string_view bytes) {
    if (m_fd >= 0 &&
        ::write(m_fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        ::close(std::exchange(m_fd, -1));  // the test then sees nothing come back
    return Clock::now();
}

std::vector<PtyClient::Piece> PtyClient::readPieces(std::chrono::milliseconds timeout,
                                                    bool untilCr) {
    std::vector<Piece> pieces;
    const auto deadline = Clock::now() + timeout;
    for (auto now = Clock::now(); m_fd >= 0 && now < deadline; now = Clock::now()) {
        pollfd p{m_fd, POLLIN, 0};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - now);
        if (::poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
        char buf[4096];
        const ssize_t n = ::read(m_fd, buf, sizeof buf);
        if (n <= 0) break;  // the meter went away
        pieces.push_back({Clock::now(), std::string(buf, static_cast<std::size_t>(n))});
        if (untilCr && pieces.back().bytes.find('\r') != std::string::npos) break;
    }
    return pieces;
}

std::string PtyClient::read(std::chrono::milliseconds timeout, bool untilCr) {
    return joined(readPieces(timeout, untilCr));
}

std::string joined(const std::vector<PtyClient::Piece>& pieces) {
    std::string all;
    for (const auto& p : pieces) all += p.bytes;
    return all;
}

}  // namespace lv::sim::test
