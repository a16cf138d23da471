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
        port.onWrite = [this](const std::string& line) {
            sent.push_back({line, pump.now() - t0});
            if (line == "Q\r") pump.after(0.01, [this] { port.input += "P12342A5000F\r"; });
            if (line == "V\r") pump.after(0.2, [this] { port.input += "V,LV40,1,2\r"; });
        };
    }
    test::FakePump pump;
    test::ScriptedPort port;
    std::vector<Sent> sent;
    double t0 = pump.now();
};

TEST_F(MeterStartTest, StartSequenceByHardwareCodeAfterReopeningThePort) {
    constexpr double tick = 0.054;
    const std::tuple<const char*, bool, std::vector<Sent>> cases[] = {
        {"40", false, {{"U\r", 0}}},
        {"2A", true, {{"U\r", 0}}},
        {"3A", false, {{"U\r", 10 * tick}, {"R\r", 10 * tick}}},
        {"31", false, {{"SL\r", 10 * tick}, {"U\r", 20 * tick}, {"R\r", 30 * tick}}},
        {"31", true, {{"SR\r", 10 * tick}, {"U\r", 20 * tick}, {"R\r", 30 * tick}}},
        {"99", false, {}}};  // unknown: nothing sent, the port left closed
    for (const auto& [code, remote, expected] : cases) {
        SCOPED_TRACE(std::string(code) + (remote ? " remote" : " local"));
        sent.clear();
        t0 = pump.now();
        port.open();
        EXPECT_EQ(startMeter(port, pump, code, remote), !expected.empty());
        EXPECT_EQ(sent, expected);
        EXPECT_EQ(port.isOpen(), !expected.empty());
        if (!expected.empty()) {
            EXPECT_EQ(port.events.at(port.events.size() - expected.size() - 2), "close");
        }
    }
}

TEST_F(MeterStartTest, ProbeQuietensTheMeterThenAsksItsVersion) {
    protocol::VersionInfo info;
    EXPECT_TRUE(probeMeter(port, pump, info));
    constexpr double q1 = 10 * 0.054, q2 = q1 + 2 * 0.054, v = q2 + 0.1;
    EXPECT_EQ(sent, (std::vector<Sent>{{"Q\r", q1}, {"Q\r", q2}, {"V\r", v}}));
    EXPECT_EQ(info.code, "40");
    EXPECT_TRUE(port.isOpen());
    // A port that will not open is not a meter (a silent one: see the meter link test).
    sent.clear();
    port.openable = false;
    EXPECT_FALSE(probeMeter(port, pump, info));
    EXPECT_TRUE(sent.empty());
}

}  // namespace
}  // namespace lv
