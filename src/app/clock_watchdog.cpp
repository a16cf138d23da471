#include "app/clock_watchdog.h"

#include "device/link_status.h"

namespace lv {

ClockWatchdog::ClockWatchdog(MeterState& st, SerialPort& port, DisplaySink& display,
                             std::function<void()> pressStop)
    : m_st(st), m_port(port), m_display(display), m_pressStop(std::move(pressStop)) {}

void ClockWatchdog::tmrClock_Timer(const ClockTime& now) {
    // Playback owns the display and feeds no receive events: a watchdog here
    // would flag a healthy link.
    if (m_st.RunMode == kRunPlayback) return;

    if (now.minute != m_lastMinute) {
        m_display.Update_Clock(now.hour, now.minute, now.second, now.date);
        m_lastMinute = now.minute;
    }

    // A threshold of 0 means an exchange is in flight or no meter is in use;
    // silence is expected then.
    if (m_port.threshold() == 0) return;

    m_silentTicks = m_st.DataSilent ? static_cast<std::uint8_t>(m_silentTicks + 1) : 0;
    if (m_silentTicks >= kSilentTicksToFail) {
        m_silentTicks = 0;
        if (m_st.RunMode == kRunRecording && m_pressStop) m_pressStop();
        // Other texts (Demo Mode, Audio OFF) are not about the link; an Input
        // Error already shown is not drawn again.
        if (m_st.ShownStatus == kStatusInputOk || m_st.ShownStatus == kStatusRecording)
            showStatus(m_st, m_display, kStatusInputError, kStatusErrorColour);
    }
    m_st.DataSilent = true;
}

}  // namespace lv
