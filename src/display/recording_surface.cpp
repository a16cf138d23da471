#include "display/recording_surface.h"

#include <algorithm>
#include <iterator>

namespace lv {

SurfaceCall& RecordingSurface::add(SurfaceOp op) {
    SurfaceCall& c = calls.emplace_back();
    c.op = op;
    c.state = state();
    c.scale = scale();
    return c;
}

void RecordingSurface::clear() {
    add(SurfaceOp::Clear);
}

void RecordingSurface::circle(float x, float y, float radius, Colour outline) {
    SurfaceCall& c = add(SurfaceOp::Circle);
    c.x1 = x;
    c.y1 = y;
    c.radius = radius;
    c.colour = outline;
}

void RecordingSurface::arc(float x, float y, float radius, Colour outline, float start, float end) {
    SurfaceCall& c = add(SurfaceOp::Arc);
    c.x1 = x;
    c.y1 = y;
    c.radius = radius;
    c.colour = outline;
    c.start = start;
    c.end = end;
}

void RecordingSurface::line(float x1, float y1, float x2, float y2, std::optional<Colour> colour) {
    SurfaceCall& c = add(SurfaceOp::Line);
    c.x1 = x1;
    c.y1 = y1;
    c.x2 = x2;
    c.y2 = y2;
    c.colour = colour;
}

void RecordingSurface::point(float x, float y, std::optional<Colour> colour) {
    SurfaceCall& c = add(SurfaceOp::Point);
    c.x1 = x;
    c.y1 = y;
    c.colour = colour;
}

void RecordingSurface::text(float x, float y, const std::string& s, const TextStyle& style) {
    SurfaceCall& c = add(SurfaceOp::Text);
    c.x1 = x;
    c.y1 = y;
    c.text = s;
    c.style = style;
    c.colour = style.colour;
}

std::ostream& operator<<(std::ostream& os, const SurfaceCall& c) {
    static const char* const kNames[] = {"clear", "circle", "arc", "line", "point", "text"};
    os << kNames[static_cast<int>(c.op)] << '(' << c.x1 << ',' << c.y1 << ' ' << c.x2 << ',' << c.y2
       << " r" << c.radius << ' ' << c.start << ".." << c.end << " ink " << c.ink() << " fill "
       << c.state.fill << (c.state.fillStyle == FillStyle::Solid ? " solid" : "") << " width "
       << c.state.lineWidth << ' ' << c.text << ')';
    return os;
}

std::vector<SurfaceCall> RecordingSurface::of(SurfaceOp op) const {
    std::vector<SurfaceCall> out;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(out),
                 [op](const SurfaceCall& c) { return c.op == op; });
    return out;
}

std::size_t RecordingSurface::count(SurfaceOp op) const {
    return static_cast<std::size_t>(std::count_if(
        calls.begin(), calls.end(), [op](const SurfaceCall& c) { return c.op == op; }));
}

std::vector<SurfaceOp> RecordingSurface::ops() const {
    std::vector<SurfaceOp> out;
    out.reserve(calls.size());
    for (const SurfaceCall& c : calls) out.push_back(c.op);
    return out;
}

}  // namespace lv
