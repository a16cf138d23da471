#pragma once
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/port_search.h"
#include "app/reconnect_policy.h"
#include "common/prompter.h"
#include "common/qt_pump.h"
#include "device/com_input.h"
#include "device/qt_serial_port.h"
#include "device/receive_event.h"
#include "settings/session_config.h"
#include "settings/settings_file.h"
#include "signal/meter_state.h"

namespace lv {

// The meter link: the port search, the receive event, the sensor choice and
// the reconnection of a port that failed while in use.
class LiveSession : public QObject, public SampleConsumer {
    Q_OBJECT
public:
    using CandidateList = std::function<std::vector<std::string>()>;

    LiveSession(SettingsStore& store, DisplaySink& display, Prompter& prompter,
                std::string versionText, CandidateList candidates, QObject* parent = nullptr);

    // Start-up: the port the session saved first, then the whole search with
    // its Retry/Cancel question when no meter answered there.
    void findMeterAtStart(const SessionConfig& session, SearchHooks hooks);
    // Once the window is drawn: stale bytes go, the receive event is armed and
    // the first frame takes the needle reference.
    void armLink();

    // The menu's Connect: a fresh port list and the whole search.
    void connectFromMenu();
    // A port item of the menu: that port only.
    void tryPort(int portNumber);
    // mnuSensorLocal / mnuSensorRemote.
    void chooseSensor(bool remote);
    // Closing: nothing more is received and no reconnection is tried.
    void disarm();
    // The dial's colour is the lamp's "off": a lamp that was off stays off
    // when the dial changes colour (settings loaded, colour chosen).
    void followDialColour();

    // Where the frame path's recording calls go; nullptr for nowhere.
    void setRecorderTap(RecorderTap* tap) { m_recorder.target = tap; }

    MeterState& state() { return m_st; }
    const MeterState& state() const { return m_st; }
    SerialPort& port() { return m_port; }
    // A command for the meter. The start command gives the meter its stream
    // back after a playback, so the input held meanwhile is read again.
    void sendToMeter(const std::string& line);
    Pump& pump() { return m_pump; }
    const PortSearch& search() const { return m_search; }
    // True while the port search or a probe is talking to the meter.
    bool busy() const { return m_busy; }
    bool reconnecting() const { return m_reconnect.waiting(); }
    std::int32_t needle() const { return m_needle; }
    long samples() const { return m_samples; }

    void onNewSample() override;

signals:
    void newSample(std::int32_t needle);
    void linkLost(const QString& reason);
    void linkRestored();
    // The port menu and the sensor menu need rebuilding.
    void portsChanged();

private:
    void portFailed(const QString& reason);
    void pollReconnect();
    void goLive();
    // Monotonic: a reconnection waiting across midnight still comes due.
    double secondsNow() const;

    SettingsStore& m_store;
    DisplaySink& m_display;
    CandidateList m_candidates;
    QtSerialPort m_port;
    QtPump m_pump;
    MeterState m_st;
    // The recorder is built after the session (it needs the meter state), so
    // the frame path talks to it through this.
    struct ForwardingTap : RecorderTap {
        RecorderTap* target = nullptr;
        void countFrame() override {
            if (target) target->countFrame();
        }
        void showElapsed() override {
            if (target) target->showElapsed();
        }
        void resetElapsed() override {
            if (target) target->resetElapsed();
        }
        void takeFrame(int letterCode, int bdTenths) override {
            if (target) target->takeFrame(letterCode, bdTenths);
        }
    };
    ForwardingTap m_recorder;
    LiveContext m_ctx;
    PortSearch m_search;
    ReconnectPolicy m_reconnect;
    QTimer m_reconnectTimer;
    QElapsedTimer m_clock;
    bool m_busy = false;
    Colour m_lampOff = 0;  // the dial colour the lamp was last turned off in
    long m_samples = 0;
    // The needle at rest before the first frame, a little left of zero.
    std::int32_t m_needle = -2503;
};

}  // namespace lv
