#pragma once
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "lv3sim/frame_stream.h"
#include "lv3sim/line_splitter.h"
#include "lv3sim/meter.h"
#include "lv3sim/options.h"
#include "lv3sim/output_queue.h"
#include "lv3sim/rx_log.h"

// Everything the virtual meter does between its pseudo-terminal and its
// clock, with time passed in: what was received, which 20 ms tick it is,
// whether a program holds the port, and what is to be written when. The
// serve loop only moves bytes and wakes on time.
namespace lv::sim {

inline constexpr Nanos kTickPeriod = std::chrono::milliseconds(20);
// 10 bits a character at 9600 baud.
inline constexpr Nanos kCharacterTime = std::chrono::nanoseconds(1'000'000'000 / 960);
inline constexpr Nanos kAckSplitGap = std::chrono::milliseconds(5);

class Session {
public:
    Session(const Options& options, std::unique_ptr<FrameSource> source, RxLog log);

    void receive(std::string_view bytes, Nanos now);
    void tick(Nanos now);
    void setConnected(bool connected, Nanos now);

    std::optional<Nanos> nextDue() const { return m_out.nextDue(); }
    std::string takeOutput(Nanos now);
    // Part of what takeOutput gave could not be written: it goes first next time.
    void unwritten(std::string rest, Nanos now);

    bool connected() const { return m_connected; }
    bool stalled(Nanos now) const;
    bool expired(Nanos now) const;
    const Meter& meter() const { return m_meter; }

private:
    bool canSend(Nanos now) const;
    void queueReply(const MeterResponse& response, Nanos now);
    void writeTable(Nanos now);

    Options m_options;
    RxLog m_log;
    LineSplitter m_splitter;
    Meter m_meter;
    FrameStream m_stream;
    OutputQueue m_out;
    bool m_connected = false;
    bool m_wasStalled = false;
};

}  // namespace lv::sim
