#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "app/port_search.h"
#include "support/fake_pump.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

// One port object whose name picks the device, as the program uses it; the
// log names the device of every open, close and command.
class DevicePort : public test::ScriptedPort {
public:
    bool open() override {
        openable = !unopenable.count(portName());
        log.push_back(portName() + " open");
        return ScriptedPort::open();
    }
    void close() override {
        if (isOpen()) log.push_back(portName() + " close");
        ScriptedPort::close();
    }
    std::set<std::string> unopenable;
    std::vector<std::string> log;
};

const std::vector<std::string> kCandidates = {"p1", "p2", "p3", "p4", "p5", "p6"};

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
        return PortSearch(port, pump, st, display, prompter, settings, kCandidates, "1.2.3",
                          {[this](const std::string& t) { splash.push_back(t); },
                           [this] { splash.push_back("<show>"); },
                           [this] { splash.push_back("<close>"); }, [this] { ++connected; }});
    }

    // What a probe of a port that does not answer does to it.
    static std::vector<std::string> silentProbe(const std::string& name) {
        return {name + " open", name + " Q", name + " Q", name + " V", name + " close"};
    }

    test::FakePump pump;
    DevicePort port;
    MeterState st;
    test::RecordingDisplay display;
    test::ScriptedPrompter prompter;
    Settings settings;
    std::string meterOn;  // the device that answers "V"
    std::string code = "40";
    std::vector<std::string> splash;
    int connected = 0;
    int thresholdAtFirstWrite = -1;
};

TEST_F(PortSearchTest, MeterOnPortFiveAfterFourSilentPorts) {
    meterOn = "p5";
    port.setThreshold(6);  // a link that was in use
    auto s = search();
    s.mnuConnectionConnect_Click();

    std::vector<std::string> expected;
    for (const auto& name : kCandidates)
        expected.insert(expected.end(), {name + " open", name + " close"});
    for (const char* name : {"p1", "p2", "p3", "p4"}) {
        const auto probe = silentProbe(name);
        expected.insert(expected.end(), probe.begin(), probe.end());
    }
    expected.insert(expected.end(),
                    {"p5 open", "p5 Q", "p5 Q", "p5 V", "p5 close", "p5 open", "p5 U"});
    EXPECT_EQ(port.log, expected);
    EXPECT_EQ(s.checkedPort(), 5);
    EXPECT_EQ(st.PortNumber, 5);
    EXPECT_EQ(st.RunMode, kRunLive);
    EXPECT_EQ(st.GoodFrames, 0);
    EXPECT_EQ(thresholdAtFirstWrite, 0) << "disarmed before the first probe";
    EXPECT_EQ(port.threshold(), 5);
    EXPECT_EQ(connected, 1);
    EXPECT_TRUE(prompter.asked.empty());
    EXPECT_EQ(splash.front(), "<show>");
    EXPECT_EQ(splash.at(5), "Checking Port 5 for Hardware");
    EXPECT_EQ(splash.back(), "<close>");
}

TEST_F(PortSearchTest, StartCommandsAndSensorMenuByHardwareCode) {
    struct Case {
        const char* code;
        bool remote;
        std::vector<std::string> afterVersion;
        bool sensorMenu;
    };
    const Case cases[] = {
        {"31", true, {"p1 close", "p1 open", "p1 SR", "p1 U", "p1 R"}, true},
        {"31", false, {"p1 close", "p1 open", "p1 SL", "p1 U", "p1 R"}, true},
        {"3A", true, {"p1 close", "p1 open", "p1 U", "p1 R"}, false},
        {"2A", false, {"p1 close", "p1 open", "p1 U"}, false},
        {"77", false, {"p1 close"}, false},  // found, but not started
    };
    meterOn = "p1";
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.code) + (c.remote ? " remote" : " local"));
        code = c.code;
        settings.lv3SensorMode = c.remote;
        st = MeterState{};
        st.PortNumber = 1;
        port.log.clear();
        auto s = search();
        ASSERT_TRUE(s.Check_Version());
        const auto v = std::find(port.log.begin(), port.log.end(), "p1 V");
        ASSERT_NE(v, port.log.end());
        EXPECT_EQ(std::vector<std::string>(v + 1, port.log.end()), c.afterVersion);
        EXPECT_EQ(s.sensorMenuShown(), c.sensorMenu);
        EXPECT_EQ(s.version().code, c.code);
    }
}

TEST_F(PortSearchTest, CancelGivesDemoMode) {
    struct Case {
        const char* shown;
        std::vector<std::string> modeCalls;
    };
    const Case cases[] = {
        {"Input Error", {"Mode(Demo Mode,12345)"}},
        {"Demo Mode", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.shown);
        st = MeterState{};
        st.RunMode = kRunLive;
        st.ShownStatus = c.shown;
        display.clear();
        splash.clear();
        prompter.asked.clear();
        prompter.answers = {Answer::Cancel};
        auto s = search();
        s.mnuConnectionConnect_Click();

        EXPECT_EQ(prompter.asked, (std::vector<test::ScriptedPrompter::Question>{
                                      {"lv Prime 1.2.3",
                                       "Check connection and Retry, or Cancel to run in demo mode.",
                                       Buttons::RetryCancel, Icon::Critical}}));
        EXPECT_EQ(st.PortNumber, 0);
        EXPECT_EQ(st.RunMode, kRunNoMeter);
        EXPECT_EQ(st.StatusText, "Demo Mode");
        EXPECT_EQ(st.ShownStatus, "Demo Mode");
        EXPECT_EQ(display.only("Mode("), c.modeCalls);
        EXPECT_EQ(port.threshold(), 0) << "nothing to receive from";
        EXPECT_EQ(connected, 0);
        ASSERT_GE(splash.size(), 3u);
        EXPECT_EQ(splash.at(splash.size() - 2), "No Hardware Detected");
    }
}

TEST_F(PortSearchTest, RetrySearchesAgainUntilTheMeterAnswers) {
    prompter.answers = {Answer::Retry, Answer::Retry};
    // The operator plugs the meter's adapter in while the second box is up:
    // only a new scan of the ports can find it.
    port.unopenable = {"p3"};
    meterOn = "p3";
    prompter.onAsk = [this] {
        if (prompter.asked.size() == 2) port.unopenable.clear();
    };
    auto s = search();
    s.mnuConnectionConnect_Click();
    EXPECT_EQ(prompter.asked.size(), 2u);
    EXPECT_EQ(st.PortNumber, 3);
    EXPECT_EQ(s.checkedPort(), 3);
    EXPECT_EQ(std::count(port.log.begin(), port.log.end(), "p1 V"), 3)
        << "each Retry searches every port again";
    EXPECT_EQ(std::count(port.log.begin(), port.log.end(), "p6 V"), 2);
}

TEST_F(PortSearchTest, PortsThatWillNotOpenAreNeverProbed) {
    port.unopenable = {"p1", "p4"};
    meterOn = "p6";
    auto s = search();
    s.mnuConnectionConnect_Click();
    for (int n = 1; n <= 6; ++n) EXPECT_EQ(s.isAvailable(n), n != 1 && n != 4) << n;
    EXPECT_EQ(std::count(port.log.begin(), port.log.end(), "p1 open"), 1);
    EXPECT_EQ(std::count(port.log.begin(), port.log.end(), "p4 Q"), 0);
    EXPECT_EQ(st.PortNumber, 6);
}

TEST_F(PortSearchTest, StartUpTriesTheSavedPortFirst) {
    struct Case {
        std::int16_t saved;
        std::string meterOn;
        std::deque<Answer> answers;
        std::int16_t portAfter, runModeAfter;
        std::vector<std::string> splashStart;  // the search shows the splash with "<show>"
    };
    const std::string check = "Checking for Hardware", demo = "Running in Demo Mode";
    const Case cases[] = {
        {3, "p3", {}, 3, kRunLive, {check, "Checking Port 3 for Hardware"}},
        {3, "p1", {}, 1, kRunLive, {check, "Checking Port 3 for Hardware", "<show>"}},
        {9, "p2", {}, 2, kRunLive, {check, "<show>"}},  // saved port no longer in the list
        {0, "", {Answer::Cancel}, 0, kRunNoMeter, {demo, "<show>"}},
        {0, "p4", {}, 4, kRunLive, {demo, "<show>"}},
    };
    for (const Case& c : cases) {
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
        ASSERT_GE(splash.size(), c.splashStart.size());
        // Without "<show>" the search must not have run at all.
        if (c.splashStart.back() == "<show>") splash.resize(c.splashStart.size());
        EXPECT_EQ(splash, c.splashStart);
        const bool demoShown = c.saved == 0;
        EXPECT_EQ(display.only("Mode("), demoShown
                                             ? std::vector<std::string>{"Mode(Demo Mode,12345)"}
                                             : std::vector<std::string>{});
        EXPECT_TRUE(prompter.answers.empty());
    }
}

TEST_F(PortSearchTest, ArmLinkOnlyWithAMeterPort) {
    for (std::int16_t portNumber : {0, 2}) {
        SCOPED_TRACE(portNumber);
        st.PortNumber = portNumber;
        st.GoodFrames = 4;
        port.setThreshold(0);
        port.input = "stale";
        search().armLink();
        EXPECT_TRUE(port.input.empty());
        EXPECT_EQ(port.threshold(), portNumber ? 5 : 0);
        EXPECT_EQ(st.GoodFrames, portNumber ? 0 : 4);
    }
}

}  // namespace
}  // namespace lv
