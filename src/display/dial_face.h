#pragma once
#include <cstdint>
#include <functional>
#include <optional>

#include "common/display_sink.h"
#include "display/surface.h"
#include "settings/settings.h"
#include "signal/meter_state.h"

namespace lv {

// The dial's own constants. They are the geometry of the artwork, so they stay
// as the program has always had them rather than exact values.
inline constexpr double kHalfTurn = 3.14159;
inline constexpr double kQuarterTurn = 1.570795;  // tick loop bounds
inline constexpr double kFullTurn = 6.28318;
inline constexpr float kScaleSpan = 1.919860601425171f;  // 110 degrees, single precision
// Where the traditional scale's outer line resumes after its gap (106.5 degrees).
inline constexpr double kOuterArcResume = kHalfTurn / 2 + double(5.759581565856934f) / 20;

// x -1000..1000 left to right, y -50..1200 bottom to top, whatever the pixels.
inline constexpr UserScale kPanelScale{-1000.0f, 1200.0f, 2000.0f, -1250.0f};

inline constexpr float kCircularCentreY = 600.0f;  // the circular faces sit around (0, 600)
inline constexpr float kCircularDiscRadius = 575.0f;

enum : std::int32_t {
    kDialCircular1 = 0,
    kDialTraditional = 1,
    kDialTraditionalContinuous = 2,
    kDialCircular2 = 3
};
enum : std::int32_t { kScaleTraditional = 0, kScaleSimple = 1 };

inline bool isCircularDial(std::int32_t t) {
    return t == kDialCircular1 || t == kDialCircular2;
}
inline bool isTraditionalDial(std::int32_t t) {
    return t == kDialTraditional || t == kDialTraditionalContinuous;
}

// What the face remembers about the needle between draws.
struct PanelState {
    // End points of the needle on screen, so the next update can paint it out.
    float innerX = 0, outerX = 0, innerY = 0, outerY = 0;
    // True while no needle is on the face: the next update must redraw the face
    // and has nothing to erase.
    bool redraw = true;
};

// What the clock may show after a redraw: the computer's time, or during
// playback the recording's own time.
struct ClockInputs {
    ClockTime now;
    std::int64_t playPosition = 0;       // the player's position ...
    std::int32_t unitsPerSecond = 1000;  // ... in these units a second (1000 or 44100)
    std::int32_t startTimeSecs = 0;      // the recording's start, seconds after midnight; 0 unknown
};

// The time a full redraw puts on the clock; nullopt leaves the clock alone
// (playback of a recording without a start time).
std::optional<ClockTime> panelClock(std::int16_t runMode, const ClockInputs& in);

// Everything a full redraw of the face reads and writes. The controller owns
// the pieces and builds one of these per window.
struct PanelContext {
    Surface& panel;
    const Settings& cfg;
    const MeterState& st;
    DisplaySink& display;
    PanelState& state;
    std::function<ClockInputs()> clock;  // asked at each redraw, since "now" moves
};

// The fixed artwork alone, by DialType and ScaleType; unknown types draw nothing.
void drawFace(Surface& panel, const Settings& cfg);

// Rebuilds the face from nothing and then every readout on it, so one call
// leaves a complete, current face.
void Draw_Panel(PanelContext& ctx);

}  // namespace lv
