#pragma once
#include <functional>
#include <string>
#include <vector>

#include "common/display_sink.h"
#include "common/prompter.h"
#include "common/pump.h"
#include "device/protocol.h"
#include "device/serial_port.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// What the search asks of the window around it. Empty members are skipped.
struct SearchHooks {
    std::function<void(const std::string&)> splashText;  // the splash form's progress label
    std::function<void()> showSplash;
    std::function<void()> closeSplash;
    // After a successful search from the menu: prepare the next recording name.
    std::function<void()> connected;
};

// What the no-meter box adds to its fixed text: each candidate and why it
// gave no meter (reasons[n-1] for port n), and the fix when the system
// refused access.
BoxDetail noHardwareDetail(const std::vector<std::string>& ports,
                           const std::vector<std::string>& reasons);

// Finding the meter: port n is candidates[n-1], all opened through the one
// serial port object by setting its name.
class PortSearch {
public:
    PortSearch(SerialPort& port, Pump& pump, MeterState& st, DisplaySink& display,
               Prompter& prompter, const Settings& settings, std::vector<std::string> candidates,
               std::string versionText, SearchHooks hooks = {});

    // Re-opens every candidate briefly to learn which ones can be opened.
    void Init_Ports();
    // Probes PortNumber; when a meter answers, starts it by its hardware code.
    bool Check_Version();
    // The whole search with the operator's Retry/Cancel, as from the menu.
    void mnuConnectionConnect_Click();

    // Start-up: the saved port first, then, if no meter answered there, the
    // whole search (so it runs once even with no saved port).
    void findMeterAtStart();
    // Start-up, once the window is drawn: stale bytes go, and the receive
    // event is armed when a meter port is in use.
    void armLink();

    // The list can change while the program runs (an adapter plugged in);
    // a new list is taken before the next scan.
    void setCandidates(std::vector<std::string> candidates);
    const std::vector<std::string>& candidates() const { return m_candidates; }
    const std::vector<bool>& availability() const { return m_available; }
    void setHooks(SearchHooks hooks) { m_hooks = std::move(hooks); }

    int portCount() const { return static_cast<int>(m_candidates.size()); }
    // 1-based, as the port menu numbers them.
    bool isAvailable(int portNumber) const;
    std::string portName(int portNumber) const;
    // The port whose menu item carries the check mark; 0 for none.
    int checkedPort() const { return m_checkedPort; }
    // Shown once a meter with a sensor choice has been started; never hidden.
    bool sensorMenuShown() const { return m_sensorMenuShown; }
    const protocol::VersionInfo& version() const { return m_version; }

private:
    void splash(const std::string& text) const;

    SerialPort& m_port;
    Pump& m_pump;
    MeterState& m_st;
    DisplaySink& m_display;
    Prompter& m_prompter;
    const Settings& m_settings;
    std::vector<std::string> m_candidates;
    std::string m_versionText;
    SearchHooks m_hooks;

    std::vector<bool> m_available;       // entry n-1 for port n
    std::vector<std::string> m_reasons;  // why port n gave no meter in the last search
    int m_checkedPort = 0;
    bool m_sensorMenuShown = false;
    protocol::VersionInfo m_version;
};

}  // namespace lv
