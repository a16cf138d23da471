#include "common/vb_format.h"

#include "common/hex_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

// Everything here is locale-free on purpose: the Qt application sets the C
// locale from the environment, and a German desktop must still read "2.5" and
// write "2.05". So no strtod/printf; std::from_chars / std::to_chars only.

namespace lv {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

// Result of reading a number at the start of some text.
struct Scanned {
    std::size_t used = 0;  // characters consumed; 0 = no number there
    double value = 0;
};

// "&H1F" (hex), "&O17" or "&17" (octal). The original types such a literal by
// its size: up to 16 bits it is an Integer, so "&HFFFF" is -1; up to 32 bits
// a Long, so "&HFFFFFFFF" is -1 too.
Scanned scanRadixLiteral(std::string_view text) {
    if (text.size() < 2 || text[0] != '&') return {};
    int radix = 8;
    std::size_t pos = 1;
    if (text[1] == 'h' || text[1] == 'H') {
        radix = 16;
        pos = 2;
    } else if (text[1] == 'o' || text[1] == 'O') {
        pos = 2;
    }
    const std::size_t firstDigit = pos;
    double magnitude = 0;
    while (pos < text.size()) {
        const int d = hexDigitValue(text[pos]);
        if (d < 0 || d >= radix) break;
        magnitude = magnitude * radix + d;
        ++pos;
    }
    if (pos == firstDigit) return {pos, 0};  // "&H" alone reads as 0
    double value = magnitude;
    if (magnitude <= 0xFFFF) {
        value = static_cast<std::int16_t>(static_cast<std::uint16_t>(magnitude));
    } else if (magnitude <= 0xFFFFFFFFu) {
        value = static_cast<std::int32_t>(static_cast<std::uint32_t>(magnitude));
    }
    return {pos, value};
}

// Sign, digits, one point, digits, then an exponent (E or D, as the original
// accepts both) only if digits follow it. At least one mantissa digit.
Scanned scanDecimal(std::string_view text) {
    std::string canonical;  // what from_chars gets: no '+', 'e' for 'D'
    std::size_t pos = 0;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
        if (text[pos] == '-') canonical += '-';
        ++pos;
    }
    std::size_t mantissaDigits = 0;
    while (pos < text.size() && isDigit(text[pos])) {
        canonical += text[pos++];
        ++mantissaDigits;
    }
    if (pos < text.size() && text[pos] == '.') {
        canonical += text[pos++];
        while (pos < text.size() && isDigit(text[pos])) {
            canonical += text[pos++];
            ++mantissaDigits;
        }
    }
    if (mantissaDigits == 0) return {};
    if (canonical.back() == '.') canonical += '0';
    if (pos < text.size() &&
        (text[pos] == 'e' || text[pos] == 'E' || text[pos] == 'd' || text[pos] == 'D')) {
        std::size_t p = pos + 1;
        std::string exponent = "e";
        if (p < text.size() && (text[p] == '+' || text[p] == '-')) {
            if (text[p] == '-') exponent += '-';
            ++p;
        }
        const std::size_t expStart = p;
        while (p < text.size() && isDigit(text[p])) exponent += text[p++];
        if (p > expStart) {
            canonical += exponent;
            pos = p;
        }
    }
    double value = 0;
    const auto parsed =
        std::from_chars(canonical.data(), canonical.data() + canonical.size(), value);
    if (parsed.ec == std::errc::result_out_of_range) {
        // from_chars leaves the value alone here; decide the side by the exponent's sign.
        const bool tiny = canonical.find("e-") != std::string::npos;
        value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
        if (canonical[0] == '-') value = -value;
    }
    return {pos, value};
}

Scanned scanNumber(std::string_view text) {
    if (!text.empty() && text[0] == '&') return scanRadixLiteral(text);
    return scanDecimal(text);
}

std::string_view trimBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// The whole text (blanks around allowed) must be one number.
std::optional<double> strictNumber(std::string_view text) {
    text = trimBlanks(text);
    if (text.empty()) return std::nullopt;
    const Scanned s = scanNumber(text);
    if (s.used == 0 || s.used != text.size()) return std::nullopt;
    if (text[0] == '&') {
        // Val reads a bare "&H" as 0; as a whole value it is not a number.
        const bool lettered = text.size() > 1 && (text[1] == 'h' || text[1] == 'H' ||
                                                  text[1] == 'o' || text[1] == 'O');
        if (s.used <= (lettered ? 2u : 1u)) return std::nullopt;
    }
    return s.value;
}

template <typename Int>
std::optional<Int> roundedToRange(std::optional<double> value) {
    if (!value) return std::nullopt;
    constexpr double lo = static_cast<double>(std::numeric_limits<Int>::min());
    constexpr double hi = static_cast<double>(std::numeric_limits<Int>::max());
    // Wide margin first, so the rounding below never sees a huge or NaN value.
    if (!(*value >= lo - 1.0 && *value <= hi + 1.0)) return std::nullopt;
    const std::int64_t r = roundHalfEven(*value);
    if (r < static_cast<std::int64_t>(lo) || r > static_cast<std::int64_t>(hi)) return std::nullopt;
    return static_cast<Int>(r);
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

// A format pattern split into what the digits need.
struct NumberPattern {
    std::string prefix;  // literal text before the first placeholder
    std::string suffix;  // literal text after the last one
    int minInt = 0;      // '0's before the point
    bool hasPoint = false;
    int minDec = 0;  // up to the last '0' after the point
    int maxDec = 0;  // all placeholders after the point
};

bool isPlaceholder(char c) {
    return c == '0' || c == '#' || c == '.';
}

NumberPattern parsePattern(std::string_view pattern) {
    NumberPattern p;
    const std::size_t first = pattern.find_first_of("0#.");
    const std::size_t last = pattern.find_last_of("0#.");
    if (first == std::string_view::npos) {
        p.prefix = std::string(pattern);
        return p;
    }
    p.prefix = std::string(pattern.substr(0, first));
    p.suffix = std::string(pattern.substr(last + 1));
    bool afterPoint = false;
    for (std::size_t i = first; i <= last; ++i) {
        const char c = pattern[i];
        if (!isPlaceholder(c)) continue;  // grouping marks and the like: not used by the program
        if (c == '.') {
            if (afterPoint) continue;
            afterPoint = true;
            p.hasPoint = true;
        } else if (!afterPoint) {
            if (c == '0') ++p.minInt;
        } else {
            ++p.maxDec;
            if (c == '0') p.minDec = p.maxDec;
        }
    }
    return p;
}

}  // namespace

std::int64_t roundHalfEven(double value) {
    if (std::isnan(value)) return 0;
    constexpr double limit = 9.2e18;  // inside int64 with room for the +1 below
    if (value >= limit) return static_cast<std::int64_t>(limit);
    if (value <= -limit) return -static_cast<std::int64_t>(limit);
    double whole = std::floor(value);
    const double rest = value - whole;
    if (rest > 0.5 || (rest == 0.5 && std::fmod(whole, 2.0) != 0.0)) whole += 1.0;
    return static_cast<std::int64_t>(whole);
}

std::string formatNumber(double value, std::string_view pattern) {
    const NumberPattern p = parsePattern(pattern);
    if (!std::isfinite(value)) return value != value ? "NaN" : (value < 0 ? "-Inf" : "Inf");
    if (pattern.find_first_of("0#.") == std::string_view::npos) return p.prefix;

    // 15 significant digits, the precision the original formats from: this is
    // what turns the binary 2.0499999... back into the decimal 2.05.
    std::array<char, 40> buf{};
    const auto res = std::to_chars(buf.data(), buf.data() + buf.size(), std::fabs(value),
                                   std::chars_format::scientific, 14);
    const std::string_view sci(buf.data(), static_cast<std::size_t>(res.ptr - buf.data()));
    const std::size_t ePos = sci.find('e');
    std::string digits;
    for (std::size_t i = 0; i < ePos; ++i)
        if (sci[i] != '.') digits += sci[i];
    int exponent = 0;
    std::string_view expText = sci.substr(ePos + 1);
    if (!expText.empty() && expText[0] == '+') expText.remove_prefix(1);
    std::from_chars(expText.data(), expText.data() + expText.size(), exponent);

    // digits[0..intLen) is the whole part; pad so every needed place exists.
    int intLen = exponent + 1;
    if (intLen < 1) {
        digits.insert(0, static_cast<std::size_t>(1 - intLen), '0');
        intLen = 1;
    }
    const std::size_t cut = static_cast<std::size_t>(intLen + p.maxDec);
    if (digits.size() < cut + 1) digits.append(cut + 1 - digits.size(), '0');

    // Halves away from zero: the digits past the cut are exact decimals now.
    const bool roundUp = digits[cut] >= '5';
    digits.resize(cut);
    if (roundUp) {
        std::size_t i = cut;
        while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
        if (i == 0) {
            digits.insert(digits.begin(), '1');
            ++intLen;
        } else {
            ++digits[i - 1];
        }
    }

    std::string whole = digits.substr(0, static_cast<std::size_t>(intLen));
    std::string fraction = digits.substr(static_cast<std::size_t>(intLen));
    const bool isZero = digits.find_first_not_of('0') == std::string::npos;
    const std::size_t firstNonZero = whole.find_first_not_of('0');
    whole = firstNonZero == std::string::npos ? std::string() : whole.substr(firstNonZero);
    if (static_cast<int>(whole.size()) < p.minInt)
        whole.insert(0, static_cast<std::size_t>(p.minInt) - whole.size(), '0');
    while (static_cast<int>(fraction.size()) > p.minDec && fraction.back() == '0')
        fraction.pop_back();

    std::string out;
    if (value < 0 && !isZero) out += '-';
    out += p.prefix;
    out += whole;
    if (p.hasPoint) out += '.';  // kept even with no digits after it, as the original does
    out += fraction;
    out += p.suffix;
    return out;
}

double vbVal(std::string_view text) {
    // Val ignores blanks anywhere, not only in front: " 1 2" reads as 12.
    std::string packed;
    packed.reserve(text.size());
    for (const char c : text)
        if (!isBlank(c)) packed += c;
    return scanNumber(packed).value;
}

std::optional<std::int32_t> vbCLng(std::string_view text) {
    return roundedToRange<std::int32_t>(strictNumber(text));
}

std::optional<std::int16_t> vbCInt(std::string_view text) {
    return roundedToRange<std::int16_t>(strictNumber(text));
}

std::optional<bool> vbCBool(std::string_view text) {
    const std::string_view t = trimBlanks(text);
    if (equalsNoCase(t, "true")) return true;
    if (equalsNoCase(t, "false")) return false;
    const std::optional<double> number = strictNumber(t);
    if (!number) return std::nullopt;
    return *number != 0.0;
}

}  // namespace lv
