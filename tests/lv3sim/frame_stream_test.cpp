#include "lv3sim/frame_stream.h"

#include <gtest/gtest.h>

#include <sstream>

#include "lv3sim/frame_script.h"

namespace lv::sim {
namespace {

// Frames numbered in their needle field, so that a test can tell them apart.
std::string frame(int n) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "P%04X0000000\r", n & 0xFFFF);
    return buf;
}

FrameStream stream(int frames, bool repeat, StreamFaults faults) {
    std::vector<std::string> lines;
    for (int i = 1; i <= frames; ++i) lines.push_back(frame(i).substr(0, 12));
    return FrameStream(std::make_unique<FrameScript>(std::move(lines), repeat), faults);
}

TEST(FrameScript, ReadsFramesAsWrittenAndPlaysThemOnceOrOver) {
    std::istringstream in("# comment\nP12342A5000F\n\n \t\nO00000000000\r\n#P0\nP12 bad\n P0 \n");
    const std::vector<std::string> frames = readScript(in);
    EXPECT_EQ(frames,
              (std::vector<std::string>{"P12342A5000F", "O00000000000", "P12 bad", " P0 "}));
    for (bool repeat : {false, true}) {
        FrameScript s({"A", "B"}, repeat);
        std::string played;
        for (int i = 0; i < 5; ++i) played += s.nextLine().value_or("-");
        EXPECT_EQ(played, repeat ? "A\rB\rA\rB\rA\r" : "A\rB\r---");
    }
}

TEST(FrameStream, LaysFaultsOverTheFrames) {
    const struct {
        const char* what;
        StreamFaults faults;
        bool repeat;
        std::vector<std::string> ticks;
    } cases[] = {
        {"burst",
         {.burst = 3},
         true,
         {"", "", frame(1) + frame(2) + frame(3), "", "", frame(4) + frame(5) + frame(6)}},
        {"bad every 2",
         {.badEvery = 2},
         true,
         {frame(1), "P0G020000000\r", frame(3), "P0004000000\r", frame(5)}},
        {"script tail of a burst",
         {.burst = 3},
         false,
         {"", "", frame(1) + frame(2) + frame(3), "", frame(4), "", ""}},
    };
    for (const auto& c : cases) {
        FrameStream s = stream(4 + 2 * c.repeat, c.repeat, c.faults);
        std::vector<std::string> ticks;
        for (std::size_t i = 0; i < c.ticks.size(); ++i) ticks.push_back(s.tick());
        EXPECT_EQ(ticks, c.ticks) << c.what;
        EXPECT_EQ(s.exhausted(), !c.repeat);
    }
}

TEST(FrameStream, StoppingDropsAHalfGatheredBurst) {
    FrameStream s = stream(9, true, {.burst = 3});
    s.tick();
    s.stop();
    EXPECT_EQ(s.tick() + s.tick() + s.tick(), frame(2) + frame(3) + frame(4));
}

TEST(FrameStream, GarbageComesBetweenWholeFrames) {
    FrameStream s = stream(50, true, {.garbage = true, .seed = 3});
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

}  // namespace
}  // namespace lv::sim
