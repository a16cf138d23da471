#pragma once
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

// The program's side of the pseudo-terminal in process tests: opened as a
// serial port is (O_RDWR | O_NOCTTY, raw, 9600 baud), every read timed.
namespace lv::sim::test {

using Clock = std::chrono::steady_clock;

class PtyClient {
public:
    explicit PtyClient(const std::string& path);
    ~PtyClient();
    PtyClient(const PtyClient&) = delete;
    PtyClient& operator=(const PtyClient&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    Clock::time_point send(std::string_view bytes);

    struct Piece {
        Clock::time_point at;
        std::string bytes;
    };
    // Each read until the timeout, or until a CR has arrived if asked.
    std::vector<Piece> readPieces(std::chrono::milliseconds timeout, bool untilCr = false);
    std::string read(std::chrono::milliseconds timeout, bool untilCr = false);

private:
    int m_fd = -1;
};

std::string joined(const std::vector<PtyClient::Piece>& pieces);

}  // namespace lv::sim::test
