#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The number conversions and format patterns of the original program, kept
// bit for bit because the readouts, the recordings and the settings file all
// depend on them.
namespace lv {

// Nearest whole number, halves to the even neighbour (2.5 -> 2, 3.5 -> 4, -2.5 -> -2).
std::int64_t roundHalfEven(double value);

// Format(value, pattern) for the numeric patterns the program uses:
// "0.0#", "#0.0", "000", "0.00" and their kin ('0' = required digit,
// '#' = optional digit, one optional '.'). Rounds halves away from zero on the
// decimal value (as the original's Format does), after taking the value to 15
// significant digits so that 2.05 stays 2.05. Negative values get a leading "-"
// unless they round to zero. A '.' in the pattern is always printed, even when
// no digit follows it ("0.#" gives "5." for 5). Text before the first and after
// the last placeholder is copied as it stands.
std::string formatNumber(double value, std::string_view pattern);

// Val(text): blanks (space, tab, line feed) ignored wherever they are, the
// longest number prefix read (sign, digits, one point, exponent with E or D),
// 0 when there is none. "&H1F" and "&O17" read as hex and octal, typed by
// size: "&HFFFF" is -1. Never fails; beyond the double range gives +-infinity.
double vbVal(std::string_view text);

// CLng / CInt: number text (blanks around allowed, the same forms Val reads,
// but nothing else after them) rounded halves to even; nullopt when the text
// is not a number or the result does not fit the type.
std::optional<std::int32_t> vbCLng(std::string_view text);
std::optional<std::int16_t> vbCInt(std::string_view text);

// CBool: "True"/"False" in any letter case, or any number text as CLng reads
// it (0 = false, anything else true, unrounded: "0.4" is true).
std::optional<bool> vbCBool(std::string_view text);

// The value-to-text conversion the settings file uses for booleans.
inline const char* vbBoolText(bool value) {
    return value ? "True" : "False";
}

}  // namespace lv
