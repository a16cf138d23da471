#pragma once
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "display/surface.h"

namespace lv {

enum class SurfaceOp { Clear, Circle, Arc, Line, Point, Text };

// One primitive as it was asked for, with the state it was drawn in.
// Circle, arc, point and text keep their position in (x1, y1).
struct SurfaceCall {
    SurfaceOp op = SurfaceOp::Clear;
    float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    float radius = 0, start = 0, end = 0;
    std::optional<Colour> colour;
    std::string text;
    TextStyle style;
    DrawState state;
    UserScale scale;

    // The colour the primitive's outline or line comes out in.
    Colour ink() const { return colour.value_or(state.fore); }
    bool operator==(const SurfaceCall&) const = default;
};

// One line per call, for readable test failures.
std::ostream& operator<<(std::ostream& os, const SurfaceCall& c);

// A surface that draws nothing and writes every primitive down, for tests of
// geometry and call order.
class RecordingSurface : public Surface {
public:
    explicit RecordingSurface(int widthPixels = 800) : m_width(widthPixels) {}

    std::vector<SurfaceCall> calls;

    int widthPixels() const override { return m_width; }
    void setWidthPixels(int w) { m_width = w; }

    void clear() override;
    void circle(float x, float y, float radius, Colour outline) override;
    void arc(float x, float y, float radius, Colour outline, float start, float end) override;
    void line(float x1, float y1, float x2, float y2, std::optional<Colour> colour) override;
    void point(float x, float y, std::optional<Colour> colour) override;
    void text(float x, float y, const std::string& s, const TextStyle& style) override;

    // The calls of one kind, in order.
    std::vector<SurfaceCall> of(SurfaceOp op) const;
    std::size_t count(SurfaceOp op) const;
    std::vector<SurfaceOp> ops() const;

private:
    SurfaceCall& add(SurfaceOp op);
    int m_width;
};

}  // namespace lv
