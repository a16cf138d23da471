#include "app/qt_live_session.h"

#include "device/link_status.h"
#include "device/meter_start.h"
#include "signal/lamp_rules.h"
#include "signal/needle_model.h"

namespace lv {

LiveSession::LiveSession(DisplaySink& display, std::FILE* out, QObject* parent)
    : QObject(parent), m_out(out), m_ctx{m_st, m_cfg, display, m_recorder} {
    m_st.LagLimit = lagLimitForItem(m_cfg.DataLag_Index);
    m_port.setReceiveHandler([this] { receiveEvent(m_ctx, m_port, *this); });
    connect(&m_port, &QtSerialPort::portFailed, this, [this](const QString& reason) {
        m_st.PortNumber = 0;
        // What the watchdog would show a moment later, once the line is silent.
        if (m_st.ShownStatus == kStatusInputOk || m_st.ShownStatus == kStatusRecording)
            showStatus(m_st, m_ctx.display, kStatusInputError, kStatusErrorColour);
        emit linkLost(reason);
    });
    m_reportTimer.setInterval(1000);
    connect(&m_reportTimer, &QTimer::timeout, this, &LiveSession::report);
}

bool LiveSession::connectMeter(const std::vector<std::string>& candidates) {
    m_port.setThreshold(0);
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        m_port.setPortName(candidates[i]);
        std::fprintf(m_out, "Checking Port %zu for Hardware (%s)\n", i + 1, candidates[i].c_str());
        std::fflush(m_out);
        if (!probeMeter(m_port, m_pump, m_version)) continue;
        std::fprintf(m_out, "Meter %s, boot %s, program %s\n", m_version.hardware.c_str(),
                     m_version.boot.c_str(), m_version.firmware.c_str());
        if (!startMeter(m_port, m_pump, m_version.code, m_cfg.lv3SensorMode)) {
            std::fprintf(m_out, "Unknown hardware code \"%s\"\n", m_version.code.c_str());
            continue;
        }
        m_st.PortNumber = static_cast<std::int16_t>(i + 1);
        m_st.RunMode = kRunLive;
        m_st.GoodFrames = 0;
        m_st.NeedleReset = true;
        m_st.ReferencePending = true;
        m_port.discardInput();
        m_port.setThreshold(kSearchThreshold);
        m_reportTimer.start();
        return true;
    }
    m_st.PortNumber = 0;
    m_st.RunMode = kRunNoMeter;
    m_st.StatusText = std::string(kStatusDemo);
    showStatus(m_st, m_ctx.display, kStatusDemo, m_cfg.Text_Color);
    return false;
}

void LiveSession::onNewSample() {
    m_needle = liveNeedleValue(m_st, m_cfg, m_ctx.display);
    // The needle has been drawn with the fresh reference: back to normal.
    m_st.NeedleReset = false;
    ++m_samples;
    emit newSample(m_needle);
}

void LiveSession::report() {
    std::fprintf(m_out, "Needle  %6d  raw %5d  filtered %5d  samples %ld\n", m_needle,
                 m_st.RawNeedle, m_st.FilteredNeedle, m_samples);
    std::fflush(m_out);
}

}  // namespace lv
