#pragma once
#include <cstdint>
#include <string>

// Hexadecimal digits as the meter and its loader write them: either case in,
// upper case out.
namespace lv {

// 0..15 for a hex digit, -1 for anything else.
constexpr int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// The low `width` hex digits of value, upper case, left-padded with "0".
inline std::string hexUpper(std::uint32_t value, int width) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string out(static_cast<std::size_t>(width), '0');
    for (int i = width - 1; i >= 0; --i, value >>= 4)
        out[static_cast<std::size_t>(i)] = kDigits[value & 0xF];
    return out;
}

}  // namespace lv
