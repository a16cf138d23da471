#include "app/port_search.h"

#include "device/link_status.h"
#include "device/meter_start.h"
#include "device/receive_event.h"

namespace lv {

namespace {
constexpr const char* kNoHardwareTitle = "lv Prime ";
constexpr const char* kNoHardwareText =
    "Check connection and Retry, or Cancel to run in demo mode.";
constexpr const char* kNoAnswer = "opened, but no meter answered";
constexpr const char* kDenied = "Permission denied";
constexpr std::size_t kDeniedNamed = 3;
}  // namespace

BoxDetail noHardwareDetail(const std::vector<std::string>& ports,
                           const std::vector<std::string>& reasons) {
    BoxDetail detail;
    if (ports.empty()) {
        detail.informative = "No serial port was found. Plug in the meter's USB cable and Retry.";
        return detail;
    }
    std::string denied;
    std::size_t deniedCount = 0;
    for (std::size_t i = 0; i < ports.size(); ++i) {
        const std::string& reason = i < reasons.size() ? reasons[i] : std::string();
        detail.detailed += ports[i] + ": " + (reason.empty() ? kNoAnswer : reason) + "\n";
        if (reason.find(kDenied) == std::string::npos) continue;
        // A machine with many fixed serial ports would fill the box with names.
        if (++deniedCount <= kDeniedNamed) denied += (denied.empty() ? "" : ", ") + ports[i];
    }
    if (deniedCount > kDeniedNamed)
        denied += " and " + std::to_string(deniedCount - kDeniedNamed) + " more";
    if (!denied.empty())
        detail.informative = "Permission denied on " + denied +
                             ". To use serial ports, your user must be a member of the group "
                             "\"dialout\":\n\n    sudo usermod -aG dialout $USER\n\nthen log out "
                             "and log in again (or restart) for the membership to take effect.";
    else
        detail.informative =
            "No meter answered on the serial ports. Show Details... lists why "
            "for each port.";
    return detail;
}

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
      m_available(m_candidates.size(), false),
      m_reasons(m_candidates.size()) {}

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
    m_reasons.assign(m_candidates.size(), {});
    if (m_checkedPort > portCount()) m_checkedPort = 0;
}

void PortSearch::Init_Ports() {
    m_port.close();
    // Every candidate, not only the first 16: on Linux fixed serial ports
    // can fill the first places of the system list before a USB adapter.
    for (int n = 1; n <= portCount(); ++n) {
        m_port.setPortName(m_candidates[n - 1]);
        const bool opened = m_port.open();
        // Skipped without a message here; the reason is told if no port answers.
        m_reasons[n - 1] = opened ? "" : m_port.openError();
        if (!opened && m_reasons[n - 1].empty()) m_reasons[n - 1] = "could not be opened";
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
    if (!probeMeter(m_port, m_pump, info)) {
        // A port can refuse the second open (taken by another program meanwhile).
        const std::size_t at = static_cast<std::size_t>(m_st.PortNumber - 1);
        if (at < m_reasons.size()) m_reasons[at] = m_port.openError();
        return false;
    }
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
        const Answer a =
            m_prompter.ask(kNoHardwareTitle + m_versionText, kNoHardwareText, Buttons::RetryCancel,
                           Icon::Critical, noHardwareDetail(m_candidates, m_reasons));
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
