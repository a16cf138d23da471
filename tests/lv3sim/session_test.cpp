#include "lv3sim/session.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>

#include "calibration/intel_hex.h"
#include "lv3sim/frame_script.h"

namespace lv::sim {
namespace {

using std::chrono::milliseconds;

std::string frame(int n) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "P%04X0000000\r", n & 0xFFFF);
    return buf;
}

// A session on simulated time fed frames numbered 1, 2, ...: 1 ms steps, a
// tick every 20 ms, output taken as it falls due, each write remembered.
struct Harness {
    explicit Harness(const std::function<void(Options&)>& configure = {}, std::FILE* log = nullptr)
        : session(options(configure), script(), RxLog(log)) {
        session.setConnected(true, now);
    }
    static Options options(const std::function<void(Options&)>& configure) {
        Options o;
        o.link = "unused";
        if (configure) configure(o);
        return o;
    }
    static std::unique_ptr<FrameSource> script() {
        std::vector<std::string> frames;
        for (int i = 1; i <= 1000; ++i) frames.push_back(frame(i).substr(0, 12));
        return std::make_unique<FrameScript>(std::move(frames), true);
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

TEST(Session, StreamsOneWholeLineEachTickBetweenUAndQ) {
    Harness h;
    h.advance(milliseconds(100));
    EXPECT_TRUE(h.writes.empty());
    h.session.receive("U\r", h.now);
    h.advance(milliseconds(1000));
    ASSERT_EQ(h.writes.size(), 50u);
    for (std::size_t i = 0; i < h.writes.size(); ++i) {
        EXPECT_EQ(h.writes[i].second, frame(static_cast<int>(i) + 1));
        EXPECT_EQ(h.writes[i].first % kTickPeriod, Nanos::zero());
    }
    h.session.receive("Q\r", h.now);
    h.advance(milliseconds(200));
    EXPECT_EQ(h.writes.size(), 50u);
}

TEST(Session, BytePaceSpreadsALineAtTheCharacterTime) {
    Harness h([](Options& o) { o.pace = Pace::Byte; });
    h.session.receive("V\rU\r", h.now);
    h.advance(milliseconds(59));
    std::string all;
    for (const auto& [at, bytes] : h.writes) {
        EXPECT_EQ(bytes.size(), 1u);
        all += bytes;
    }
    // The 17-byte reply takes 17.7 ms: the frame of the 20 ms tick still
    // fits, each byte 1.04 ms after the one before.
    EXPECT_EQ(all, "V,LV40,1.02,2.10\r" + frame(1) + frame(2));
    EXPECT_GE(h.writes[12].first - h.writes[0].first, milliseconds(12));
    EXPECT_LE(h.writes[12].first - h.writes[0].first, milliseconds(14));
}

TEST(Session, RepliesAtOnceOrAsAskedAndNeverWhenMute) {
    const struct {
        bool ackSplit;
        int delayMs;
        bool mute;
        std::vector<std::pair<int, std::string>> expected;  // ms after the line, bytes
    } cases[] = {
        {false, 0, false, {{1, "PASS\r"}}},
        {true, 0, false, {{1, "PASS"}, {5, "\r"}}},
        {true, 100, false, {{100, "PASS"}, {105, "\r"}}},
        {true, 0, true, {}},
    };
    for (const auto& c : cases) {
        Harness h([&c](Options& o) {
            o.ackSplit = c.ackSplit;
            o.replyDelayMs = c.delayMs;
            o.mute = c.mute;
        });
        h.session.receive("H\r\xC2\xD4\r", h.now);
        h.advance(milliseconds(300));
        std::vector<std::pair<int, std::string>> seen;
        for (const auto& [at, bytes] : h.writes)
            seen.emplace_back(std::chrono::duration_cast<milliseconds>(at).count(), bytes);
        EXPECT_EQ(seen, c.expected);
    }
}

TEST(Session, DropsLinesNobodyCanTakeInsteadOfBurstingThem) {
    Harness h([](Options& o) {
        o.stallAfter = 0.5;
        o.stallFor = 0.5;
    });
    h.session.receive("U\r", h.now);
    h.advance(milliseconds(400));
    h.session.setConnected(false, h.now);
    h.advance(milliseconds(200));
    h.session.setConnected(true, h.now);
    h.advance(milliseconds(1400));
    // Ticks fall at 20, 40, ... ms. Lines 21-30 come while the port is
    // closed, 31-49 in the stall (0.5 s to 1.0 s); the rest one a tick.
    std::vector<std::string> expected, seen;
    for (int i = 1; i <= 100; ++i)
        if (i <= 20 || i >= 50) expected.push_back(frame(i));
    for (const auto& w : h.writes) seen.push_back(w.second);
    EXPECT_EQ(seen, expected);
}

TEST(Session, LogsLinesAndEventsAndWritesTheUploadedTable) {
    const auto table = std::filesystem::temp_directory_path() /
                       ("lv3sim_table_" + std::to_string(::getpid()) + ".txt");
    char* logText = nullptr;
    std::size_t logSize = 0;
    std::FILE* log = ::open_memstream(&logText, &logSize);
    std::vector<std::uint8_t> bytes(16, 0);
    bytes[0] = 0x34;
    bytes[1] = 0x12;
    const std::string record = formatDataRecord(0xE000, bytes);
    {
        Harness h([&table](Options& o) { o.tableOut = table.string(); }, log);
        h.session.receive("H\r\xC2\xD4\r", h.now);
        h.advance(milliseconds(20));
        h.session.receive(record + "\r:00000001FF\r", h.now);
    }
    std::fclose(log);
    EXPECT_EQ(std::string(logText, logSize),
              "# 0.000000 port opened\n0.000000 H\n# 0.000000 loader entered\n"
              "0.000000 \\xC2\\xD4\n# 0.000000 loader unlocked\n0.020000 " +
                  record +
                  "\n0.020000 :00000001FF\n# 0.020000 upload complete\n"
                  "# 0.020000 table written to " +
                  table.string() + "\n");
    std::free(logText);
    CorrectionTable expected{};
    for (std::size_t k = 8; k < kTableEntries; ++k) expected[k] = static_cast<std::uint16_t>(k);
    expected[0] = 0x1234;
    std::ifstream in(table);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), tableText(expected));
    std::filesystem::remove(table);
}

}  // namespace
}  // namespace lv::sim
