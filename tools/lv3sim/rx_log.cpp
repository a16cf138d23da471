#include "lv3sim/rx_log.h"

#include <cinttypes>

namespace lv::sim {

std::string escapeBytes(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x20 || u > 0x7E || c == '\\') {
            char buf[5];
            std::snprintf(buf, sizeof buf, "\\x%02X", u);
            out += buf;
        } else {
            out += c;
        }
    }
    return out;
}

std::string formatSeconds(Nanos sinceStart) {
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(sinceStart).count();
    char buf[40];
    std::snprintf(buf, sizeof buf, "%" PRId64 ".%06" PRId64,
                  static_cast<std::int64_t>(micros / 1000000),
                  static_cast<std::int64_t>(micros % 1000000));
    return buf;
}

void RxLog::line(Nanos now, std::string_view received) {
    write(formatSeconds(now) + " " + escapeBytes(received) + "\n");
}

void RxLog::note(Nanos now, std::string_view event) {
    write("# " + formatSeconds(now) + " " + std::string(event) + "\n");
}

void RxLog::write(const std::string& text) {
    if (!m_file) return;
    std::fputs(text.c_str(), m_file);
    // Flushed per line: a test reads the log while the meter still runs.
    std::fflush(m_file);
}

}  // namespace lv::sim
