#include "lv3sim/session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "lv3sim/frame_script.h"
#include "lv3sim/reading_generator.h"

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

TEST(FrameStream, GarbageComesBetweenWholeFrames) {
    FrameStream s(numbered(50, true), {.garbage = true, .seed = 3});
    int spoiled = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::string out = s.tick(), whole = frame(i % 50 + 1);
        ASSERT_TRUE(out.ends_with(whole)) << i;
        const std::string junk = out.substr(0, out.size() - whole.size());
        EXPECT_EQ(junk.find_first_of("\r\n"), std::string::npos);
        spoiled += !junk.empty();
    }
    EXPECT_GT(spoiled, 10);
    EXPECT_LT(spoiled, 100);
}

// Ten minutes of frames: each decodes with its fields in range and follows
// from its seed alone, the reading moves smoothly, and all a meter does turns up.
TEST(ReadingGenerator, TenMinutesOfLifelikeFramesFromTheSeed) {
    ReadingGenerator generator(7), twin(7), other(8);
    std::vector<protocol::FrameFields> f;
    int references = 0, set = 0, motion = 0, falls = 0, differ = 0, biggestBd = 0;
    for (std::size_t i = 0; i < 10 * 60 * 50; ++i) {
        const std::string line = *generator.nextLine();
        ASSERT_EQ(line, *twin.nextLine()) << "frame " << i;
        differ += line != *other.nextLine();
        ASSERT_TRUE(line.size() == 13 && line.back() == '\r') << line;
        const auto fields = protocol::splitFrame(std::string_view(line).substr(0, 12));
        ASSERT_TRUE(fields) << line;
        f.push_back(*fields);
        ASSERT_TRUE((f[i].letter == 'P' || f[i].letter == 'O') && f[i].knob <= 127 &&
                    f[i].bd >= 0 && (f[i].status & ~0xBu) == 0)
            << line;
        if (i == 0) continue;
        references += f[i].letter == 'O';
        set += (f[i].status & 1) > (f[i - 1].status & 1);
        motion += (f[i].status & 2) > (f[i - 1].status & 2);
        ASSERT_LT(std::abs(f[i].needle - f[i - 1].needle), 1000) << "needle jumps at " << i;
        if (i % 25 == 0) falls += f[i].needle - f[i - 25].needle <= -300;  // in half a second
        // BD grows while counting, restarts from 0 when counting begins, stays put otherwise.
        const bool counting = f[i].status & 8, wasCounting = f[i - 1].status & 8;
        ASSERT_TRUE(counting ? (wasCounting ? f[i].bd >= f[i - 1].bd : f[i].bd <= 2)
                             : (wasCounting || f[i].bd == f[i - 1].bd))
            << "BD " << f[i - 1].bd << " then " << f[i].bd << " at " << i;
        biggestBd = std::max<int>(biggestBd, f[i].bd);
    }
    EXPECT_GT(differ, 29000) << "another seed, other frames";
    EXPECT_GE(references, 9) << "\"O\" every 20 to 60 s";
    EXPECT_LE(references, 31);
    EXPECT_GE(std::min({set, motion, falls}), 5);
    EXPECT_GE(biggestBd, 10);
}

// A session on simulated time fed frames numbered 1, 2, ...: 1 ms steps, a
// tick every 20 ms, output taken as it falls due, each write remembered.
struct Harness {
    explicit Harness(const std::function<void(Options&)>& configure = {}, std::FILE* log = nullptr)
        : session(options(configure), numbered(1000, true), RxLog(log)) {
        session.setConnected(true, now);
    }
    static Options options(const std::function<void(Options&)>& configure) {
        Options o;
        if (configure) configure(o);
        return o;
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
    Harness h([](Options& o) { o.stallAfter = o.stallFor = 0.5; });
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

// Q drops a half-gathered burst: after U again the next burst is whole and new.
TEST(Session, QDropsAHalfGatheredBurst) {
    Harness h([](Options& o) { o.burst = 2; });
    h.session.receive("U\r", h.now);
    h.advance(milliseconds(20));  // frame 1 gathered
    h.session.receive("Q\rU\r", h.now);
    h.advance(milliseconds(40));
    ASSERT_EQ(h.writes.size(), 1u);
    EXPECT_EQ(h.writes[0].second, frame(2) + frame(3));
}

TEST(Session, BytePaceSpreadsALineAtTheCharacterTime) {
    Harness h([](Options& o) { o.pace = Pace::Byte; });
    h.session.receive("V\rU\r", h.now);
    h.advance(milliseconds(59));
    std::string all;
    for (const auto& [at, bytes] : h.writes) all += bytes;
    // The 17-byte reply takes 17.7 ms: the frame of the 20 ms tick still
    // fits, each byte 1.04 ms after the one before.
    EXPECT_EQ(all, "V,LV40,1.02,2.10\r" + frame(1) + frame(2));
    ASSERT_EQ(h.writes.size(), 17u + 13u + 13u);
    EXPECT_GE(h.writes[12].first - h.writes[0].first, milliseconds(12));
    EXPECT_LE(h.writes[12].first - h.writes[0].first, milliseconds(14));
}

// --ack-split splits the loader's PASS and FAIL only, not the version reply.
TEST(Session, RepliesAtOnceOrAsAskedAndNeverWhenMute) {
    const std::string v = "V,LV40,1.02,2.10\r";
    const struct {
        bool ackSplit, mute;
        int delayMs;
        std::vector<std::pair<int, std::string>> expected;  // ms after the line, bytes
    } cases[] = {
        {false, false, 0, {{1, v + "PASS\r"}}},
        {true, false, 0, {{1, v + "PASS"}, {5, "\r"}}},
        {true, false, 100, {{100, v + "PASS"}, {105, "\r"}}},
        {true, true, 0, {}},
    };
    for (const auto& c : cases) {
        Harness h([&](Options& o) {
            o.ackSplit = c.ackSplit;
            o.mute = c.mute;
            o.replyDelayMs = c.delayMs;
        });
        h.session.receive("V\rH\r\xC2\xD4\r", h.now);
        h.advance(milliseconds(300));
        std::vector<std::pair<int, std::string>> seen;
        for (const auto& [at, bytes] : h.writes)
            seen.emplace_back(std::chrono::duration_cast<milliseconds>(at).count(), bytes);
        EXPECT_EQ(seen, c.expected);
    }
}

TEST(Session, LogsEachLineAndEventExactly) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* log = ::open_memstream(&text, &size);
    {
        Harness h([](Options& o) { o.tableOut = "/dev/null"; }, log);
        h.session.receive("H\r\xC2\xD4\r", h.now);
        h.advance(milliseconds(20));
        h.session.receive(":00000001FF\r", h.now);
        h.session.setConnected(false, h.now);
    }
    std::fclose(log);
    EXPECT_EQ(std::string(text, size),
              "# 0.000000 port opened\n0.000000 H\n# 0.000000 loader entered\n"
              "0.000000 \\xC2\\xD4\n# 0.000000 loader unlocked\n0.020000 :00000001FF\n"
              "# 0.020000 upload complete\n# 0.020000 table written to /dev/null\n"
              "# 0.020000 port closed\n");
    std::free(text);
}

}  // namespace
}  // namespace lv::sim
