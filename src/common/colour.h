#pragma once
#include <cstdint>

namespace lv {

// Colours travel as the original stored them: 0x00BBGGRR, red in the low byte.
using Colour = std::uint32_t;

constexpr Colour rgb(int r, int g, int b) {
    return static_cast<Colour>((r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16));
}
constexpr int redOf(Colour c) {
    return static_cast<int>(c & 0xFF);
}
constexpr int greenOf(Colour c) {
    return static_cast<int>((c >> 8) & 0xFF);
}
constexpr int blueOf(Colour c) {
    return static_cast<int>((c >> 16) & 0xFF);
}

}  // namespace lv
