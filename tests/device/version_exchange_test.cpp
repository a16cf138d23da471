#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

#include "device/version_exchange.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

using Pieces = std::vector<std::pair<double, std::string>>;  // seconds after "V", text

class VersionExchangeTest : public ::testing::Test {
protected:
    bool exchange(const Pieces& pieces) {
        port.onWrite = [this, pieces](const std::string& line) {
            if (line != "V\r") return;
            for (const auto& [delay, text] : pieces)
                pump.after(delay, [this, text] { port.input += text; });
        };
        start = pump.now();
        return Com_Input_Vers(port, pump, info);
    }

    test::FakePump pump;
    test::ScriptedPort port;
    protocol::VersionInfo info{"OLDHW", "OC", "OLDBOOT", "OLDFW"};
    double start = 0;
};

TEST_F(VersionExchangeTest, ReadsTheReplyAndStopsAtItsCarriageReturn) {
    port.setThreshold(6);
    EXPECT_TRUE(exchange({{0.1, " V,LV3A,1.02,2.10\rP12342A5000F\r"}}));
    EXPECT_EQ(port.thresholds.back(), 0) << "the receive event must not eat the reply";
    EXPECT_EQ(port.written, std::vector<std::string>{"V\r"});
    EXPECT_EQ(info.hardware + "/" + info.code + "/" + info.boot + "/" + info.firmware,
              "LV3A/3A/1.02/2.10");
    EXPECT_EQ(port.input, "P12342A5000F\r") << "nothing after the reply is consumed";
    EXPECT_NEAR(pump.now() - start, 0.5, 1e-9) << "a waiting reply is read at once after 0.5 s";
}

TEST_F(VersionExchangeTest, OnlyWhatArrivesWithinTheWindowCounts) {
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
        EXPECT_NEAR(pump.now() - start, seconds, 0.002);
        pump.wait(1.0);  // let a late reply land before the next case
    }
}

TEST_F(VersionExchangeTest, TheCollectWindowSurvivesMidnight) {
    pump.wait(86399.4 - pump.now());  // the window starts at 23:59:59.9
    EXPECT_FALSE(exchange({}));
    EXPECT_NEAR(pump.now(), 0.1, 0.002);
}

TEST_F(VersionExchangeTest, DrainInputThrowsAwayWhatArrivesForItsTime) {
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
