#include "device/meter_start.h"

#include <gtest/gtest.h>

#include <cmath>

#include "device/version_exchange.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

using Pieces = std::vector<std::pair<double, std::string>>;  // seconds after the line, text

using Sent = std::pair<std::string, long>;  // a line and when, in ms after the start

// A meter that answers each line it is sent with pieces of text at set times.
class MeterTalk : public ::testing::Test {
protected:
    MeterTalk() {
        port.onWrite = [this](const std::string& line) {
            sent.push_back({line, std::lround((pump.now() - t0) * 1000)});
            for (const auto& [delay, text] : replies[line])
                pump.after(delay, [this, text] { port.input += text; });
        };
    }
    bool exchange(const Pieces& pieces) {
        replies["V\r"] = pieces;
        t0 = pump.now();
        return Com_Input_Vers(port, pump, info);
    }

    test::FakePump pump;
    test::ScriptedPort port;
    std::map<std::string, Pieces> replies;
    std::vector<Sent> sent;
    double t0 = pump.now();
    protocol::VersionInfo info{"OLDHW", "OC", "OLDBOOT", "OLDFW"};
};

TEST_F(MeterTalk, StartSequenceByHardwareCodeAfterReopeningThePort) {
    // One tick is 54 ms.
    const std::tuple<const char*, bool, std::vector<Sent>> cases[] = {
        {"40", false, {{"U\r", 0}}},
        {"2A", true, {{"U\r", 0}}},
        {"3A", false, {{"U\r", 540}, {"R\r", 540}}},
        {"31", false, {{"SL\r", 540}, {"U\r", 1080}, {"R\r", 1620}}},
        {"31", true, {{"SR\r", 540}, {"U\r", 1080}, {"R\r", 1620}}},
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

TEST_F(MeterTalk, ProbeQuietensTheMeterThenAsksItsVersion) {
    replies = {{"Q\r", {{0.01, "P12342A5000F\r"}}}, {"V\r", {{0.2, "V,LV40,1,2\r"}}}};
    EXPECT_TRUE(probeMeter(port, pump, info));
    EXPECT_EQ(sent, (std::vector<Sent>{{"Q\r", 540}, {"Q\r", 648}, {"V\r", 748}}))
        << "ten ticks, two more, then 0.1 s";
    EXPECT_EQ(info.code, "40");
    EXPECT_TRUE(port.isOpen());
    // A port that will not open is not a meter (a silent one: see the meter link test).
    sent.clear();
    port.openable = false;
    EXPECT_FALSE(probeMeter(port, pump, info));
    EXPECT_TRUE(sent.empty());
}

TEST_F(MeterTalk, VersionReplyIsReadUpToItsCarriageReturn) {
    port.setThreshold(6);
    EXPECT_TRUE(exchange({{0.1, " V,LV3A,1.02,2.10\rP12342A5000F\r"}}));
    EXPECT_EQ(port.thresholds.back(), 0) << "the receive event must not eat the reply";
    EXPECT_EQ(port.written, std::vector<std::string>{"V\r"});
    EXPECT_EQ(info.hardware + "/" + info.code + "/" + info.boot + "/" + info.firmware,
              "LV3A/3A/1.02/2.10");
    EXPECT_EQ(port.input, "P12342A5000F\r") << "nothing after the reply is consumed";
    EXPECT_NEAR(pump.now() - t0, 0.5, 1e-9) << "a waiting reply is read at once after 0.5 s";
}

TEST_F(MeterTalk, VersionReplyCountsOnlyWhatArrivesWithinTheWindow) {
    // Pieces, accepted, code after, seconds taken (0.5 s wait + at most 0.2 s collecting).
    const std::tuple<Pieces, bool, const char*, double> cases[] = {
        {{{0.45, "V,LV4"}, {0.60, "0,1,2"}, {0.68, "\r"}}, true, "40", 0.68},
        {{{0.2, "V,LV2A,7,8"}}, true, "2A", 0.7},     // no return: ends at the deadline
        {{{0.1, "V,lv3A,1,2\r"}}, false, "OC", 0.5},  // lower case dropped before the test
        {{{0.1, "Q,LV40,1,2\r"}}, false, "OC", 0.5},
        {{}, false, "OC", 0.7},
        {{{0.75, "V,LV40,1,2\r"}}, false, "OC", 0.7}};
    for (const auto& [pieces, ok, code, seconds] : cases) {
        port.input.clear();
        info.code = "OC";
        EXPECT_EQ(exchange(pieces), ok) << seconds;
        EXPECT_EQ(info.code, code) << seconds;
        EXPECT_NEAR(pump.now() - t0, seconds, 0.002);
        pump.wait(1.0);  // let a late reply land before the next case
    }
    port.input.clear();
    pump.wait(86399.4 - pump.now());  // a window that starts at 23:59:59.9 survives midnight
    EXPECT_FALSE(exchange({}));
    EXPECT_NEAR(pump.now(), 0.1, 0.002);
    // Draining throws away what arrives for its time, and only that.
    port.input = "old";
    pump.after(0.05, [&] { port.input += "during"; });
    pump.after(0.15, [&] { port.input += "after"; });
    drainInput(port, pump, 0.1);
    EXPECT_EQ(port.input, "");
    pump.wait(0.1);
    EXPECT_EQ(port.input, "after");
}

}  // namespace
}  // namespace lv
