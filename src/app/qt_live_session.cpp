#include "app/qt_live_session.h"

#include "app/program_files.h"

#include <QFileInfo>

#include "device/link_status.h"
#include "device/protocol.h"
#include "signal/lamp_rules.h"
#include "signal/needle_model.h"

namespace lv {

namespace {

// Keeps a flag set for the length of an exchange with the meter, so that a
// timer or a menu click arriving inside its waits does not start another.
class BusyScope {
public:
    explicit BusyScope(bool& flag) : m_flag(flag) { m_flag = true; }
    ~BusyScope() { m_flag = false; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    bool& m_flag;
};

}  // namespace

LiveSession::LiveSession(SettingsStore& store, DisplaySink& display, Prompter& prompter,
                         std::string versionText, CandidateList candidates, QObject* parent)
    : QObject(parent),
      m_store(store),
      m_display(display),
      m_candidates(std::move(candidates)),
      m_ctx{m_st, store.values, display, m_recorder},
      m_search(m_port, m_pump, m_st, display, prompter, store.values, {}, std::move(versionText)) {
    m_st.LagLimit = lagLimitForItem(store.values.DataLag_Index);
    // The lamp starts off. A meter whose status never changes never draws it,
    // and every record would otherwise store the start value as a lit lamp.
    m_lampOff = m_st.LedColour = store.values.Dial_Color;
    m_port.setReceiveHandler([this] {
        // Playback and the needle test own the display; the meter follows the
        // played records, and its own frames would only fight them. They are
        // not even read until the stream is started again (sendToMeter).
        if (m_st.RunMode == kRunPlayback) {
            m_port.holdInput(true);
            return;
        }
        receiveEvent(m_ctx, m_port, *this);
    });
    connect(&m_port, &QtSerialPort::portFailed, this, &LiveSession::portFailed);
    m_reconnectTimer.setInterval(static_cast<int>(ReconnectPolicy::kPollSeconds * 1000));
    connect(&m_reconnectTimer, &QTimer::timeout, this, &LiveSession::pollReconnect);
    m_clock.start();
}

void LiveSession::sendToMeter(const std::string& line) {
    if (line == protocol::commandLine(protocol::kStart)) m_port.holdInput(false);
    m_port.write(line);
}

double LiveSession::secondsNow() const {
    return static_cast<double>(m_clock.elapsed()) / 1000.0;
}

void LiveSession::findMeterAtStart(const SessionConfig& session, SearchHooks hooks) {
    BusyScope busy(m_busy);
    m_search.setCandidates(m_candidates ? m_candidates() : std::vector<std::string>{});
    m_search.setHooks(std::move(hooks));
    m_st.PortNumber = savedPort(session, m_search.portCount());
    m_search.findMeterAtStart();
    emit portsChanged();
}

void LiveSession::armLink() {
    m_search.armLink();
    m_st.NeedleReset = true;
    m_st.ReferencePending = true;
}

void LiveSession::connectFromMenu() {
    if (m_busy) return;
    BusyScope busy(m_busy);
    m_reconnect.cancel();
    m_reconnectTimer.stop();
    m_search.setCandidates(m_candidates ? m_candidates() : std::vector<std::string>{});
    m_search.mnuConnectionConnect_Click();
    if (m_st.PortNumber != 0) goLive();
    emit portsChanged();
}

void LiveSession::tryPort(int portNumber) {
    if (m_busy || !m_search.isAvailable(portNumber)) return;
    BusyScope busy(m_busy);
    m_reconnect.cancel();
    m_reconnectTimer.stop();
    m_port.setThreshold(0);
    m_st.PortNumber = static_cast<std::int16_t>(portNumber);
    if (m_search.Check_Version()) {
        m_st.RunMode = kRunLive;
        goLive();
    } else {
        // As after Cancel in the search: no meter, and the status says so.
        m_st.PortNumber = 0;
        if (m_st.RunMode == kRunLive) m_st.RunMode = kRunNoMeter;
        m_st.StatusText = std::string(kStatusDemo);
        if (m_st.ShownStatus != m_st.StatusText)
            showStatus(m_st, m_display, kStatusDemo, m_store.values.Text_Color);
    }
    emit portsChanged();
}

void LiveSession::goLive() {
    m_st.GoodFrames = 0;
    m_st.NeedleReset = true;
    m_st.ReferencePending = true;
    m_port.discardInput();
    m_port.setThreshold(kSearchThreshold);
}

void LiveSession::chooseSensor(bool remote) {
    if (m_port.isOpen())
        m_port.write(
            protocol::commandLine(remote ? protocol::kSensorRemote : protocol::kSensorLocal));
    // A "LINK" left on the status line gives way to the ordinary status.
    if (!remote && m_st.ShownStatus == "LINK")
        showStatus(m_st, m_display, m_st.StatusText, m_store.values.Text_Color);
}

void LiveSession::disarm() {
    m_reconnect.cancel();
    m_reconnectTimer.stop();
    m_port.setThreshold(0);
}

void LiveSession::followDialColour() {
    if (m_st.LedColour == m_lampOff) m_st.LedColour = m_store.values.Dial_Color;
    m_lampOff = m_store.values.Dial_Color;
}

void LiveSession::onNewSample() {
    m_needle = liveNeedleValue(m_st, m_store.values, m_display);
    // The needle has been drawn with the fresh reference: back to normal.
    m_st.NeedleReset = false;
    ++m_samples;
    emit newSample(m_needle);
}

void LiveSession::portFailed(const QString& reason) {
    // What the watchdog would show a moment later, once the line is silent.
    if (m_st.ShownStatus == kStatusInputOk || m_st.ShownStatus == kStatusRecording)
        showStatus(m_st, m_display, kStatusInputError, kStatusErrorColour);
    if (m_st.PortNumber != 0) {
        m_reconnect.lost(m_search.portName(m_st.PortNumber));
        m_reconnectTimer.start();
    }
    emit linkLost(reason);
}

void LiveSession::pollReconnect() {
    // A recording that lost its meter is ended by the watchdog and kept as it
    // stands; a meter coming back first would carry it on with a hole in its
    // timeline. The reconnection only brings the live display back.
    if (m_busy || m_st.RunMode == kRunRecording) return;
    const bool present = QFileInfo::exists(QString::fromStdString(m_reconnect.path()));
    if (!m_reconnect.due(secondsNow(), present)) {
        if (!m_reconnect.waiting()) m_reconnectTimer.stop();
        return;
    }
    BusyScope busy(m_busy);
    m_port.setThreshold(0);
    if (m_search.Check_Version()) {
        m_reconnect.reconnected();
        m_reconnectTimer.stop();
        if (m_st.RunMode == kRunNoMeter) m_st.RunMode = kRunLive;
        goLive();
        emit linkRestored();
        emit portsChanged();
    } else {
        m_reconnect.probeFailed(secondsNow());
        // The link stays armed while the reconnection waits: the watchdog keeps
        // judging it, and the port's failure already shows "Input Error".
        m_port.setThreshold(kSearchThreshold);
    }
}

}  // namespace lv
