#include "calibration/correction_table.h"

#include <gtest/gtest.h>

namespace lv {
namespace {

std::vector<int> nominalList(int scaleType) {
    std::vector<int> list;
    for (int i = 1; i < scalePointCount(scaleType) - 1; ++i)
        list.push_back(nominalPoint(scaleType, i));
    return list;
}

TEST(CorrectionTable, InterpolatesBetweenCalibratedMarks) {
    const auto identity = buildCorrectionTable(workPoints(nominalList(1), 1), 1);
    for (int k = 0; k < kTableEntries; ++k) ASSERT_EQ(identity[static_cast<std::size_t>(k)], k);

    auto list = nominalList(0);
    list[0] = 199;   // 99 * (199 / 198) is 99.49999999999999 and rounds to 99; the
                     // product first would be 99.5 and, halves to even, 100
    list[5] = 2050;  // the centre mark (nominal 2048) found 2 drive units higher
    const auto t = buildCorrectionTable(workPoints(list, 0), 0);
    // 1678 + (i - 1678) * 372/370 below the centre, 2050 + (i - 2048) * 368/370 above.
    const std::pair<int, int> cases[] = {{99, 99},     {198, 199},   {1678, 1678},
                                         {1863, 1864}, {2048, 2050}, {2233, 2234},
                                         {2418, 2418}, {0, 0},       {4095, 4095}};
    for (const auto& [index, entry] : cases)
        EXPECT_EQ(t[static_cast<std::size_t>(index)], entry) << index;
}

TEST(CorrectionTable, ListValuesFromStoredCalibration) {
    DialCalibrationValues stored{};
    stored[0] = 210;
    stored[8] = 3440;
    stored[10] = 3900;
    const auto type0 = calibrationListValues(stored, 0);
    ASSERT_EQ(type0.size(), 11u);
    EXPECT_EQ(type0[0], 210);
    EXPECT_EQ(type0[1], 568) << "a stored 0 shows the nominal drive";
    EXPECT_EQ(type0[10], 3900);
    const auto type1 = calibrationListValues(stored, 1);
    ASSERT_EQ(type1.size(), 9u);
    EXPECT_EQ(type1[8], 3440);

    const auto kept = calibrationFromList(type1, 1);
    EXPECT_EQ(kept[8], 3440);
    EXPECT_EQ(kept[9], 0) << "slots the short scale does not use are cleared";
    EXPECT_EQ(kept[10], 0);
}

}  // namespace
}  // namespace lv
