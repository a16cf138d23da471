#pragma once
#include "common/pump.h"
#include "device/protocol.h"
#include "device/serial_port.h"

namespace lv {

// Sends "V" and reads the meter's identification. True only for a reply that
// begins "V,LV"; `info` is left as it was otherwise. Disarms the receive event
// first, since the wait lets other events run.
bool Com_Input_Vers(SerialPort& port, Pump& pump, protocol::VersionInfo& info);

// Throws away whatever arrives for this long, letting events run.
void drainInput(SerialPort& port, Pump& pump, double seconds);

}  // namespace lv
