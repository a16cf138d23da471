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

// The commands themselves by hardware code are in the port search's test; here their timing.
TEST_F(MeterTalk, StartSequenceWaitsTenTicksBetweenCommands) {
    const std::tuple<const char*, std::vector<Sent>> cases[] = {
        {"3A", {{"U\r", 540}, {"R\r", 540}}},
        {"31", {{"SR\r", 540}, {"U\r", 1080}, {"R\r", 1620}}}};
    for (const auto& [code, expected] : cases) {
        sent.clear();
        t0 = pump.now();
        EXPECT_TRUE(startMeter(port, pump, code, true));
        EXPECT_EQ(sent, expected) << code;
    }
}

// The reply is read up to its CR, from what arrives within 0.5 s + at most 0.2 s collecting.
TEST_F(MeterTalk, VersionReplyCountsOnlyWhatArrivesWithinTheWindow) {
    // Pieces, accepted, code after, seconds taken, what is left waiting.
    const std::tuple<Pieces, bool, const char*, double, const char*> cases[] = {
        {{{0.1, " V,LV3A,1.02,2.10\rP12342A5000F\r"}}, true, "3A", 0.5, "P12342A5000F\r"},
        {{{0.45, "V,LV4"}, {0.60, "0,1,2"}, {0.68, "\r"}}, true, "40", 0.68, ""},
        {{{0.2, "V,LV2A,7,8"}}, true, "2A", 0.7, ""},     // no return: ends at the deadline
        {{{0.1, "V,lv3A,1,2\r"}}, false, "OC", 0.5, ""},  // lower case dropped before the test
        {{{0.75, "V,LV40,1,2\r"}}, false, "OC", 0.7, ""}};
    for (const auto& [pieces, ok, code, seconds, left] : cases) {
        port.setThreshold(6);
        port.input.clear();
        info.code = "OC";
        EXPECT_EQ(exchange(pieces), ok) << seconds;
        EXPECT_EQ(std::pair(info.code, port.input),
                  std::pair(std::string(code), std::string(left)));
        EXPECT_NEAR(pump.now() - t0, seconds, 0.002);
        EXPECT_EQ(port.threshold(), 0) << "the receive event must not eat the reply";
        pump.wait(1.0);  // let a late reply land before the next case
    }
}

}  // namespace
}  // namespace lv
