#pragma once
#include "device/com_input.h"

namespace lv {

// What runs after a frame produced a new reading: the needle update and,
// with the chart shown, the chart.
class SampleConsumer {
public:
    virtual ~SampleConsumer() = default;
    virtual void onNewSample() = 0;
};

// Threshold the receive event re-arms itself with.
inline constexpr int kReceiveThreshold = 6;
// Threshold armed after a port search.
inline constexpr int kSearchThreshold = 5;

// The serial receive event: disarmed while it runs so that nothing re-enters
// it, re-armed afterwards while a meter port is in use.
void receiveEvent(LiveContext& ctx, SerialPort& port, SampleConsumer& consumer);

}  // namespace lv
