#include "calibration/dial_calibration.h"

#include <gtest/gtest.h>

#include "calibration/correction_table.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

using Step = DialCalibrator::Step;
using Lines = std::vector<std::string>;

struct Rig {
    explicit Rig(int scale, DialCalibrationValues values = {})
        : stored(values), cal(port, pump, stored, scale, [](std::int32_t) {}) {
        port.open();
        cal.Load();
    }
    test::ScriptedPort port;
    test::FakePump pump;
    DialCalibrationValues stored;
    DialCalibrator cal;
};

TEST(CorrectionTable, InterpolatesBetweenCalibratedMarks) {
    const auto identity = Rig(1).cal.takeOver();  // every mark where it should be
    for (int k = 0; k < kTableEntries; ++k) ASSERT_EQ(identity[static_cast<std::size_t>(k)], k);
    // The first mark at 199: 99 * (199 / 198) is 99.49999999999999 and rounds to 99; the
    // product first would be 99.5 and, halves to even, 100. The centre mark (nominal 2048)
    // found 2 drive units higher.
    const auto t = Rig(0, {199, 0, 0, 0, 0, 2050}).cal.takeOver();
    // 1678 + (i - 1678) * 372/370 below the centre, 2050 + (i - 2048) * 368/370 above.
    const std::pair<int, int> cases[] = {{99, 99},     {198, 199},   {1863, 1864},
                                         {2048, 2050}, {2233, 2234}, {2418, 2418}};
    for (const auto& [index, entry] : cases)
        EXPECT_EQ(t[static_cast<std::size_t>(index)], entry) << index;
}

TEST(DialCalibration, LoadListsTheInnerPointsAndDrivesTheFirst) {
    // A stored 0 shows the nominal drive.
    Rig r(1, {200, 0, 1130, 0, 0, 0, 0, 0, 3890, 77, 77});
    EXPECT_EQ(r.cal.values(),
              (std::vector<int>{200, 661, 1130, 1586, 2048, 2511, 2973, 3436, 3890}));
    EXPECT_EQ(r.port.written, (Lines{"S\r", "0C8N\r"}));
}

// One step of 2 drive units a 0.054 s tick while held, never further than 185 from the mark.
TEST(DialCalibration, HoldingStepsByTwoWithinReachOfTheMark) {
    // The centre line's start (0: the nominal 2048), direction, released after (-1: never), end,
    // the last line sent.
    const std::tuple<int, Step, double, int, const char*> cases[] = {
        {0, Step::Up, -1, 2232, "8B8N\r"},      // 2234 would pass 2048 + 185
        {0, Step::Down, -1, 1864, "748N\r"},    // 1862 would pass 2048 - 185
        {0, Step::Up, 0.12, 2054, "806N\r"},    // released during the third tick
        {2231, Step::Up, -1, 2233, "8B9N\r"}};  // onto the edge itself, not past it
    for (const auto& [start, step, releaseAfter, end, last] : cases) {
        SCOPED_TRACE(last);
        Rig r(0, {0, 0, 0, 0, 0, static_cast<std::int16_t>(start)});
        r.cal.select(5);
        r.port.written.clear();
        const double t0 = r.pump.now();
        if (releaseAfter >= 0) r.pump.after(releaseAfter, [&r] { r.cal.release(); });
        r.cal.press();
        r.cal.stepWhileHeld(step);
        EXPECT_EQ(r.cal.values()[5], end);
        const auto steps = static_cast<std::size_t>(std::abs(end - (start ? start : 2048)) / 2);
        ASSERT_EQ(r.port.written.size(), steps);
        EXPECT_EQ(r.port.written.back(), last);
        EXPECT_NEAR(r.pump.now() - t0, steps * 0.054, 1e-9) << "one tick a step";
    }
}

TEST(DialCalibration, DefaultsDrivesEachLineThenTakeOverBuildsTheTable) {
    Rig r(1, {210, 0, 1100, 0, 0, 0, 0, 0, 3880, 1111, 2222});
    r.port.written.clear();
    r.cal.Defaults();
    EXPECT_EQ(r.cal.values(),
              (std::vector<int>{198, 661, 1123, 1586, 2048, 2511, 2973, 3436, 3898}));
    EXPECT_EQ(r.port.written.size(), 10u) << "each line driven, then the first again";
    EXPECT_TRUE(r.cal.valuesChanged()) << "the reset is for the meter to take";

    r.cal.select(4);
    r.cal.press();
    r.cal.stepWhileHeld(Step::Down);  // to 1864
    const CorrectionTable table = r.cal.takeOver();
    EXPECT_FALSE(r.cal.valuesChanged());
    EXPECT_EQ(r.stored, (DialCalibrationValues{198, 661, 1123, 1586, 1864, 2511, 2973, 3436, 3898}))
        << "slots 9 and 10 cleared on the short scale";
    EXPECT_EQ(table[2048], 1864);
    EXPECT_EQ(table[3436], 3436);
}

}  // namespace
}  // namespace lv
