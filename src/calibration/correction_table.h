#pragma once
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// The dial correction table the meter keeps from 0xE000: for each of the 4096
// needle drives the meter computes on the nominal scale, the drive that puts
// its needle on the printed mark, straight-line between calibrated marks.
namespace lv {

inline constexpr int kTableEntries = 4096;
inline constexpr int kDriveMax = 4095;
inline constexpr std::uint16_t kTableAddress = 0xE000;
inline constexpr int kEntriesPerRecord = 8;  // 16 data bytes a HEX line
inline constexpr int kTableRecords = kTableEntries / kEntriesPerRecord;
// Calibration values kept between runs; inner points only (11 or 9 used).
inline constexpr int kCalibrationSlots = 12;
// A calibrated point may lie this far either side of its nominal drive.
inline constexpr int kCalibrationReach = 185;

using DialCalibrationValues = std::array<std::int16_t, kCalibrationSlots>;
using CorrectionTable = std::array<std::int16_t, kTableEntries>;

// Points of a scale, ends included: 13 for scale type 0, 11 for scale type 1.
int scalePointCount(int scaleType);
// Nominal drive of point `point` (0 .. count-1) of the scale.
int nominalPoint(int scaleType, int point);
// Inner points shown for calibration: count - 2.
inline int innerPointCount(int scaleType) {
    return scalePointCount(scaleType) - 2;
}

// The calibration list's starting values: a stored value, or the nominal
// drive where the point was never calibrated (stored 0).
std::vector<int> calibrationListValues(const DialCalibrationValues& stored, int scaleType);

// What "Upload" keeps: the list values in their slots, unused slots 0.
DialCalibrationValues calibrationFromList(const std::vector<int>& list, int scaleType);

// Work points: 0, the inner values, 4095.
std::vector<int> workPoints(const std::vector<int>& list, int scaleType);

// Straight-line interpolation between work points over the nominal scale,
// in double precision (quotient, then product, then sum), halves to even.
CorrectionTable buildCorrectionTable(const std::vector<int>& work, int scaleType);

// Every line the loader receives after its entry bytes, in order: the
// extended address record, 512 data records, the end record.
std::vector<std::string> correctionTableLines(const CorrectionTable& table);

// The data record for table entries 8b .. 8b+7, each low byte first.
std::string correctionTableRecord(const CorrectionTable& table, int record);

}  // namespace lv
