#include "app/port_search.h"

#include "device/link_status.h"
#include "device/meter_start.h"
#include "device/receive_event.h"

namespace lv {

namespace {
constexpr const char* kNoHardwareTitle = "lv Prime ";
constexpr const char* kNoHardwareText =
    "Check connection and Retry, or Cancel to run in demo mode.";
}  // namespace

PortSearch::PortSearch(SerialPort& port, Pump& pump, MeterState& st, DisplaySink& display,
                       Prompter& prompter, const Settings& settings,
                       std::vector<std::string> candidates, std::string versionText,
                       SearchHooks hooks)
    : m_port(port),
      m_pump(pump),
      m_st(st),
      m_display(display),
      m_prompter(prompter),
      m_settings(settings),
      m_candidates(std::move(candidates)),
      m_versionText(std::move(versionText)),
      m_hooks(std::move(hooks)),
      m_available(m_candidates.size(), false) {}

void PortSearch::splash(const std::string& text) const {
    if (m_hooks.splashText) m_hooks.splashText(text);
}

bool PortSearch::isAvailable(int portNumber) const {
    return portNumber >= 1 && portNumber <= portCount() && m_available[portNumber - 1];
}

std::string PortSearch::portName(int portNumber) const {
    if (portNumber < 1 || portNumber > portCount()) return {};
    return m_candidates[portNumber - 1];
}

void PortSearch::setCandidates(std::vector<std::string> candidates) {
    m_candidates = std::move(candidates);
    m_available.assign(m_candidates.size(), false);
    if (m_checkedPort > portCount()) m_checkedPort = 0;
}

void PortSearch::Init_Ports() {
    m_port.close();
    // Every candidate, not only the first 16: on Linux fixed serial ports
    // can fill the first places of the system list before a USB adapter.
    for (int n = 1; n <= portCount(); ++n) {
        m_port.setPortName(m_candidates[n - 1]);
        const bool opened = m_port.open();
        m_port.close();
        m_available[n - 1] = opened;
    }
}

bool PortSearch::Check_Version() {
    splash("Checking Port " + std::to_string(m_st.PortNumber) + " for Hardware");
    // The name can only change while the port is closed.
    m_port.close();
    m_port.setPortName(portName(m_st.PortNumber));
    protocol::VersionInfo info = m_version;
    if (!probeMeter(m_port, m_pump, info)) return false;
    m_version = info;
    m_checkedPort = m_st.PortNumber;
    // An unknown code still counts as a meter found; it is only not started.
    startMeter(m_port, m_pump, m_version.code, m_settings.lv3SensorMode);
    if (hasSensorChoice(m_version.code)) m_sensorMenuShown = true;
    return true;
}

void PortSearch::mnuConnectionConnect_Click() {
    // The receive event must not eat the version replies.
    m_port.setThreshold(0);
    m_port.close();
    Init_Ports();
    if (m_hooks.showSplash) m_hooks.showSplash();

    for (;;) {
        bool found = false;
        for (int n = 1; n <= portCount() && !found; ++n) {
            if (!isAvailable(n)) continue;
            m_st.PortNumber = static_cast<std::int16_t>(n);
            found = Check_Version();
        }
        if (found) break;

        splash("No Hardware Detected");
        const Answer a = m_prompter.ask(kNoHardwareTitle + m_versionText, kNoHardwareText,
                                        Buttons::RetryCancel, Icon::Critical);
        if (a == Answer::Retry) {
            Init_Ports();
            continue;
        }
        m_st.PortNumber = 0;
        // A saved port that did not answer has already set live mode at
        // start-up; without a meter the program is in the no-meter state.
        if (m_st.RunMode == kRunLive) m_st.RunMode = kRunNoMeter;
        m_st.StatusText = std::string(kStatusDemo);
        if (m_st.ShownStatus != m_st.StatusText)
            showStatus(m_st, m_display, kStatusDemo, m_settings.Text_Color);
        break;
    }

    if (m_hooks.closeSplash) m_hooks.closeSplash();

    if (m_st.PortNumber != 0) {
        m_st.RunMode = kRunLive;
        m_st.GoodFrames = 0;
        m_port.setThreshold(kSearchThreshold);
        if (m_hooks.connected) m_hooks.connected();
    }
}

void PortSearch::findMeterAtStart() {
    Init_Ports();
    bool found = false;
    if (m_st.PortNumber != 0) {
        splash("Checking for Hardware");
        if (isAvailable(m_st.PortNumber)) found = Check_Version();
        // Live even when the saved port was silent: the search below decides.
        m_st.RunMode = kRunLive;
        m_st.DataSilent = true;
    } else {
        splash("Running in Demo Mode");
        m_st.StatusText = std::string(kStatusDemo);
        showStatus(m_st, m_display, kStatusDemo, m_settings.Text_Color);
    }
    if (!found) mnuConnectionConnect_Click();
}

void PortSearch::armLink() {
    m_port.discardInput();
    if (m_st.PortNumber != 0) {
        m_st.GoodFrames = 0;
        m_port.setThreshold(kSearchThreshold);
    }
}

}  // namespace lv
