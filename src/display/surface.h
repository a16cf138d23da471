#pragma once
#include <optional>
#include <string>

#include "common/colour.h"

namespace lv {

enum class FillStyle : int { Solid = 0, Transparent = 1 };

// The logical coordinate window laid over a picture area: x grows from `left`
// over `width` units, y from `top` over `height` units (a negative height
// makes y grow upwards).
struct UserScale {
    float left = 0.0f;
    float top = 0.0f;
    float width = 1.0f;
    float height = 1.0f;
    bool operator==(const UserScale&) const = default;
};

// The properties a picture area keeps between primitives. Every drawing
// routine sets what it needs first, because whatever ran before left its own.
struct DrawState {
    Colour back = 0;
    Colour fore = 0;
    Colour fill = 0;
    FillStyle fillStyle = FillStyle::Transparent;
    int lineWidth = 1;  // pixels
    bool operator==(const DrawState&) const = default;
};

// Where a picture area's drawing belongs once it is kept in layers: the fixed
// artwork, the needle that moves over it, and what lies above the needle
// (readouts, lamp, the circular face's hub ring).
enum class Layer { Face, Needle, Top };

// A round opening the needle shows through, in logical units; the radius is
// measured along x.
struct Opening {
    float x = 0, y = 0, radius = 0;
};

struct TextStyle {
    std::string font = "Aerial";  // asked for by this name; the painter substitutes
    float size = 10.0f;           // points
    bool bold = false;
    Colour colour = 0;
    bool operator==(const TextStyle&) const = default;
};

// A picture area as the model draws on it: persistent state plus a handful of
// primitives in logical units. The Qt window paints these onto an image; tests
// record them.
class Surface {
public:
    virtual ~Surface() = default;

    void setScale(const UserScale& scale) { m_scale = scale; }
    const UserScale& scale() const { return m_scale; }

    void setBackColour(Colour c) { m_state.back = c; }
    void setForeColour(Colour c) { m_state.fore = c; }
    void setFillColour(Colour c) { m_state.fill = c; }
    void setFillStyle(FillStyle s) { m_state.fillStyle = s; }
    void setLineWidth(int pixels) { m_state.lineWidth = pixels; }
    const DrawState& state() const { return m_state; }

    // The area's width in device pixels: some sizes (the lamp) follow it.
    virtual int widthPixels() const = 0;

    // Wipes the whole area to the background colour.
    virtual void clear() = 0;
    // Outline in `outline`; filled with the fill colour when the fill style is solid.
    // The radius is measured along x.
    virtual void circle(float x, float y, float radius, Colour outline) = 0;
    // Counter-clockwise from `start` to `end`, radians from 3 o'clock with y up.
    // A negative angle stands for its absolute value and adds a straight edge
    // from the centre to that end; both negative make a pie, filled like a circle.
    virtual void arc(float x, float y, float radius, Colour outline, float start, float end) = 0;
    // In `colour`, or the fore colour when none is given.
    virtual void line(float x1, float y1, float x2, float y2,
                      std::optional<Colour> colour = std::nullopt) = 0;
    // A round dot as wide as the line width.
    virtual void point(float x, float y, std::optional<Colour> colour = std::nullopt) = 0;
    // Text with its top-left corner at (x, y).
    virtual void text(float x, float y, const std::string& s, const TextStyle& style) = 0;

    // The layer the following primitives belong to, and for the needle the
    // opening it is seen through. Not a primitive: a surface that keeps one
    // picture ignores it, so the calls themselves stay what they are.
    virtual void beginLayer(Layer, std::optional<Opening> = std::nullopt) {}

private:
    UserScale m_scale;
    DrawState m_state;
};

}  // namespace lv
