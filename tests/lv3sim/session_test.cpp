#include "lv3sim/session.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "lv3sim/frame_script.h"

namespace lv::sim {
namespace {

using std::chrono::milliseconds;

// Frames numbered in their needle field, so that a test can tell them apart.
std::string frame(int n) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "P%04X0000000\r", n & 0xFFFF);
    return buf;
}

std::unique_ptr<FrameScript> numbered(int frames, bool repeat) {
    std::vector<std::string> lines;
    for (int i = 1; i <= frames; ++i) lines.push_back(frame(i).substr(0, 12));
    return std::make_unique<FrameScript>(std::move(lines), repeat);
}

// Scripts of 4 frames played once, or of 6 played over and over.
TEST(FrameStream, LaysFaultsOverTheFrames) {
    const struct {
        StreamFaults faults;
        bool repeat;
        std::vector<std::string> ticks;
    } cases[] = {
        {{.burst = 3},
         true,
         {"", "", frame(1) + frame(2) + frame(3), "", "", frame(4) + frame(5) + frame(6), "", "",
          frame(1) + frame(2) + frame(3)}},
        {{.badEvery = 2}, true, {frame(1), "P0G020000000\r", frame(3), "P0004000000\r", frame(5)}},
        // The tail of a script played once goes out when it runs out.
        {{.burst = 3}, false, {"", "", frame(1) + frame(2) + frame(3), "", frame(4), "", ""}},
    };
    for (const auto& c : cases) {
        FrameStream s(numbered(4 + 2 * c.repeat, c.repeat), c.faults);
        std::vector<std::string> ticks;
        for (std::size_t i = 0; i < c.ticks.size(); ++i) ticks.push_back(s.tick());
        EXPECT_EQ(ticks, c.ticks);
        EXPECT_EQ(s.exhausted(), !c.repeat);
    }
}

// A session on simulated time fed frames numbered 1, 2, ...: 1 ms steps, a
// tick every 20 ms, output taken as it falls due, each write remembered.
struct Harness {
    explicit Harness(const Options& o) : session(o, numbered(1000, true), RxLog(nullptr)) {
        session.setConnected(true, now);
    }
    void advance(Nanos span) {
        for (const Nanos end = now + span; now < end;) {
            now += milliseconds(1);
            if (now % kTickPeriod == Nanos::zero()) session.tick(now);
            if (std::string out = session.takeOutput(now); !out.empty())
                writes.push_back({now, out});
        }
    }

    Nanos now{};
    Session session;
    std::vector<std::pair<Nanos, std::string>> writes;
};

// U starts one whole line each tick, at 20, 40, ... ms; Q stops them. A line
// that cannot go out is lost rather than sent in a burst later: lines 21-30
// come while the port is closed, 31-49 in the stall (0.5 s to 1.0 s).
TEST(Session, StreamsALineEachTickFromUToQAndDropsWhatNobodyCanTake) {
    Options o;
    o.stallAfter = o.stallFor = 0.5;
    Harness h(o);
    h.session.receive("U\r", h.now);
    h.advance(milliseconds(400));
    h.session.setConnected(false, h.now);
    h.advance(milliseconds(200));
    h.session.setConnected(true, h.now);
    h.advance(milliseconds(1400));
    h.session.receive("Q\r", h.now);
    h.advance(milliseconds(200));
    std::vector<std::string> expected, seen;
    for (int i = 1; i <= 100; ++i)
        if (i <= 20 || i >= 50) expected.push_back(frame(i));
    for (const auto& [at, bytes] : h.writes) {
        EXPECT_EQ(at % kTickPeriod, Nanos::zero());
        seen.push_back(bytes);
    }
    EXPECT_EQ(seen, expected);
}

}  // namespace
}  // namespace lv::sim
