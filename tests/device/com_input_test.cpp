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
        EXPECT_EQ(std::tuple(st.NewData, st.DataSilent, display.calls.size()),
                  std::tuple(false, false, 0u));  // nothing complete: only the silence flag
        feed("\r" + line + "\r");                 // an unchanged digit leaves the lamp alone
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

TEST_F(ComInputTest, OnlyTheLastWaitingLineOrAReferenceIsDecodedAndTooMuchIsDropped) {
    for (auto [lagLimit, lag] : {std::pair{1, true}, {2, false}}) {  // two lines waiting
        fresh();
        st.LagLimit = static_cast<std::int16_t>(lagLimit);
        st.GoodFrames = 3;
        feed(frame(100) + frame(200));
        EXPECT_EQ(std::tuple(st.RawNeedle, st.LedColour == cfg.LED_Lag_Color, st.GoodFrames),
                  std::tuple(200, lag, lag ? 1 : 4))
            << "lag restarts the count at this frame; limit " << lagLimit;
    }
    feed(frame(500, 0, 0, 'O') + frame(700));  // a reference frame is never skipped
    EXPECT_EQ(std::pair(st.RawNeedle, st.ReferencePending), std::pair(500, true));
    st.ReferencePending = false;
    feed("");
    EXPECT_EQ(st.RawNeedle, 700);
    // Too much waiting input is dropped undecoded.
    fresh();
    test::ScriptedPort port;
    st.pendingText = "P12";
    st.GoodFrames = 4;
    st.DataSilent = true;
    std::string text;
    while (text.size() < kOverflowCount) text += frame(9999);
    port.input = text.substr(0, kOverflowCount);
    Com_Input(ctx, port);
    EXPECT_TRUE(port.input.empty() && st.pendingText.empty());
    // Lag shown; an overflow does not count as data for the watchdog.
    EXPECT_EQ(std::tuple(st.RawNeedle, st.GoodFrames, st.LedColour, st.DataSilent),
              std::tuple(0, 0, cfg.LED_Lag_Color, true));
    port.input = text.substr(0, kOverflowCount - 1);  // one character less is decoded
    Com_Input(ctx, port);
    EXPECT_EQ(std::pair(st.RawNeedle, st.DataSilent), std::pair(9999, false));
}

// A bad frame shows Input Error and changes no reading; five good frames make the link good again.
TEST_F(ComInputTest, FiveGoodFramesMakeTheLinkGoodAgain) {
    // The knob is read before the letter is judged.
    for (auto [line, knob] : {std::pair{"P12342A5000\r", 0}, {"p12342A5000F\r", 21}}) {
        fresh();
        st.RawNeedle = 777;
        st.GoodFrames = 5;
        st.ShownStatus = "Input OK";
        st.ShownBd = "3.0";
        feed(line, 2);
        SCOPED_TRACE(line);
        EXPECT_FALSE(st.NewData);
        EXPECT_EQ(std::tuple(st.RawNeedle, st.GoodFrames, st.SensPos), std::tuple(777, 0, knob));
        EXPECT_EQ(std::tuple(st.StatusText, st.ShownStatus, st.ShownBd),
                  std::tuple("Input Error", "Input Error", ""));
        EXPECT_EQ(display.only("Mode("), Strings{"Mode(Input Error,255)"}) << "shown once";
        EXPECT_EQ(display.only("LED("), Strings(2, lamp(cfg.LED_Lag_Color))) << "drawn each time";
    }
    st.RunMode = kRunRecording;
    feed(frame(1000), 4);
    EXPECT_EQ(st.ShownStatus, "Input Error");
    feed(frame(1000));
    EXPECT_EQ(display.only("Mode("), (Strings{"Mode(Input Error,255)", "Mode(Recording,0)"}));
    EXPECT_EQ(st.LedColour, cfg.Dial_Color) << "the lag lamp goes off on recovery";
}

TEST_F(ComInputTest, TheRecorderIsFedOnlyWhileRecording) {
    feed(frame(1) + frame(2));
    EXPECT_EQ(std::tuple(tap.counted, tap.resets, tap.taken.size()),
              std::tuple(0, 1, std::size_t{0}));
    st.RunMode = kRunRecording;
    feed(frame(3, 0, 25) + frame(4, 0, 26) + frame(5, 0, 27, 'O'));
    // Skipped lines still count for the recorder's time.
    EXPECT_EQ(std::pair(tap.counted, tap.shown), std::pair(3, 1));
    EXPECT_EQ(tap.taken, (std::vector<std::pair<int, int>>{{'O', 27}}));
    feed("\r");  // a bad frame is counted but not recorded
    EXPECT_EQ(std::pair(tap.counted, tap.taken.size()), std::pair(4, std::size_t{1}));
}

}  // namespace
}  // namespace lv
