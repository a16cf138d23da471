#include "common/vb_format.h"

#include <gtest/gtest.h>

namespace {

// Base "0.0#": the second decimal only when it is not zero; BD "#0.0" and "000". Halves away
// from zero, judged on the decimal value though the double lies just below it; a negative that
// rounds to zero loses its sign; large values keep every whole digit.
TEST(FormatNumber, MatchesTheOriginalsText) {
    const std::tuple<double, const char*, const char*> cases[] = {
        {2.05, "0.0#", "2.05"},   {6.5, "0.0#", "6.5"},
        {0.0001, "0.0#", "0.0"},  {-0.5, "#0.0", "-0.5"},
        {99.95, "#0.0", "100.0"}, {5, "000", "005"},
        {1234, "000", "1234"},    {-7, "000", "-007"},
        {2.5, "0", "3"},          {-0.25, "0.0", "-0.3"},
        {1.005, "0.00", "1.01"},  {0.449, "0.0", "0.4"},
        {-0.04, "0.0", "0.0"},    {1e20, "0", "100000000000000000000"},
        {0.5, "#.#", ".5"},       {5, "0.#", "5."},
        {-7, "$0.00", "-$7.00"},  {123456789012.345, "0.00", "123456789012.35"}};
    for (const auto& [value, pattern, expected] : cases)
        EXPECT_EQ(lv::formatNumber(value, pattern), expected) << value << " \"" << pattern << "\"";
}

// Val reads the longest number prefix; CLng/CInt round halves to even and reject what is not
// a number or out of range; CBool takes True/False or any number, unrounded.
TEST(VbConversions, RoundHalvesToEvenReadPrefixesAndRejectWhatIsNotANumberOrOutOfRange) {
    const std::pair<double, std::int64_t> halves[] = {
        {0.5, 0},    {1.5, 2},   {2.5, 2},         {-1.5, -2},        {-2.5, -2},
        {2.5001, 3}, {-2.6, -3}, {32767.5, 32768}, {-32768.5, -32768}};
    for (auto [value, expected] : halves) EXPECT_EQ(lv::roundHalfEven(value), expected) << value;
    const std::pair<const char*, double> vals[] = {
        {"  12abc", 12},    {".5", 0.5},  {"abc", 0},       {"2.5.3", 2.5},
        {"1,5", 1},         {"0x10", 0},  {"\t-4\n2", -42}, {"1D2", 100},
        {"2.5E-1", 0.25},   {"1e+", 1},   {"&h1f", 31},     {"&HFFFF", -1},
        {"&H10000", 65536}, {"&O17", 15}, {"&17", 15},      {"&18", 1}};
    for (auto [text, expected] : vals)
        EXPECT_DOUBLE_EQ(lv::vbVal(text), expected) << "\"" << text << "\"";
    const std::pair<const char*, std::int32_t> longs[] = {
        {"2.5", 2}, {"-1.5", -2}, {" 12 ", 12}, {"&H10", 16}, {"-2147483648.5", -2147483647 - 1}};
    for (auto [text, expected] : longs)
        EXPECT_EQ(lv::vbCLng(text), expected) << "\"" << text << "\"";
    for (const char* text : {"2147483647.5", "-2147483649", "1e999", "12abc", "1 2", "   ", "&H"})
        EXPECT_EQ(lv::vbCLng(text), std::nullopt) << "\"" << text << "\"";
    const std::optional<std::int16_t> none;
    const std::pair<const char*, std::optional<std::int16_t>> ints[] = {
        {"32766.5", 32766}, {"-32768.5", -32768}, {"32767.5", none},
        {"-32769", none},   {"&HFFFF", -1},       {"4x", none}};
    for (auto [text, expected] : ints)
        EXPECT_EQ(lv::vbCInt(text), expected) << "\"" << text << "\"";
    const std::optional<bool> neither;
    const std::pair<const char*, std::optional<bool>> bools[] = {
        {"fAlSe", false}, {" TRUE ", true}, {"-1", true},     {"0.0", false},
        {"0.4", true},    {"", neither},    {"yes", neither}, {"Truex", neither}};
    for (auto [text, expected] : bools)
        EXPECT_EQ(lv::vbCBool(text), expected) << "\"" << text << "\"";
}

}  // namespace
