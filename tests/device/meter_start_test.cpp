#include <gtest/gtest.h>

#include <cmath>

#include "device/meter_start.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

struct Sent {
    std::string line;
    double at;  // seconds after the start of the sequence
    bool operator==(const Sent& o) const { return line == o.line && std::abs(at - o.at) < 1e-6; }
};

void PrintTo(const Sent& s, std::ostream* os) {
    *os << s.line.substr(0, s.line.size() - 1) << "@" << s.at;
}

class MeterStartTest : public ::testing::Test {
protected:
    MeterStartTest() {
        t0 = pump.now();
        port.onWrite = [this](const std::string& line) { sent.push_back({line, pump.now() - t0}); };
    }
    test::FakePump pump;
    test::ScriptedPort port;
    std::vector<Sent> sent;
    double t0;
};

TEST_F(MeterStartTest, StartSequenceByHardwareCode) {
    constexpr double tick = 0.054;
    struct Case {
        const char* code;
        bool remote;
        std::vector<Sent> expected;
    };
    const Case cases[] = {
        {"40", false, {{"U\r", 0}}},
        {"2A", true, {{"U\r", 0}}},
        {"3A", false, {{"U\r", 10 * tick}, {"R\r", 10 * tick}}},
        {"31", false, {{"SL\r", 10 * tick}, {"U\r", 20 * tick}, {"R\r", 30 * tick}}},
        {"31", true, {{"SR\r", 10 * tick}, {"U\r", 20 * tick}, {"R\r", 30 * tick}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.code) + (c.remote ? " remote" : " local"));
        sent.clear();
        t0 = pump.now();
        port.open();
        EXPECT_TRUE(startMeter(port, pump, c.code, c.remote));
        EXPECT_EQ(sent, c.expected);
        EXPECT_TRUE(port.isOpen());
        EXPECT_EQ(port.events.at(port.events.size() - c.expected.size() - 2), "close")
            << "the port is always reopened first";
    }
}

TEST_F(MeterStartTest, AnUnknownCodeSendsNothingAndLeavesThePortClosed) {
    port.open();
    EXPECT_FALSE(startMeter(port, pump, "99", false));
    EXPECT_TRUE(sent.empty());
    EXPECT_FALSE(port.isOpen());
}

TEST_F(MeterStartTest, ProbeQuietensTheMeterThenAsksItsVersion) {
    port.onWrite = [this](const std::string& line) {
        sent.push_back({line, pump.now() - t0});
        if (line == "Q\r") pump.after(0.01, [this] { port.input += "P12342A5000F\r"; });
        if (line == "V\r") pump.after(0.2, [this] { port.input += "V,LV40,1,2\r"; });
    };
    protocol::VersionInfo info;
    EXPECT_TRUE(probeMeter(port, pump, info));
    constexpr double q1 = 10 * 0.054, q2 = q1 + 2 * 0.054, v = q2 + 0.1;
    EXPECT_EQ(sent, (std::vector<Sent>{{"Q\r", q1}, {"Q\r", q2}, {"V\r", v}}));
    EXPECT_EQ(info.code, "40");
    EXPECT_TRUE(port.isOpen());
}

TEST_F(MeterStartTest, ASilentPortIsClosedAgain) {
    protocol::VersionInfo info;
    EXPECT_FALSE(probeMeter(port, pump, info));
    EXPECT_FALSE(port.isOpen());
    EXPECT_EQ(sent.size(), 3u);
}

TEST_F(MeterStartTest, APortThatWillNotOpenIsNotAMeter) {
    port.openable = false;
    protocol::VersionInfo info;
    EXPECT_FALSE(probeMeter(port, pump, info));
    EXPECT_TRUE(sent.empty());
}

}  // namespace
}  // namespace lv
