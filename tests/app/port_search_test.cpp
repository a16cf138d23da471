#include "app/port_search.h"

#include <gtest/gtest.h>

#include "support/device_port.h"
#include "support/fake_pump.h"
#include "support/recording_display.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

using Lines = std::vector<std::string>;

class PortSearchTest : public ::testing::Test {
protected:
    PortSearchTest() {
        settings.Text_Color = 12345;
        port.onWrite = [this](const std::string& line) {
            port.log.push_back(port.portName() + " " + line.substr(0, line.size() - 1));
            if (thresholdAtFirstWrite < 0) thresholdAtFirstWrite = port.threshold();
            if (line == "V\r" && port.portName() == meterOn)
                pump.after(0.2,
                           [this] { port.input += protocol::versionReplyLine(code, "1", "2"); });
        };
    }
    PortSearch search() {
        return PortSearch(port, pump, st, display, prompter, settings,
                          {"p1", "p2", "p3", "p4", "p5", "p6"}, "1.2.3",
                          {[this](const std::string& t) { splash.push_back(t); },
                           [this] { splash.push_back("<show>"); },
                           [this] { splash.push_back("<close>"); }, [this] { ++connected; }});
    }

    test::FakePump pump;
    test::DevicePort port;
    MeterState st;
    test::RecordingDisplay display;
    test::ScriptedPrompter prompter;
    Settings settings;
    std::string meterOn, code = "40";  // the device that answers "V", and its code
    Lines splash;
    int connected = 0, thresholdAtFirstWrite = -1;
};

// Every port opened and closed, then each one that opened probed in turn.
TEST_F(PortSearchTest, MeterOnPortFiveAfterSilentAndUnopenablePorts) {
    meterOn = "p5";
    port.unopenable = {"p2"};
    port.setThreshold(6);  // a link that was in use
    auto s = search();
    s.mnuConnectionConnect_Click();

    Lines expected{"p1 open", "p1 close", "p2 open"};
    for (const char* n : {"p3", "p4", "p5", "p6"})
        for (const char* what : {" open", " close"}) expected.push_back(n + std::string(what));
    for (const char* n : {"p1", "p3", "p4", "p5"})
        for (const char* what : {" open", " Q", " Q", " V", " close"})
            expected.push_back(n + std::string(what));
    expected.insert(expected.end(), {"p5 open", "p5 U"});
    EXPECT_EQ(port.log, expected);
    for (int n = 1; n <= 6; ++n) EXPECT_EQ(s.isAvailable(n), n != 2) << n;
    EXPECT_EQ(s.checkedPort(), 5);
    EXPECT_EQ(st.PortNumber, 5);
    EXPECT_EQ(st.RunMode, kRunLive);
    EXPECT_EQ(thresholdAtFirstWrite, 0) << "disarmed before the first probe";
    EXPECT_EQ(port.threshold(), 5);
    EXPECT_EQ(connected, 1);
    EXPECT_TRUE(prompter.asked.empty());
}

TEST_F(PortSearchTest, StartCommandsAndSensorMenuByHardwareCode) {
    const struct {
        const char* code;
        bool remote;
        Lines afterVersion;
        bool sensorMenu;
    } cases[] = {
        {"31", true, {"p1 close", "p1 open", "p1 SR", "p1 U", "p1 R"}, true},
        {"31", false, {"p1 close", "p1 open", "p1 SL", "p1 U", "p1 R"}, true},
        {"3A", true, {"p1 close", "p1 open", "p1 U", "p1 R"}, false},
        {"2A", false, {"p1 close", "p1 open", "p1 U"}, false},
        {"77", false, {"p1 close"}, false},  // found, but not started
    };
    meterOn = "p1";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.afterVersion.back());
        code = c.code;
        settings.lv3SensorMode = c.remote;
        st = MeterState{};
        st.PortNumber = 1;
        port.log.clear();
        auto s = search();
        ASSERT_TRUE(s.Check_Version());
        const auto v = std::find(port.log.begin(), port.log.end(), "p1 V");
        ASSERT_NE(v, port.log.end());
        EXPECT_EQ(Lines(v + 1, port.log.end()), c.afterVersion);
        EXPECT_EQ(s.sensorMenuShown(), c.sensorMenu);
    }
}

TEST_F(PortSearchTest, CancelGivesDemoModeRetrySearchesAgain) {
    for (const char* shown : {"Input Error", "Demo Mode"}) {
        st.RunMode = kRunLive;
        st.ShownStatus = shown;
        display.clear();
        prompter.asked.clear();
        prompter.answers = {Answer::Cancel};
        search().mnuConnectionConnect_Click();
        EXPECT_EQ(prompter.asked.size(), 1u);
        EXPECT_EQ(st.PortNumber, 0);
        EXPECT_EQ(st.RunMode, kRunNoMeter);
        EXPECT_EQ(st.ShownStatus, "Demo Mode");
        EXPECT_EQ(display.only("Mode(").size(), shown == std::string("Demo Mode") ? 0u : 1u);
        EXPECT_EQ(port.threshold(), 0) << "nothing to receive from";
    }
    EXPECT_EQ(connected, 0);

    // The adapter is plugged in while the second box is up: only a new scan finds it.
    prompter.asked.clear();
    prompter.answers = {Answer::Retry, Answer::Retry};
    port.log.clear();
    port.unopenable = {"p3"};
    meterOn = "p3";
    prompter.onAsk = [this] {
        if (prompter.asked.size() == 2) port.unopenable.clear();
    };
    search().mnuConnectionConnect_Click();
    EXPECT_EQ(prompter.asked.size(), 2u);
    EXPECT_EQ(st.PortNumber, 3);
    EXPECT_EQ(port.count("p1 V"), 3) << "each Retry searches every port again";
    EXPECT_EQ(port.count("p6 V"), 2);
}

TEST_F(PortSearchTest, StartUpTriesTheSavedPortFirst) {
    const std::string check = "Checking for Hardware", demo = "Running in Demo Mode";
    const struct {
        std::int16_t saved;
        std::string meterOn;
        std::deque<Answer> answers;
        std::int16_t portAfter, runModeAfter;
        Lines splashStart;  // without "<show>" the search did not run
    } cases[] = {
        {3, "p3", {}, 3, kRunLive, {check, "Checking Port 3 for Hardware"}},
        {3, "p1", {}, 1, kRunLive, {check, "Checking Port 3 for Hardware", "<show>"}},
        {9, "p2", {}, 2, kRunLive, {check, "<show>"}},  // saved port no longer in the list
        {0, "", {Answer::Cancel}, 0, kRunNoMeter, {demo, "<show>"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "saved " << c.saved << " meter on " << c.meterOn);
        st = MeterState{};
        st.PortNumber = c.saved;
        meterOn = c.meterOn;
        prompter.answers = c.answers;
        splash.clear();
        display.clear();
        search().findMeterAtStart();
        EXPECT_EQ(st.PortNumber, c.portAfter);
        EXPECT_EQ(st.RunMode, c.runModeAfter);
        EXPECT_EQ(st.DataSilent, c.saved != 0) << "a saved port arms the watchdog's flag";
        if (c.splashStart.back() == "<show>") splash.resize(c.splashStart.size());
        EXPECT_EQ(splash, c.splashStart);
        EXPECT_EQ(display.only("Mode("), c.saved ? Lines{} : Lines{"Mode(Demo Mode,12345)"});
    }
}

}  // namespace
}  // namespace lv
