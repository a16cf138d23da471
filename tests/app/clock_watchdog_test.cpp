#include "app/clock_watchdog.h"

#include <gtest/gtest.h>

#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

// Per tick in `ticks`: 'd' data arrived before it, '.' silence, '=' the same minute again.
TEST(ClockWatchdog, ClockAndSilence) {
    const struct {
        std::int16_t runMode;
        int threshold;
        std::string ticks, shown, shownAfter;
        int stops, clocks;
    } cases[] = {
        {kRunRecording, 6, "d..", "Recording", "Input Error", 1, 3},  // stopped and flagged
        {kRunLive, 5, "..", "Input OK", "Input Error", 0, 2},
        {kRunLive, 6, ".d.", "Input OK", "Input OK", 0, 3},            // one silent tick tolerated
        {kRunLive, 6, "..", "Input Error", "Input Error", 0, 2},       // not redrawn
        {kRunLive, 6, "..", "Demo Mode", "Demo Mode", 0, 2},           // not about the link
        {kRunRecording, 6, "....", "Recording", "Input Error", 2, 4},  // the count restarts
        {kRunRecording, 0, "d..", "Recording", "Recording", 0, 3},     // disarmed: not watched
        {kRunPlayback, 6, "d..", "Input OK", "Input OK", 0, 0},
        {kRunLive, 0, "d=.", "Input OK", "Input OK", 0, 2},  // drawn when the minute changes
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        MeterState st;
        st.RunMode = c.runMode;
        st.ShownStatus = c.shown;
        st.DataSilent = true;  // nothing received since the link was armed
        test::ScriptedPort port;
        port.setThreshold(c.threshold);
        test::RecordingDisplay display;
        int stops = 0, minute = 0;
        ClockWatchdog dog(st, port, display, [&] { ++stops; });
        for (char t : c.ticks) {
            if (t == 'd') st.DataSilent = false;
            dog.tmrClock_Timer({10, t == '=' ? minute : ++minute, 0, {2026, 3, 1}});
        }
        EXPECT_EQ(stops, c.stops);
        EXPECT_EQ(st.ShownStatus, c.shownAfter);
        EXPECT_EQ(display.only("Mode("), c.shownAfter == c.shown
                                             ? std::vector<std::string>{}
                                             : std::vector<std::string>{"Mode(Input Error,255)"});
        EXPECT_EQ(st.DataSilent, c.threshold && c.runMode != kRunPlayback);
        EXPECT_EQ(display.only("Clock(").size(), static_cast<std::size_t>(c.clocks));
    }
}

}  // namespace
}  // namespace lv
