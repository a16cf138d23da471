#include "device/meter_start.h"

#include "device/version_exchange.h"

namespace lv {

namespace {
constexpr double kDrainSeconds = 0.1;

void send(SerialPort& port, std::string_view command) {
    port.write(protocol::commandLine(command));
}
}  // namespace

bool probeMeter(SerialPort& port, Pump& pump, protocol::VersionInfo& info) {
    port.close();
    if (!port.open()) return false;
    TDelay(pump, 10);
    send(port, protocol::kQuiet);
    TDelay(pump, 2);
    send(port, protocol::kQuiet);
    drainInput(port, pump, kDrainSeconds);
    if (Com_Input_Vers(port, pump, info)) return true;
    port.close();
    return false;
}

bool startMeter(SerialPort& port, Pump& pump, const std::string& hardwareCode, bool sensorRemote) {
    port.close();
    if (hardwareCode == "40" || hardwareCode == "2A") {
        port.open();
        send(port, protocol::kStart);
    } else if (hardwareCode == "3A") {
        port.open();
        TDelay(pump, 10);
        send(port, protocol::kStart);
        send(port, protocol::kRun);
    } else if (hardwareCode == "31") {
        port.open();
        TDelay(pump, 10);
        send(port, sensorRemote ? protocol::kSensorRemote : protocol::kSensorLocal);
        TDelay(pump, 10);
        send(port, protocol::kStart);
        TDelay(pump, 10);
        send(port, protocol::kRun);
    } else {
        return false;
    }
    return true;
}

}  // namespace lv
