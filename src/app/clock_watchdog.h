#pragma once
#include <cstdint>
#include <functional>

#include "common/display_sink.h"
#include "device/serial_port.h"
#include "signal/meter_state.h"

namespace lv {

// tmrClock_Timer: the clock display and the link watchdog, one call per
// 800 ms tick. The port's receive threshold tells whether a meter link is
// armed; the receive event clears DataSilent, each tick sets it again.
class ClockWatchdog {
public:
    ClockWatchdog(MeterState& st, SerialPort& port, DisplaySink& display,
                  std::function<void()> pressStop);

    void tmrClock_Timer(const ClockTime& now);

    int silentTicks() const { return m_silentTicks; }

    // Two silent ticks (about 1.6 s) count as a lost link.
    static constexpr int kSilentTicksToFail = 2;

private:
    MeterState& m_st;
    SerialPort& m_port;
    DisplaySink& m_display;
    std::function<void()> m_pressStop;
    std::uint8_t m_silentTicks = 0;
    // No minute yet: the first tick draws the clock, whatever minute it is.
    int m_lastMinute = -1;
};

}  // namespace lv
