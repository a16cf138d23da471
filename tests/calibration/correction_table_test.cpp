#include <gtest/gtest.h>

#include "calibration/correction_table.h"
#include "calibration/intel_hex.h"

namespace lv {
namespace {

std::vector<int> nominalList(int scaleType) {
    std::vector<int> list;
    for (int i = 1; i < scalePointCount(scaleType) - 1; ++i)
        list.push_back(nominalPoint(scaleType, i));
    return list;
}

TEST(CorrectionTable, NominalPointsMakeTheIdentityOnBothScales) {
    for (int scale : {0, 1}) {
        const auto table = buildCorrectionTable(workPoints(nominalList(scale), scale), scale);
        for (int k = 0; k < kTableEntries; ++k)
            ASSERT_EQ(table[static_cast<std::size_t>(k)], k) << scale;
    }
}

TEST(CorrectionTable, InterpolatesBetweenCalibratedMarks) {
    auto list = nominalList(0);
    list[5] = 2050;  // the centre mark (nominal 2048) found 2 drive units higher
    const auto t = buildCorrectionTable(workPoints(list, 0), 0);
    struct Case {
        int index, entry;
    };
    // 1678 + (i - 1678) * 372/370 below the mark, 2050 + (i - 2048) * 368/370 above.
    for (const Case c : {Case{1678, 1678}, Case{1863, 1864}, Case{2048, 2050}, Case{2233, 2234},
                         Case{2418, 2418}, Case{0, 0}, Case{4095, 4095}}) {
        EXPECT_EQ(t[static_cast<std::size_t>(c.index)], c.entry) << c.index;
    }
}

TEST(CorrectionTable, QuotientComesBeforeProduct) {
    // 99 * (199 / 198) is 99.49999999999999 in double and rounds to 99;
    // multiplying first would give exactly 99.5 and, halves to even, 100.
    auto list = nominalList(0);
    list[0] = 199;
    const auto t = buildCorrectionTable(workPoints(list, 0), 0);
    EXPECT_EQ(t[99], 99);
    EXPECT_EQ(t[198], 199);
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

TEST(CorrectionTable, UploadLinesInOrder) {
    const auto table = buildCorrectionTable(workPoints(nominalList(0), 0), 0);
    const auto lines = correctionTableLines(table);
    ASSERT_EQ(lines.size(), 514u);
    EXPECT_EQ(lines.front(), ":020000040000FA");
    // Entries 0..7 low byte first; checksum 0x100 - ((0x10 + 0xE0 + 28) & 0xFF).
    EXPECT_EQ(lines[1], ":10E0000000000100020003000400050006000700F4");
    // Entries 4088..4095 at 0xFFF0; sum 0x10+0xFF+0xF0 + 8*0xF8+28 + 8*0x0F = 0xA53.
    EXPECT_EQ(lines[512], ":10FFF000F80FF90FFA0FFB0FFC0FFD0FFE0FFF0FAD");
    EXPECT_EQ(lines.back(), ":00000001FF");
    for (std::size_t i = 1; i < 513; ++i) {
        const auto rec = parseHexLine(lines[i]);
        ASSERT_TRUE(rec) << lines[i];
        EXPECT_EQ(rec->address, 0xE000 + 16 * (i - 1));
        EXPECT_EQ(rec->data.size(), 16u);
    }
}

}  // namespace
}  // namespace lv
