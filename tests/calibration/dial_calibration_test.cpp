#include "calibration/dial_calibration.h"

#include <gtest/gtest.h>

#include "device/protocol.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

using Step = DialCalibrator::Step;
using Lines = std::vector<std::string>;

struct Rig {
    explicit Rig(int scale, DialCalibrationValues values = {}, bool open = true)
        : stored(values),
          cal(port, pump, stored, scale, [this](std::int32_t a) { angles.push_back(a); }) {
        if (open) port.open();
        cal.Load();
    }
    test::ScriptedPort port;
    test::FakePump pump;
    DialCalibrationValues stored;
    std::vector<std::int32_t> angles;
    DialCalibrator cal;
};

TEST(DialCalibration, LoadListsTheInnerPointsAndDrivesTheFirst) {
    const std::vector<int> scale0{198, 568, 938, 1308, 1678, 2048, 2418, 2788, 3158, 3528, 3898};
    const struct {
        int scale;
        DialCalibrationValues stored;
        bool open;
        std::vector<int> lines;
        Lines written;
    } cases[] = {
        {0, {}, true, scale0, {"S\r", "0C6N\r"}},
        {0, {}, false, scale0, {"0C6N\r"}},  // a closed port is not put into scale mode
        {1,
         {200, 0, 1130, 0, 0, 0, 0, 0, 3890, 77, 77},
         true,
         {200, 661, 1130, 1586, 2048, 2511, 2973, 3436, 3890},
         {"S\r", "0C8N\r"}},
    };
    for (const auto& c : cases) {
        Rig r(c.scale, c.stored, c.open);
        EXPECT_EQ(r.cal.values(), c.lines);
        EXPECT_EQ(r.port.written, c.written);
        EXPECT_EQ(r.angles, std::vector<std::int32_t>{-10012});
    }
}

TEST(DialCalibration, SelectionAndCycleDriveTheLineAndShowTheMark) {
    const std::pair<int, std::int32_t> angles[] = {{2418, 2002}, {568, -8010}, {661, -7506}};
    for (const auto& [drive, angle] : angles) EXPECT_EQ(dialNeedleAngle(drive), angle) << drive;
    Rig r(1, {205, 0, 0, 0, 0, 0, 0, 0, 3890});
    r.cal.select(8);
    r.cal.Cycle();  // from the last line to the first, driving it twice
    EXPECT_EQ(r.cal.currentIndex(), 0);
    EXPECT_EQ(r.port.written, (Lines{"S\r", "0CDN\r", "F32N\r", "0CDN\r", "0CDN\r"}));
    EXPECT_EQ(r.angles, (std::vector<std::int32_t>{-10012, 10012, -10012, -10012}));
}

TEST(DialCalibration, HoldingStepsByTwoWithinReachOfTheMark) {
    const struct {
        int scale, line, start;
        Step step;
        double releaseAfter;  // -1: never released
        int end;
    } cases[] = {
        {0, 5, 0, Step::Up, -1, 2232},     // 2234 would pass 2048 + 185
        {0, 5, 0, Step::Down, -1, 1864},   // 1862 would pass 2048 - 185
        {1, 0, 0, Step::Up, -1, 382},      // 198 + 185 = 383
        {0, 5, 0, Step::Up, 0.01, 2050},   // a click: one step
        {0, 5, 0, Step::Up, 0.12, 2054},   // released during the third tick
        {0, 5, 2231, Step::Up, -1, 2233},  // onto the edge itself, not past it
        {0, 5, 2233, Step::Up, -1, 2233},  // already at the edge: nothing sent
    };
    for (const auto& c : cases) {
        DialCalibrationValues stored{};
        stored[static_cast<std::size_t>(c.line)] = static_cast<std::int16_t>(c.start);
        Rig r(c.scale, stored);
        r.cal.select(c.line);
        const int steps = std::abs(c.end - r.cal.values()[static_cast<std::size_t>(c.line)]) / 2;
        const auto sent = r.port.written.size();
        const double t0 = r.pump.now();
        if (c.releaseAfter >= 0) r.pump.after(c.releaseAfter, [&] { r.cal.release(); });
        r.cal.press();
        r.cal.stepWhileHeld(c.step);
        EXPECT_EQ(r.cal.values()[static_cast<std::size_t>(c.line)], c.end);
        ASSERT_EQ(r.port.written.size(), sent + static_cast<std::size_t>(steps));
        EXPECT_EQ(r.port.written.back(), protocol::dialNeedleCommand(c.end) + "\r");
        EXPECT_NEAR(r.pump.now() - t0, steps * 0.054, 1e-9) << "one tick a step";
        EXPECT_TRUE(r.cal.valuesChanged());
    }
}

TEST(DialCalibration, DefaultsDrivesEachLineAsItStoodThenTheFirst) {
    Rig r(1, {210, 0, 1100, 0, 0, 0, 0, 0, 3880});
    r.port.written.clear();
    r.cal.Defaults();
    EXPECT_EQ(r.cal.values(),
              (std::vector<int>{198, 661, 1123, 1586, 2048, 2511, 2973, 3436, 3898}));
    EXPECT_EQ(r.port.written, (Lines{"0D2N\r", "295N\r", "44CN\r", "632N\r", "800N\r", "9CFN\r",
                                     "B9DN\r", "D6CN\r", "F28N\r", "0C6N\r"}));
    EXPECT_EQ(r.cal.currentIndex(), 0);
}

TEST(DialCalibration, TakeOverKeepsTheListAndBuildsTheTableThroughIt) {
    Rig r(1, {0, 0, 0, 0, 0, 0, 0, 0, 0, 1111, 2222});
    r.cal.select(4);
    r.cal.press();
    r.cal.stepWhileHeld(Step::Down);  // to 1864
    const CorrectionTable table = r.cal.takeOver();
    EXPECT_FALSE(r.cal.valuesChanged());
    EXPECT_EQ(r.stored, (DialCalibrationValues{198, 661, 1123, 1586, 1864, 2511, 2973, 3436, 3898}))
        << "slots 9 and 10 cleared on the short scale";
    for (int i = 0; i < r.cal.count(); ++i)
        EXPECT_EQ(table[static_cast<std::size_t>(r.cal.nominal(i))], r.cal.values()[i]);
}

}  // namespace
}  // namespace lv
