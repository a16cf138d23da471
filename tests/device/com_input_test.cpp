#include <gtest/gtest.h>

#include "device/com_input.h"
#include "device/protocol.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

using Strings = std::vector<std::string>;

std::string frame(std::uint16_t needle, std::uint8_t status = 0, std::int16_t bd = 0,
                  char letter = 'P') {
    return protocol::encodeFrame({letter, needle, 0, status, bd});
}

struct TapLog : RecorderTap {
    void countFrame() override { ++counted; }
    void showElapsed() override { ++shown; }
    void resetElapsed() override { ++resets; }
    void takeFrame(int letter, int bd) override { taken.push_back({letter, bd}); }
    int counted = 0, shown = 0, resets = 0;
    std::vector<std::pair<int, int>> taken;
};

class ComInputTest : public ::testing::Test {
protected:
    ComInputTest() { fresh(); }
    void fresh() {  // a live meter, nothing shown yet
        st = MeterState{};
        st.RunMode = kRunLive;
        st.PortNumber = 1;
        display.clear();
    }
    void feed(const std::string& text, int times = 1) {
        for (int i = 0; i < times; ++i) comInputText(ctx, text);
    }
    std::string lamp(Colour c) const { return "LED(" + std::to_string(c) + ")"; }

    MeterState st;
    Settings cfg;
    test::RecordingDisplay display;
    TapLog tap;
    LiveContext ctx{st, cfg, display, tap};
};

// Status digit: bit 0 the SET lamp, bit 1 body motion, bit 2 no lamp, bit 3 BD counting.
TEST_F(ComInputTest, DecodesEveryFieldOfAFrameOnceItsReturnArrives) {
    const Colour off = cfg.Dial_Color, set = cfg.LED_Set_Color, bm = cfg.LED_BM_Color;
    const std::tuple<char, std::vector<Colour>, bool> cases[] = {
        {'5', {off, set}, false}, {'A', {off, bm}, true}, {'3', {off, set, bm}, false}};
    for (const auto& [digit, lamps, counting] : cases) {
        fresh();
        st.NewData = st.DataSilent = true;
        const std::string line = std::string("P12342A") + digit + "000F";
        feed(line);
        EXPECT_FALSE(st.NewData) << "nothing complete changes only the silence flag";
        EXPECT_FALSE(st.DataSilent);
        EXPECT_TRUE(display.calls.empty());
        feed("\r" + line + "\r");  // an unchanged digit leaves the lamp alone
        EXPECT_TRUE(st.NewData);
        EXPECT_EQ(std::tuple(st.RawNeedle, st.SensPos, st.StatusFlags, st.BdValue, st.BdQuarter),
                  std::tuple(4660, 21, std::stoi(std::string(1, digit), nullptr, 16), 15, 60));
        Strings expected;
        for (Colour c : lamps) expected.push_back(lamp(c));
        EXPECT_EQ(display.only("LED("), expected) << digit;
        EXPECT_EQ(display.only("Knob("), Strings{"Knob(21)"});
        EXPECT_EQ(st.BdCounting, counting) << digit;
        EXPECT_TRUE(counting || st.ShownBd == "1.5") << st.ShownBd;
    }
}

TEST_F(ComInputTest, OnlyTheLastWaitingLineOrAReferenceIsDecodedAndLagFollowsTheLimit) {
    for (auto [waiting, lagLimit, lag] : {std::tuple{2, 1, true}, {2, 2, false}, {1, 1, false}}) {
        fresh();
        st.LagLimit = static_cast<std::int16_t>(lagLimit);
        st.GoodFrames = 3;
        std::string text;
        for (int i = 1; i <= waiting; ++i) text += frame(static_cast<std::uint16_t>(100 * i));
        feed(text);
        SCOPED_TRACE(waiting);
        EXPECT_EQ(st.RawNeedle, 100 * waiting);
        EXPECT_EQ(st.LedColour == cfg.LED_Lag_Color, lag);
        EXPECT_EQ(st.GoodFrames, lag ? 1 : 4) << "lag restarts the count at this frame";
        EXPECT_TRUE(st.pendingText.empty());
    }
    feed(frame(500, 0, 0, 'O') + frame(700));  // a reference frame is never skipped
    EXPECT_EQ(st.RawNeedle, 500);
    EXPECT_TRUE(st.ReferencePending);
    st.ReferencePending = false;
    feed("");
    EXPECT_EQ(st.RawNeedle, 700);
}

TEST_F(ComInputTest, FiveGoodFramesMakeTheLinkGoodAgain) {
    for (auto [mode, status] : {std::pair{kRunLive, "Input OK"}, {kRunRecording, "Recording"}}) {
        fresh();
        st.RunMode = mode;
        st.LedColour = cfg.LED_Lag_Color;
        feed(frame(1000), 4);
        EXPECT_TRUE(display.only("Mode(").empty());
        feed(frame(1000), 2);
        EXPECT_EQ(display.only("Mode("), Strings{std::string("Mode(") + status + ",0)"});
        EXPECT_EQ(st.LedColour, cfg.Dial_Color) << "the lag lamp goes off on recovery";
    }
    st.ShownStatus = "Input Error";  // as the link watchdog does: five more are needed
    feed(frame(1000), 5);
    EXPECT_EQ(st.ShownStatus, "Input Error");
    feed(frame(1000));
    EXPECT_EQ(st.ShownStatus, "Recording");
}

TEST_F(ComInputTest, BadFramesShowInputErrorAndChangeNoReading) {
    // The knob is read before the letter is judged.
    for (auto [line, knob] : {std::pair{"P12342A5000\r", 0}, {"p12342A5000F\r", 21}}) {
        fresh();
        st.RawNeedle = 777;
        st.GoodFrames = 5;
        st.ShownStatus = "Input OK";
        st.ShownBd = "3.0";
        st.LedColour = cfg.LED_Lag_Color;
        feed(line, 2);
        SCOPED_TRACE(line);
        EXPECT_FALSE(st.NewData);
        EXPECT_EQ(std::tuple(st.RawNeedle, st.GoodFrames, st.SensPos), std::tuple(777, 0, knob));
        EXPECT_EQ(std::tuple(st.StatusText, st.ShownStatus, st.ShownBd),
                  std::tuple("Input Error", "Input Error", ""));
        EXPECT_EQ(display.only("Mode("), Strings{"Mode(Input Error,255)"}) << "shown once";
        EXPECT_EQ(display.only("LED("), Strings(2, lamp(cfg.LED_Lag_Color))) << "drawn each time";
    }
}

TEST_F(ComInputTest, TooMuchWaitingInputIsDroppedUndecodedAndNothingPilesUp) {
    test::ScriptedPort port;
    st.pendingText = "P12";
    st.GoodFrames = 4;
    st.DataSilent = true;
    std::string text;
    while (text.size() < kOverflowCount) text += frame(9999);
    port.input = text.substr(0, kOverflowCount);
    Com_Input(ctx, port);
    EXPECT_EQ(port.discards, 1);
    EXPECT_TRUE(port.input.empty() && st.pendingText.empty());
    EXPECT_EQ(std::pair(st.RawNeedle, st.GoodFrames), std::pair(0, 0));
    EXPECT_EQ(st.LedColour, cfg.LED_Lag_Color);
    EXPECT_TRUE(st.DataSilent) << "an overflow does not count as data for the watchdog";
    port.input = text.substr(0, kOverflowCount - 1);  // one character less is decoded
    Com_Input(ctx, port);
    EXPECT_EQ(st.RawNeedle, 9999);
    EXPECT_FALSE(st.DataSilent);
    feed(std::string(50, 'Z'), 1000);  // endless text without returns does not pile up
    EXPECT_LE(st.pendingText.size(), 300u);
    feed("\r" + frame(1234));
    EXPECT_EQ(st.RawNeedle, 1234);
}

TEST_F(ComInputTest, TheRecorderIsFedOnlyWhileRecording) {
    feed(frame(1) + frame(2));
    EXPECT_EQ(std::tuple(tap.counted, tap.resets, tap.taken.size()),
              std::tuple(0, 1, std::size_t{0}));
    st.RunMode = kRunRecording;
    feed(frame(3, 0, 25) + frame(4, 0, 26) + frame(5, 0, 27, 'O'));
    EXPECT_EQ(tap.counted, 3) << "skipped lines still count for the recorder's time";
    EXPECT_EQ(tap.shown, 1);
    EXPECT_EQ(tap.taken, (std::vector<std::pair<int, int>>{{'O', 27}}));
    feed("\r");  // a bad frame is counted but not recorded
    EXPECT_EQ(std::pair(tap.counted, tap.taken.size()), std::pair(4, std::size_t{1}));
}

}  // namespace
}  // namespace lv
