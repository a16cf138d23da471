#pragma once
#include <cstdint>
#include <optional>

#include "display/dial_face.h"

namespace lv {

struct NeedleLine {
    float innerX = 0, innerY = 0, outerX = 0, outerY = 0;
};

// The needle for a value (65536 to a turn, 0 straight up, clockwise): from
// radius 500 to 1000 about (0, 0), for every dial type.
NeedleLine needleLine(std::int32_t value);

// What the needle is seen through: the disc of a circular face, none on the others.
std::optional<Opening> needleOpening(std::int32_t dialType);

struct LampSpot {
    float x = 0, y = 0;
    std::optional<int> diameter;  // pixels; nullopt keeps the line width in force
};

// Where the lamp sits on this dial type and how big it is on a panel this wide.
LampSpot lampSpot(std::int32_t dialType, int panelWidthPixels);

inline constexpr int kWidestNeedle = 8;  // pixels, the widest the menu offers

// The needle's width in pixels as drawn: Needle_Width, or its default when the
// stored value is outside 0..8. The stored value itself is kept as read.
int needleWidth(const Settings& cfg);

// Brings the needle to `value`: redraws the face first if it was rebuilt,
// paints out the old needle in Dial_Color and draws the new one. The caller
// picks the value (live or recorded) and appends recording samples.
void Update_Needle(PanelContext& ctx, std::int32_t value);

// Paints out everything the needle can cover and restores the hub.
void Remove_Needle(PanelContext& ctx);

// Draws the alert lamp in `colour` (Dial_Color turns it off). The colour shown
// is remembered by the lamp rules in MeterState::LedColour.
void Update_LED(Surface& panel, std::int32_t dialType, Colour colour);

// The shadow needle's colour: Dial_Color and MainNeedle_Color mixed component
// by component, index 0 all dial, 5 all needle.
Colour shadowNeedleColour(Colour dial, Colour needle, int index);

}  // namespace lv
