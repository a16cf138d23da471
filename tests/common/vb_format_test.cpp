#include "common/vb_format.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

struct FormatCase {
    double value;
    const char* pattern;
    const char* expected;
};

class FormatNumberTest : public ::testing::TestWithParam<FormatCase> {};

TEST_P(FormatNumberTest, MatchesTheOriginalsText) {
    const FormatCase& c = GetParam();
    EXPECT_EQ(lv::formatNumber(c.value, c.pattern), c.expected)
        << "value " << c.value << " pattern \"" << c.pattern << "\"";
}

INSTANTIATE_TEST_SUITE_P(Readouts, FormatNumberTest,
                         ::testing::Values(
                             // Base readout "0.0#": the second decimal only when it is not zero.
                             FormatCase{2.05, "0.0#", "2.05"},  // binary 2.04999..., decimal 2.05
                             FormatCase{6.5, "0.0#", "6.5"}, FormatCase{0.5, "0.0#", "0.5"},
                             FormatCase{0.0, "0.0#", "0.0"}, FormatCase{0.0001, "0.0#", "0.0"},
                             FormatCase{3.0, "0.00", "3.00"},
                             // BD readout "#0.0" and "000".
                             FormatCase{0.5, "#0.0", "0.5"}, FormatCase{-0.5, "#0.0", "-0.5"},
                             FormatCase{99.9, "#0.0", "99.9"},
                             FormatCase{99.95, "#0.0", "100.0"},  // the carry makes a new digit
                             FormatCase{9.999, "0.00", "10.00"}, FormatCase{5, "000", "005"},
                             FormatCase{1234, "000", "1234"}, FormatCase{100.5, "000", "101"},
                             FormatCase{-7, "000", "-007"}));

INSTANTIATE_TEST_SUITE_P(
    Rounding, FormatNumberTest,
    ::testing::Values(
        // Halves go away from zero, never to even...
        FormatCase{0.5, "0", "1"}, FormatCase{2.5, "0", "3"}, FormatCase{-2.5, "0", "-3"},
        FormatCase{0.25, "0.0", "0.3"}, FormatCase{-0.25, "0.0", "-0.3"},
        // ...and are judged on the decimal value, though the double lies just below it.
        FormatCase{0.15, "0.0", "0.2"}, FormatCase{1.005, "0.00", "1.01"},
        FormatCase{2.675, "0.00", "2.68"}, FormatCase{0.449, "0.0", "0.4"},
        // A negative that rounds to zero loses its sign.
        FormatCase{-0.04, "0.0", "0.0"}, FormatCase{-0.4, "0", "0"},
        // Large values keep every whole digit.
        FormatCase{1e20, "0", "100000000000000000000"},
        FormatCase{1234567.891, "0.00", "1234567.89"},
        FormatCase{123456789012.345, "0.00", "123456789012.35"}));

INSTANTIATE_TEST_SUITE_P(
    PatternShapes, FormatNumberTest,
    ::testing::Values(FormatCase{0.5, "#.#", ".5"},  // no required whole digit
                      FormatCase{5, "0.#", "5."},    // the point stays with nothing after it
                      FormatCase{12.345, "#", "12"}, FormatCase{3.14159, "0.000", "3.142"},
                      FormatCase{7, "$0.00", "$7.00"}, FormatCase{-7, "$0.00", "-$7.00"}));

TEST(RoundHalfEven, HalvesGoToTheEvenNeighbour) {
    struct Case {
        double value;
        std::int64_t expected;
    };
    const Case cases[] = {{0.5, 0},    {1.5, 2},         {2.5, 2},         {3.5, 4},
                          {-0.5, 0},   {-1.5, -2},       {-2.5, -2},       {-3.5, -4},
                          {2.4999, 2}, {2.5001, 3},      {-2.6, -3},       {7.0, 7},
                          {0.0, 0},    {32767.5, 32768}, {32766.5, 32766}, {-32768.5, -32768}};
    for (const Case& c : cases)
        EXPECT_EQ(lv::roundHalfEven(c.value), c.expected) << "value " << c.value;
}

TEST(VbVal, ReadsTheLongestNumberPrefix) {
    struct Case {
        const char* text;
        double expected;
    };
    const Case cases[] = {
        {"  12abc", 12}, {"1.5", 1.5},     {"-0.5", -0.5},  {"+7", 7},          {".5", 0.5},
        {"", 0},         {"abc", 0},       {"-", 0},        {"12-3", 12},       {"2.5.3", 2.5},
        {"1,5", 1},      {"0x10", 0},      {" 1 2 3", 123}, {"\t-4\n2", -42},   {"1e3", 1000},
        {"1D2", 100},    {"2.5E-1", 0.25}, {"1e", 1},       {"1e+", 1},         {"3e2x", 300},
        {"&H10", 16},    {"&h1f", 31},     {"&HFFFF", -1},  {"&H10000", 65536}, {"&HFFFFFFFF", -1},
        {"&O17", 15},    {"&17", 15},      {"&H", 0},       {"&18", 1},         {"1638", 1638},
    };
    for (const Case& c : cases)
        EXPECT_DOUBLE_EQ(lv::vbVal(c.text), c.expected) << "text \"" << c.text << "\"";
}

TEST(VbCLng, RoundsHalvesToEvenAndRejectsWhatIsNotANumber) {
    struct Case {
        const char* text;
        std::optional<std::int32_t> expected;
    };
    const Case cases[] = {
        {"1.5", 2},
        {"2.5", 2},
        {"-0.5", 0},
        {"-1.5", -2},
        {" 12 ", 12},
        {"1e3", 1000},
        {"&H10", 16},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
        {"-2147483648.5", -2147483647 - 1},
        {"2147483648", std::nullopt},
        {"2147483647.5", std::nullopt},  // rounds up out of range
        {"-2147483649", std::nullopt},
        {"1e999", std::nullopt},
        {"12abc", std::nullopt},
        {"1 2", std::nullopt},
        {"", std::nullopt},
        {"   ", std::nullopt},
        {"x", std::nullopt},
        {"&H", std::nullopt},
        {"-", std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(lv::vbCLng(c.text), c.expected) << "text \"" << c.text << "\"";
}

TEST(VbCInt, UsesTheSixteenBitRange) {
    struct Case {
        const char* text;
        std::optional<std::int16_t> expected;
    };
    const Case cases[] = {
        {"3", 3},
        {"32767", 32767},
        {"-32768", -32768},
        {"32766.5", 32766},
        {"-32768.5", -32768},
        {"32768", std::nullopt},
        {"32767.5", std::nullopt},
        {"-32769", std::nullopt},
        {"&HFFFF", -1},
        {"4x", std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(lv::vbCInt(c.text), c.expected) << "text \"" << c.text << "\"";
}

TEST(VbCBool, TakesWordsInAnyCaseOrNumbers) {
    struct Case {
        const char* text;
        std::optional<bool> expected;
    };
    const Case cases[] = {
        {"True", true},      {"fAlSe", false},   {" TRUE ", true},      {"3", true},
        {"0", false},        {"-1", true},       {"0.0", false},        {"0.4", true},
        {"x", std::nullopt}, {"", std::nullopt}, {"yes", std::nullopt}, {"Truex", std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(lv::vbCBool(c.text), c.expected) << "text \"" << c.text << "\"";
}

TEST(VbBoolText, IsTheOriginalsSpelling) {
    EXPECT_STREQ(lv::vbBoolText(true), "True");
    EXPECT_STREQ(lv::vbBoolText(false), "False");
}

}  // namespace
