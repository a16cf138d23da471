#include <gtest/gtest.h>

#include "device/com_input.h"
#include "device/protocol.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

using protocol::encodeFrame;
using protocol::FrameFields;

std::string frame(std::uint16_t needle, std::uint8_t knob = 0, std::uint8_t status = 0,
                  std::int16_t bd = 0, char letter = 'P') {
    return encodeFrame(FrameFields{letter, needle, knob, status, bd});
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
    ComInputTest() {
        st.RunMode = kRunLive;
        st.PortNumber = 1;
        st.LagLimit = 2;
    }
    void feed(const std::string& text) { comInputText(ctx, text); }
    void goodFrames(int n) {
        for (int i = 0; i < n; ++i) feed(frame(1000));
    }
    std::string red() const { return std::to_string(Colour{255}); }
    std::string lamp(Colour c) const { return "LED(" + std::to_string(c) + ")"; }

    MeterState st;
    Settings cfg;
    test::RecordingDisplay display;
    TapLog tap;
    LiveContext ctx{st, cfg, display, tap};
};

TEST_F(ComInputTest, DecodesEveryFieldOfAFrame) {
    feed("P12342A5000F\r");
    EXPECT_TRUE(st.NewData);
    EXPECT_EQ(st.RawNeedle, 4660);
    EXPECT_EQ(st.SensPos, 21);
    EXPECT_EQ(st.StatusFlags, 5);
    EXPECT_EQ(st.BdValue, 15);
    EXPECT_EQ(st.BdQuarter, 60);
    EXPECT_EQ(st.ShownBd, "1.5");
    EXPECT_FALSE(st.BdCounting);
    // Bit 2 is not a lamp: status 5 shows SET only.
    EXPECT_EQ(display.only("LED("),
              (std::vector<std::string>{lamp(cfg.Dial_Color), lamp(cfg.LED_Set_Color)}));
    EXPECT_EQ(display.only("Knob("), std::vector<std::string>{"Knob(21)"});
}

TEST_F(ComInputTest, OnlyTheLastWaitingLineIsDecodedAndLagFollowsTheLimit) {
    struct Case {
        int waiting;
        int lagLimit;
        bool lag;
    };
    for (const Case c : {Case{2, 1, true}, Case{2, 2, false}, Case{6, 5, true}, Case{5, 5, false},
                         Case{1, 1, false}}) {
        MeterState fresh;
        fresh.RunMode = kRunLive;
        fresh.LagLimit = c.lagLimit;
        fresh.GoodFrames = 3;
        test::RecordingDisplay d;
        LiveContext x{fresh, cfg, d, tap};
        std::string text;
        for (int i = 1; i <= c.waiting; ++i) text += frame(static_cast<std::uint16_t>(100 * i));
        comInputText(x, text);
        SCOPED_TRACE(c.waiting);
        EXPECT_EQ(fresh.RawNeedle, 100 * c.waiting);
        EXPECT_EQ(fresh.LedColour == cfg.LED_Lag_Color, c.lag);
        // Lag restarts the count; this frame is then the first good one.
        EXPECT_EQ(fresh.GoodFrames, c.lag ? 1 : 4);
        EXPECT_TRUE(fresh.pendingText.empty());
    }
}

TEST_F(ComInputTest, AReferenceFrameIsNeverSkippedForALaterOne) {
    feed(frame(500, 0, 0, 0, 'O') + frame(700));
    EXPECT_EQ(st.RawNeedle, 500);
    EXPECT_TRUE(st.ReferencePending);
    EXPECT_EQ(st.pendingText, frame(700));
    st.ReferencePending = false;
    feed("");
    EXPECT_EQ(st.RawNeedle, 700);
    EXPECT_FALSE(st.ReferencePending);
}

TEST_F(ComInputTest, APartLineWaitsForItsEnd) {
    const std::string f = frame(4242);
    feed(f.substr(0, 5));
    EXPECT_FALSE(st.NewData);
    EXPECT_EQ(st.RawNeedle, 0);
    feed(f.substr(5));
    EXPECT_TRUE(st.NewData);
    EXPECT_EQ(st.RawNeedle, 4242);
}

TEST_F(ComInputTest, FiveGoodFramesMakeTheLinkGood) {
    struct Case {
        std::int16_t runMode;
        const char* status;
    };
    for (const Case c : {Case{kRunLive, "Input OK"}, Case{kRunRecording, "Recording"}}) {
        MeterState fresh;
        fresh.RunMode = c.runMode;
        fresh.LedColour = cfg.LED_Lag_Color;
        test::RecordingDisplay d;
        LiveContext x{fresh, cfg, d, tap};
        for (int i = 0; i < 4; ++i) comInputText(x, frame(1000));
        EXPECT_TRUE(d.only("Mode(").empty());
        EXPECT_EQ(fresh.LedColour, cfg.LED_Lag_Color);
        comInputText(x, frame(1000));
        EXPECT_EQ(d.only("Mode("), std::vector<std::string>{std::string("Mode(") + c.status + "," +
                                                            std::to_string(cfg.Text_Color) + ")"});
        EXPECT_EQ(fresh.LedColour, cfg.Dial_Color) << "the lag lamp goes off on recovery";
        comInputText(x, frame(1000));
        EXPECT_EQ(d.only("Mode(").size(), 1u) << "a good link is not announced again";
    }
}

TEST_F(ComInputTest, BadFramesShowInputErrorAndChangeNoReading) {
    struct Case {
        const char* name;
        std::string line;
        bool knobRead;  // the knob is read before the letter is judged
    };
    const Case cases[] = {
        {"one short", "P12342A5000\r", false},
        {"one long", "P12342A5000F0\r", false},
        {"empty", "\r", false},
        {"letter", "X12342A5000F\r", true},
        {"lower-case letter", "p12342A5000F\r", true},
        {"non-hex needle", "P12G42A5000F\r", false},
        {"non-hex knob", "P1234 A5000F\r", false},
        {"non-hex bd", "P12342A500-F\r", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MeterState fresh;
        fresh.RunMode = kRunLive;
        fresh.RawNeedle = 777;
        fresh.GoodFrames = 5;
        fresh.ShownStatus = "Input OK";
        fresh.ShownBd = "3.0";
        fresh.LedColour = cfg.LED_Lag_Color;
        test::RecordingDisplay d;
        LiveContext x{fresh, cfg, d, tap};
        comInputText(x, c.line);
        EXPECT_FALSE(fresh.NewData);
        EXPECT_EQ(fresh.RawNeedle, 777);
        EXPECT_EQ(fresh.GoodFrames, 0);
        EXPECT_EQ(fresh.StatusText, "Input Error");
        EXPECT_EQ(fresh.ShownStatus, "Input Error");
        EXPECT_EQ(fresh.ShownBd, "");
        EXPECT_EQ(d.only("Mode("), std::vector<std::string>{"Mode(Input Error," + red() + ")"});
        // The lag colour is drawn even though it already shows.
        EXPECT_EQ(d.only("LED("), std::vector<std::string>{lamp(cfg.LED_Lag_Color)});
        EXPECT_EQ(fresh.SensPos, c.knobRead ? 21 : 0);
    }
}

TEST_F(ComInputTest, InputErrorIsNotRepeatedOnTheStatusLine) {
    feed("bad\r");
    feed("bad\r");
    EXPECT_EQ(display.only("Mode(").size(), 1u);
    EXPECT_EQ(display.only("LED(").size(), 2u);
}

TEST_F(ComInputTest, AnErrorDeclaredElsewhereNeedsFiveMoreGoodFrames) {
    goodFrames(5);
    ASSERT_EQ(st.ShownStatus, "Input OK");
    st.ShownStatus = "Input Error";  // as the link watchdog does
    feed(frame(1000));
    EXPECT_EQ(st.GoodFrames, 0);
    goodFrames(4);
    EXPECT_EQ(st.ShownStatus, "Input Error");
    goodFrames(1);
    EXPECT_EQ(st.ShownStatus, "Input OK");
}

TEST_F(ComInputTest, TooMuchWaitingInputIsDroppedUndecoded) {
    test::ScriptedPort port;
    st.pendingText = "P12";
    st.GoodFrames = 4;
    st.DataSilent = true;
    std::string text;
    while (text.size() < kOverflowCount) text += frame(9999);
    port.input = text.substr(0, kOverflowCount);
    Com_Input(ctx, port);
    EXPECT_EQ(port.discards, 1);
    EXPECT_TRUE(port.input.empty());
    EXPECT_TRUE(st.pendingText.empty());
    EXPECT_EQ(st.RawNeedle, 0);
    EXPECT_EQ(st.GoodFrames, 0);
    EXPECT_EQ(st.LedColour, cfg.LED_Lag_Color);
    EXPECT_TRUE(st.DataSilent) << "an overflow does not count as data for the watchdog";
    Com_Input(ctx, port);
    EXPECT_EQ(display.only("LED(").size(), 1u) << "the lag lamp is not redrawn";

    // One character less is decoded as usual.
    port.input = text.substr(0, kOverflowCount - 1);
    Com_Input(ctx, port);
    EXPECT_EQ(st.RawNeedle, 9999);
    EXPECT_FALSE(st.DataSilent);
}

TEST_F(ComInputTest, StatusDigitDrivesLampAndBdCounting) {
    struct Case {
        std::uint8_t status;
        std::vector<Colour> lamps;
        bool counting;
    };
    const Case cases[] = {
        {1, {cfg.Dial_Color, cfg.LED_Set_Color}, false},
        {2, {cfg.Dial_Color, cfg.LED_BM_Color}, false},
        {3, {cfg.Dial_Color, cfg.LED_Set_Color, cfg.LED_BM_Color}, false},
        {8, {cfg.Dial_Color}, true},
        {0xB, {cfg.Dial_Color, cfg.LED_Set_Color, cfg.LED_BM_Color}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int{c.status});
        MeterState fresh;
        fresh.RunMode = kRunLive;
        test::RecordingDisplay d;
        LiveContext x{fresh, cfg, d, tap};
        comInputText(x, frame(1000, 0, c.status));
        std::vector<std::string> expected;
        for (Colour col : c.lamps) expected.push_back(lamp(col));
        EXPECT_EQ(d.only("LED("), expected);
        EXPECT_EQ(fresh.LedColour, c.lamps.back());
        EXPECT_EQ(fresh.BdCounting, c.counting);
        d.clear();
        comInputText(x, frame(1000, 0, c.status));
        EXPECT_TRUE(d.only("LED(").empty()) << "an unchanged digit leaves the lamp alone";
    }
}

TEST_F(ComInputTest, BdTextsAndTheirRedraws) {
    struct Case {
        std::uint16_t raw;
        const char* text;
    };
    for (const Case c : {Case{15, "1.5"}, Case{999, "99.9"}, Case{1000, "100"}, Case{0, "0.0"},
                         Case{1234, "123"}, Case{0xFFFB, "-0.5"}}) {
        SCOPED_TRACE(c.text);
        MeterState fresh;
        fresh.RunMode = kRunLive;
        fresh.ShownBd = "none";
        test::RecordingDisplay d;
        LiveContext x{fresh, cfg, d, tap};
        comInputText(x, frame(1000, 0, 0, static_cast<std::int16_t>(c.raw)));
        EXPECT_EQ(fresh.ShownBd, c.text);
        EXPECT_EQ(fresh.BdQuarter, 4 * static_cast<std::int16_t>(c.raw));
        EXPECT_EQ(d.only("Bd("), std::vector<std::string>{std::string("Bd(") + c.text + ")"});
        comInputText(x, frame(1000, 0, 0, static_cast<std::int16_t>(c.raw)));
        EXPECT_EQ(d.only("Bd(").size(), 1u);
    }
}

TEST_F(ComInputTest, TheRecorderIsFedOnlyWhileRecording) {
    feed(frame(1) + frame(2));
    EXPECT_EQ(tap.counted, 0);
    EXPECT_EQ(tap.resets, 1);
    EXPECT_TRUE(tap.taken.empty());

    st.RunMode = kRunRecording;
    feed(frame(3, 0, 0, 25) + frame(4, 0, 0, 26) + frame(5, 0, 0, 27, 'O'));
    EXPECT_EQ(tap.counted, 3) << "skipped lines still count for the recorder's time";
    EXPECT_EQ(tap.shown, 1);
    ASSERT_EQ(tap.taken.size(), 1u);
    EXPECT_EQ(tap.taken[0], (std::pair<int, int>{'O', 27}));

    feed("\r");  // a bad frame is counted but not recorded
    EXPECT_EQ(tap.counted, 4);
    EXPECT_EQ(tap.taken.size(), 1u);
}

TEST_F(ComInputTest, EndlessTextWithoutReturnsDoesNotPileUp) {
    const std::string noise(50, 'Z');
    for (int i = 0; i < 1000; ++i) feed(noise);
    EXPECT_LE(st.pendingText.size(), 300u);
    // A frame that follows the noise is still read, once the noise is cut off.
    feed("\r" + frame(1234));
    EXPECT_EQ(st.RawNeedle, 1234);
}

TEST_F(ComInputTest, NothingCompleteChangesOnlyTheSilenceFlag) {
    st.NewData = true;
    st.DataSilent = true;
    feed("P1234");
    EXPECT_FALSE(st.NewData);
    EXPECT_FALSE(st.DataSilent);
    EXPECT_EQ(tap.resets, 0);
    EXPECT_TRUE(display.calls.empty());
}

}  // namespace
}  // namespace lv
