#include <gtest/gtest.h>

#include "device/version_exchange.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

class VersionExchangeTest : public ::testing::Test {
protected:
    // The meter answers "V" with `reply` after `delay` seconds, in one piece.
    void answerWith(std::string reply, double delay) {
        port.onWrite = [this, reply, delay](const std::string& line) {
            if (line == "V\r") pump.after(delay, [this, reply] { port.input += reply; });
        };
    }
    bool exchange() {
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
    answerWith(" V,LV3A,1.02,2.10\rP12342A5000F\r", 0.1);
    EXPECT_TRUE(exchange());
    EXPECT_EQ(port.thresholds.back(), 0) << "the receive event must not eat the reply";
    EXPECT_EQ(port.written, std::vector<std::string>{"V\r"});
    EXPECT_EQ(info.hardware, "LV3A");
    EXPECT_EQ(info.code, "3A");
    EXPECT_EQ(info.boot, "1.02");
    EXPECT_EQ(info.firmware, "2.10");
    EXPECT_EQ(port.input, "P12342A5000F\r") << "nothing after the reply is consumed";
    EXPECT_NEAR(pump.now() - start, 0.5, 1e-9) << "a waiting reply is read at once after 0.5 s";
}

TEST_F(VersionExchangeTest, RepliesThatFail) {
    struct Case {
        const char* name;
        std::string reply;
        double delay;
    };
    const Case cases[] = {
        {"lower-case letters are dropped before the test", "V,lv3A,1,2\r", 0.1},
        {"no reply", "", 0},
        {"too late", "V,LV40,1,2\r", 0.75},
        {"wrong header", "Q,LV40,1,2\r", 0.1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        port.input.clear();
        info = {"OLDHW", "OC", "OLDBOOT", "OLDFW"};
        answerWith(c.reply, c.delay);
        EXPECT_FALSE(exchange());
        EXPECT_EQ(info.hardware, "OLDHW");
        EXPECT_EQ(info.code, "OC");
        EXPECT_EQ(info.boot, "OLDBOOT");
        EXPECT_LE(pump.now() - start, 0.7 + 0.002) << "gives up after 0.5 + 0.2 s";
        pump.wait(1.0);  // let a late reply land before the next case
    }
}

TEST_F(VersionExchangeTest, AReplyTricklingInWithinTheWindowCounts) {
    port.onWrite = [this](const std::string&) {
        pump.after(0.45, [this] { port.input += "V,LV4"; });
        pump.after(0.60, [this] { port.input += "0,1,2"; });
        pump.after(0.68, [this] { port.input += "\r"; });
    };
    EXPECT_TRUE(exchange());
    EXPECT_EQ(info.code, "40");
    EXPECT_NEAR(pump.now() - start, 0.68, 0.002);
}

TEST_F(VersionExchangeTest, AReplyWithoutItsReturnEndsAtTheDeadline) {
    answerWith("V,LV2A,7,8", 0.2);
    EXPECT_TRUE(exchange());
    EXPECT_EQ(info.firmware, "8");
    EXPECT_NEAR(pump.now() - start, 0.7, 0.002);
}

TEST_F(VersionExchangeTest, TheCollectWindowSurvivesMidnight) {
    // The 0.2 s collect window starts at 23:59:59.9 and ends after midnight.
    pump.wait(86399.4 - pump.now());
    EXPECT_FALSE(exchange());
    EXPECT_NEAR(pump.now(), 0.1, 0.002);
}

TEST(DrainInput, ThrowsAwayWhatArrivesForItsTime) {
    test::FakePump pump;
    test::ScriptedPort port;
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
