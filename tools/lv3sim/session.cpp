#include "lv3sim/session.h"

#include <cstdio>
#include <fstream>

namespace lv::sim {

namespace {

Nanos secondsToNanos(double s) {
    return std::chrono::duration_cast<Nanos>(std::chrono::duration<double>(s));
}

}  // namespace

Session::Session(const Options& options, std::unique_ptr<FrameSource> source, RxLog log)
    : m_options(options),
      m_log(log),
      m_meter({options.code, options.boot, options.firmware}, options.failEvery),
      m_stream(std::move(source), {options.burst, options.badEvery, options.garbage, options.seed}),
      m_out(options.pace == Pace::Byte ? kCharacterTime : Nanos::zero()) {}

void Session::receive(std::string_view bytes, Nanos now) {
    for (const std::string& line : m_splitter.feed(bytes)) {
        m_log.line(now, line);
        const bool wasStreaming = m_meter.streaming();
        const MeterResponse response = m_meter.handleLine(line);
        for (const std::string& note : response.notes) m_log.note(now, note);
        if (wasStreaming && !m_meter.streaming()) m_stream.stop();
        if (response.uploadFinished && !m_options.tableOut.empty()) writeTable(now);
        queueReply(response, now);
    }
}

void Session::queueReply(const MeterResponse& response, Nanos now) {
    if (response.reply.empty() || m_options.mute) return;
    const Nanos earliest = now + std::chrono::milliseconds(m_options.replyDelayMs);
    if (m_options.ackSplit && response.acknowledgement && response.reply.size() > 1) {
        std::string text = response.reply;
        const char cr = text.back();
        text.pop_back();
        m_out.push(std::move(text), earliest);
        m_out.push(std::string(1, cr), earliest + kAckSplitGap);
        return;
    }
    m_out.push(response.reply, earliest);
}

void Session::writeTable(Nanos now) {
    std::ofstream out(m_options.tableOut, std::ios::binary | std::ios::trunc);
    out << tableText(m_meter.loader().table());
    out.close();
    m_log.note(now, (out ? "table written to " : "table NOT written to ") + m_options.tableOut);
    // Without a log nobody would hear of it otherwise.
    if (!out)
        std::fprintf(stderr, "lv3sim: cannot write the table to %s\n", m_options.tableOut.c_str());
}

void Session::tick(Nanos now) {
    const bool stalledNow = stalled(now);
    if (stalledNow != m_wasStalled) m_log.note(now, stalledNow ? "stalled" : "resumed");
    m_wasStalled = stalledNow;

    if (!m_meter.streaming()) return;
    std::string bytes = m_stream.tick();
    // A line that cannot go now is lost, as on a meter whose listener is
    // away: nothing is saved up to be sent in a burst later.
    if (bytes.empty() || !canSend(now) || !m_out.empty()) return;
    m_out.push(std::move(bytes), now);
}

void Session::setConnected(bool connected, Nanos now) {
    if (connected == m_connected) return;
    m_connected = connected;
    m_log.note(now, connected ? "port opened" : "port closed");
    if (!connected) {
        m_out.clear();
        m_splitter.reset();
    }
}

std::string Session::takeOutput(Nanos now) {
    if (!canSend(now)) {
        m_out.clear();
        return {};
    }
    return m_out.takeDue(now);
}

void Session::unwritten(std::string rest, Nanos now) {
    m_out.pushFront(std::move(rest), now);
}

bool Session::canSend(Nanos now) const {
    return m_connected && !m_options.mute && !stalled(now);
}

bool Session::stalled(Nanos now) const {
    if (!m_options.stallAfter) return false;
    const Nanos begin = secondsToNanos(*m_options.stallAfter);
    if (now < begin) return false;
    return !m_options.stallFor || now < begin + secondsToNanos(*m_options.stallFor);
}

bool Session::expired(Nanos now) const {
    return m_options.exitAfter && now >= secondsToNanos(*m_options.exitAfter);
}

}  // namespace lv::sim
