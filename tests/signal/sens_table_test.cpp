#include "signal/sens_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

// Each gain is its label x 1638.4 (65536 counts over 40 units), rounded; 40 is
// held at 65535 to fit 16 bits. Checking the rule catches a mistyped row.
TEST(SensTable, GainsFollowTheirLabelsSixtyFiveEntriesLater) {
    const lv::SensTableType& t = lv::SensTable();
    EXPECT_EQ(t[64], "");
    EXPECT_EQ(t[129], "");
    EXPECT_EQ(lv::sensLabel(0), "1.0");
    EXPECT_EQ(lv::sensLabel(63), "40");
    for (std::size_t p = 0; p < 64; ++p) {
        const std::string label = t[p + 65];
        ASSERT_FALSE(label.empty()) << "position " << p;
        EXPECT_EQ(lv::sensLabel(static_cast<int>(p)), label);
        EXPECT_GE(std::stod(label), p ? std::stod(t[p + 64]) : 1.0)
            << "labels rise, position " << p;
        const long gain = label == "40" ? 65535 : std::lround(std::stod(label) * 1638.4);
        EXPECT_EQ(t[p], std::to_string(gain)) << "position " << p << " label " << label;
        EXPECT_EQ(lv::sensGain(static_cast<int>(p)), gain) << "position " << p;
    }
    for (int p : {-1, 64, 1000}) {
        EXPECT_EQ(lv::sensGain(p), 0) << "position " << p;
        EXPECT_EQ(lv::sensLabel(p), "") << "position " << p;
    }
}

}  // namespace
