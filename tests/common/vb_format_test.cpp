#include "common/vb_format.h"

#include <gtest/gtest.h>

namespace {

// Base "0.0#": the second decimal only when it is not zero; BD "#0.0" and "000". Halves away
// from zero, judged on the decimal value though the double lies just below it; a negative that
// rounds to zero loses its sign; large values keep every whole digit.
TEST(FormatNumber, MatchesTheOriginalsText) {
    const std::tuple<double, const char*, const char*> cases[] = {
        {2.05, "0.0#", "2.05"}, {6.5, "0.0#", "6.5"}, {99.95, "#0.0", "100.0"},
        {-7, "000", "-007"},    {2.5, "0", "3"},      {1.005, "0.00", "1.01"},
        {-0.04, "0.0", "0.0"},  {0.5, "#.#", ".5"},   {5, "0.#", "5."},
        {-7, "$0.00", "-$7.00"}};
    for (const auto& [value, pattern, expected] : cases)
        EXPECT_EQ(lv::formatNumber(value, pattern), expected) << value << " \"" << pattern << "\"";
    EXPECT_EQ(lv::formatNumber(1e20, "0"), "100000000000000000000");
}

// Val reads the longest number prefix; CLng/CInt round halves to even and reject what is not
// a number or out of range; CBool takes True/False or any number, unrounded.
TEST(VbConversions, RoundHalvesToEvenReadPrefixesAndRejectWhatIsNotANumberOrOutOfRange) {
    for (auto [value, expected] : {std::pair{0.5, 0}, {1.5, 2}, {-2.5, -2}, {2.5001, 3}})
        EXPECT_EQ(lv::roundHalfEven(value), expected) << value;
    const std::pair<const char*, double> vals[] = {{"  12abc", 12},  {".5", 0.5},  {"2.5.3", 2.5},
                                                   {"\t-4\n2", -42}, {"1D2", 100}, {"1e+", 1},
                                                   {"&HFFFF", -1},   {"&O17", 15}, {"&18", 1}};
    for (auto [text, expected] : vals)
        EXPECT_DOUBLE_EQ(lv::vbVal(text), expected) << "\"" << text << "\"";
    for (auto [text, expected] : {std::pair{"2.5", 2}, {"-2147483648.5", -2147483647 - 1}})
        EXPECT_EQ(lv::vbCLng(text), expected) << "\"" << text << "\"";
    for (const char* text : {"2147483647.5", "12abc", "   ", "&H"})
        EXPECT_EQ(lv::vbCLng(text), std::nullopt) << "\"" << text << "\"";
    using Int = std::optional<std::int16_t>;
    for (auto [text, expected] :
         {std::pair{"32766.5", Int(32766)}, {"32767.5", Int()}, {"&H8000", Int(-32768)}})
        EXPECT_EQ(lv::vbCInt(text), expected) << "\"" << text << "\"";
    using Bool = std::optional<bool>;
    for (auto [text, expected] : {std::pair{"fAlSe", Bool(false)},
                                  {" TRUE ", Bool(true)},
                                  {"0.4", Bool(true)},
                                  {"", Bool()},
                                  {"Truex", Bool()}})
        EXPECT_EQ(lv::vbCBool(text), expected) << "\"" << text << "\"";
}

}  // namespace
