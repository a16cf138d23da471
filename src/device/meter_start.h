#pragma once
#include <string>

#include "common/pump.h"
#include "device/protocol.h"
#include "device/serial_port.h"

namespace lv {

// Probes the port for a meter: reopen, quieten it with "Q" twice, drain, then
// ask for its version. The port is left closed when nothing answered.
bool probeMeter(SerialPort& port, Pump& pump, protocol::VersionInfo& info);

// Starts the data stream of an identified meter by its hardware code. Returns
// false (and sends nothing, port closed) for a code it does not know.
bool startMeter(SerialPort& port, Pump& pump, const std::string& hardwareCode, bool sensorRemote);

// Codes whose start shows the local/remote sensor choice.
inline bool hasSensorChoice(const std::string& hardwareCode) {
    return hardwareCode == "31";
}

}  // namespace lv
