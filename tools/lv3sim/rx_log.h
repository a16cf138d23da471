#pragma once
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

// The --log file: what the program sent, line by line, so that end-to-end
// tests can check the exact bytes. A received line is "<seconds> <line>" with
// seconds since start to the microsecond; the meter's own events are lines
// starting with "# " so that they never look like received lines.
namespace lv::sim {

using Nanos = std::chrono::nanoseconds;

// Control bytes, bytes above 0x7E and the backslash itself as \xNN (upper
// case), everything else as it is.
std::string escapeBytes(std::string_view bytes);

std::string formatSeconds(Nanos sinceStart);

class RxLog {
public:
    RxLog() = default;  // a log that writes nowhere
    explicit RxLog(std::FILE* file) : m_file(file) {}

    void line(Nanos now, std::string_view received);
    void note(Nanos now, std::string_view event);

private:
    void write(const std::string& text);

    std::FILE* m_file = nullptr;
};

}  // namespace lv::sim
