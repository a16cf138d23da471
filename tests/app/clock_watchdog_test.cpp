#include <gtest/gtest.h>

#include "app/clock_watchdog.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

TEST(ClockWatchdog, TheClockIsDrawnOnlyWhenTheMinuteChanges) {
    MeterState st;
    test::ScriptedPort port;
    test::RecordingDisplay display;
    ClockWatchdog dog(st, port, display, {});
    for (int minute : {5, 5, 6}) dog.tmrClock_Timer({10, minute, 0, {2026, 3, 1}});
    EXPECT_EQ(display.calls,
              (std::vector<std::string>{"Clock(10,5,0,2026-3-1)", "Clock(10,6,0,2026-3-1)"}));
}

TEST(ClockWatchdog, Silence) {
    struct Case {
        std::int16_t runMode;
        int threshold;
        const char* ticks;  // per tick: 'd' data arrived before it, '.' silence
        std::string shown, shownAfter;
        int stops;
        bool silentAfter;
    };
    const Case cases[] = {
        {kRunRecording, 6, "d..", "Recording", "Input Error", 1, true},  // stopped and flagged
        {kRunLive, 5, "..", "Input OK", "Input Error", 0, true},
        {kRunLive, 6, ".d.", "Input OK", "Input OK", 0, true},           // one tick tolerated
        {kRunLive, 6, "..", "Input Error", "Input Error", 0, true},      // not redrawn
        {kRunLive, 6, "..", "Demo Mode", "Demo Mode", 0, true},          // not about the link
        {kRunRecording, 6, "...", "Recording", "Input Error", 1, true},  // count restarts
        {kRunRecording, 6, "....", "Recording", "Input Error", 2, true},
        {kRunRecording, 0, "d..", "Recording", "Recording", 0, false},  // disarmed: not watched
        {kRunPlayback, 6, "d..", "Input OK", "Input OK", 0, false},     // playback: skipped
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "mode " << c.runMode << " threshold " << c.threshold
                                          << " ticks " << c.ticks << " shown " << c.shown);
        MeterState st;
        st.RunMode = c.runMode;
        st.ShownStatus = c.shown;
        test::ScriptedPort port;
        port.setThreshold(c.threshold);
        test::RecordingDisplay display;
        int stops = 0;
        ClockWatchdog dog(st, port, display, [&] { ++stops; });
        // Nothing received since the link was armed; a receive event clears it.
        st.DataSilent = true;
        int minute = 0;
        const std::string ticks = c.ticks;
        for (char t : ticks) {
            if (t == 'd') st.DataSilent = false;
            dog.tmrClock_Timer({10, minute++, 0, {2026, 3, 1}});
        }

        EXPECT_EQ(stops, c.stops);
        EXPECT_EQ(st.ShownStatus, c.shownAfter);
        const auto modeCalls = display.only("Mode(");
        if (c.shownAfter != c.shown)
            EXPECT_EQ(modeCalls, std::vector<std::string>{"Mode(Input Error,255)"});
        else
            EXPECT_TRUE(modeCalls.empty());
        EXPECT_EQ(st.DataSilent, c.silentAfter);
        EXPECT_EQ(display.only("Clock(").size(), c.runMode == kRunPlayback ? 0 : ticks.size());
    }
}

}  // namespace
}  // namespace lv
