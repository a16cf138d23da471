#pragma once
#include <array>
#include <cstdint>
#include <string>

#include "common/colour.h"

namespace lv {

// Run modes of the main window.
enum : std::int16_t {
    kRunNoMeter = 0,
    kRunLive = 1,
    kRunPlayback = 2,  // also the needle test
    kRunRecording = 3,
};

// The adaptive moving average's memory: slots 1..16 used, slot 1 newest.
struct FilterState {
    std::array<std::int32_t, 18> history{};
    std::int16_t length = 0;  // clamped to 3..10 at each use
};

// The main window's link and needle state, shared by the frame path, the
// needle model, the lamp rules and (later) the recorder and player.
struct MeterState {
    std::int16_t RunMode = kRunNoMeter;
    std::int16_t PortNumber = 0;

    // Readings, 0..65535.
    std::int32_t RawNeedle = 0;
    std::int32_t FilteredNeedle = 0;
    std::int32_t NeedleRef = 0;
    bool NeedleReset = true;       // next sample re-takes the reference and refills the filter
    bool ReferencePending = true;  // next Calc_Needle re-takes the reference afterwards
    bool NewData = false;
    bool DataSilent = false;
    bool MotionFreeze = false;
    bool TestModeOn = false;

    FilterState filter;
    std::array<std::int32_t, 3> rawHistory{};  // newest, previous, the one before

    // Frame status digit: bit 0 needle SET, bit 1 body motion, bit 3 BD counting.
    std::uint8_t StatusFlags = 0;
    bool BdCounting = false;
    // The original held these in 16 bits and would overflow on large BD
    // values; 32 bits keep every value the meter can send.
    std::int32_t BdQuarter = 0;
    std::int32_t BdValue = 0;
    std::uint8_t BaseByte = 0;
    std::uint8_t lastBaseByte = 0;  // Base on the 0..255 scale, kept between samples

    std::int16_t SensPos = 0;
    int LagLimit = 2;

    // Between receive events: characters not yet ended by a CR, and what the
    // last frame decoded, so that only changes reach the display.
    std::string pendingText;
    int lastKnobPos = 0;
    int lastStatusDigit = 0;

    // Link health and what the screen shows.
    int GoodFrames = 0;
    std::string StatusText;
    std::string ShownStatus;
    Colour StatusColour = 0;
    Colour LedColour = 0;
    std::string ShownBase = "2.0";
    std::string ShownBd = "0.0";
};

}  // namespace lv
