#include "device/version_exchange.h"

namespace lv {

namespace {
constexpr double kReplyDelay = 0.5;     // the meter answers within this
constexpr double kCollectWindow = 0.2;  // then the reply must be complete
// Between polls for the next character: at 9600 baud a character takes ~1 ms.
constexpr double kPollInterval = 0.001;
// Closer than this to the end counts as there: the clock cannot tell it apart.
constexpr double kTimerResolution = 1e-6;
}  // namespace

bool Com_Input_Vers(SerialPort& port, Pump& pump, protocol::VersionInfo& info) {
    port.setThreshold(0);
    port.write(protocol::commandLine(protocol::kVersion));
    pump.wait(kReplyDelay);

    std::string reply;
    const double start = pump.Timer();
    for (;;) {
        if (port.bytesWaiting() > 0) {
            const std::string c = port.read(1);
            if (!c.empty()) {
                if (protocol::keptInVersionReply(c[0])) reply += c[0];
                if (c[0] == protocol::kCR) break;
                continue;
            }
        }
        if (secondsSince(pump, start) >= kCollectWindow) break;
        pump.wait(kPollInterval);
    }
    return protocol::parseVersionReply(reply, info);
}

void drainInput(SerialPort& port, Pump& pump, double seconds) {
    const double start = pump.Timer();
    for (;;) {
        const int n = port.bytesWaiting();
        if (n > 0) port.read(n);
        const double left = seconds - secondsSince(pump, start);
        if (left <= kTimerResolution) break;
        pump.wait(left < 0.01 ? left : 0.01);
    }
}

}  // namespace lv
