#include "signal/sens_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

// Every gain follows from its label: label x 1638.4 (65536 over the 40-unit
// span) to the nearest whole number, with 40 held at 65535 to fit 16 bits.
// Checking the rule catches a mistyped row without retyping the table.
TEST(SensTable, EachGainFollowsItsLabel)
{
    for (int p = 0; p < 64; ++p) {
        const std::string label = lv::sensLabel(p);
        ASSERT_FALSE(label.empty()) << "position " << p;
        const double units = std::stod(label);
        const long expected = label == "40" ? 65535 : std::lround(units * 1638.4);
        EXPECT_EQ(lv::sensGain(p), expected) << "position " << p << " label " << label;
        EXPECT_EQ(lv::SensTable()[static_cast<std::size_t>(p)], std::to_string(expected)) << "gain text, position " << p;
    }
}

TEST(SensTable, LabelsRiseWithTheKnobFromOneToForty)
{
    EXPECT_EQ(lv::sensLabel(0), "1.0");
    EXPECT_EQ(lv::sensLabel(36), "10");
    EXPECT_EQ(lv::sensLabel(63), "40");
    for (int p = 1; p < 64; ++p)
        EXPECT_GE(std::stod(lv::sensLabel(p)), std::stod(lv::sensLabel(p - 1))) << "position " << p;
    // The knob has 64 steps but fewer settings: some neighbours repeat.
    EXPECT_EQ(lv::sensLabel(8), lv::sensLabel(10));
    EXPECT_NE(lv::sensLabel(10), lv::sensLabel(11));
}

TEST(SensTable, LabelsSitSixtyFiveEntriesAfterTheirGains)
{
    const lv::SensTableType& t = lv::SensTable();
    EXPECT_EQ(t[65], "1.0");
    EXPECT_EQ(t[65 + 36], "10");
    EXPECT_EQ(t[128], "40");
    EXPECT_EQ(t[64], "");
    EXPECT_EQ(t[129], "");
    for (int p = 0; p < 64; ++p) EXPECT_EQ(t[static_cast<std::size_t>(p + 65)], lv::sensLabel(p));
}

TEST(SensTable, PositionsOffTheKnobHaveNoGainAndNoLabel)
{
    for (int p : {-1, 64, 65, 129, 1000}) {
        EXPECT_EQ(lv::sensGain(p), 0) << "position " << p;
        EXPECT_EQ(lv::sensLabel(p), "") << "position " << p;
    }
}

}  // namespace
