#include "signal/sens_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

// Each gain is its label x 1638.4, rounded (40 held at 65535); labels rise, 65 entries later.
TEST(SensTable, GainsFollowTheirLabelsSixtyFiveEntriesLater) {
    EXPECT_EQ(lv::sensLabel(0) + "/" + lv::sensLabel(63) + "/" + lv::SensTable()[64], "1.0/40/");
    for (int p = 0; p < 64; ++p) {
        const std::string label = lv::SensTable()[p + 65];
        EXPECT_GE(std::stod(label), p ? std::stod(lv::SensTable()[p + 64]) : 1.0) << p;
        const long gain = label == "40" ? 65535 : std::lround(std::stod(label) * 1638.4);
        EXPECT_EQ(lv::sensGain(p), gain) << p << " " << label;
    }
    EXPECT_EQ(lv::sensGain(64) + lv::sensGain(-1), 0);
    EXPECT_EQ(lv::sensLabel(64), "");
}

}  // namespace
