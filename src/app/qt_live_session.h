#pragma once
#include <QObject>
#include <QTimer>
#include <cstdio>
#include <string>
#include <vector>

#include "common/qt_pump.h"
#include "device/com_input.h"
#include "device/protocol.h"
#include "device/qt_serial_port.h"
#include "device/receive_event.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// The live link from port search to decoded samples, without a window: finds
// the meter among the candidate ports, starts it and runs the receive event.
class LiveSession : public QObject, public SampleConsumer {
    Q_OBJECT
public:
    LiveSession(DisplaySink& display, std::FILE* out, QObject* parent = nullptr);

    // Tries each candidate in order (port n = entry n-1); true when a meter
    // answered and was started.
    bool connectMeter(const std::vector<std::string>& candidates);

    const MeterState& state() const { return m_st; }
    const Settings& settings() const { return m_cfg; }
    const protocol::VersionInfo& version() const { return m_version; }
    long samples() const { return m_samples; }
    std::int32_t needle() const { return m_needle; }

    void onNewSample() override;

signals:
    void linkLost(const QString& reason);
    // After each reading, with the needle value just computed.
    void newSample(std::int32_t needle);

private:
    void report();

    std::FILE* m_out;
    QtSerialPort m_port;
    QtPump m_pump;
    MeterState m_st;
    Settings m_cfg;
    NoRecorder m_recorder;
    LiveContext m_ctx;
    protocol::VersionInfo m_version;
    QTimer m_reportTimer;
    long m_samples = 0;
    std::int32_t m_needle = kNeedleRestValue;

    static constexpr std::int32_t kNeedleRestValue = -2503;
};

}  // namespace lv
