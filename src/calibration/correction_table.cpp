#include "calibration/correction_table.h"

#include <algorithm>

#include "calibration/intel_hex.h"
#include "common/vb_format.h"

namespace lv {

namespace {

// The printed scales' marks as drives. Type 1's inner points are not evenly
// spaced; the values are the ones the dials were printed to.
constexpr std::array<std::array<int, 13>, 2> kNominal{{
    {0, 198, 568, 938, 1308, 1678, 2048, 2418, 2788, 3158, 3528, 3898, 4095},
    {0, 198, 661, 1123, 1586, 2048, 2511, 2973, 3436, 3898, 4095, 0, 0},
}};

int row(int scaleType) {
    return scaleType == 1 ? 1 : 0;
}

}  // namespace

int scalePointCount(int scaleType) {
    return scaleType == 1 ? 11 : 13;
}

int nominalPoint(int scaleType, int point) {
    return kNominal[row(scaleType)].at(static_cast<std::size_t>(point));
}

std::vector<int> calibrationListValues(const DialCalibrationValues& stored, int scaleType) {
    std::vector<int> list;
    for (int i = 0; i < innerPointCount(scaleType); ++i) {
        const int value = stored[static_cast<std::size_t>(i)];
        list.push_back(value != 0 ? value : nominalPoint(scaleType, i + 1));
    }
    return list;
}

DialCalibrationValues calibrationFromList(const std::vector<int>& list, int scaleType) {
    DialCalibrationValues out{};
    const int n = std::min<int>(innerPointCount(scaleType), static_cast<int>(list.size()));
    for (int i = 0; i < n; ++i)
        out[static_cast<std::size_t>(i)] =
            static_cast<std::int16_t>(list[static_cast<std::size_t>(i)]);
    return out;
}

std::vector<int> workPoints(const std::vector<int>& list, int scaleType) {
    const int count = scalePointCount(scaleType);
    std::vector<int> work(static_cast<std::size_t>(count), 0);
    for (int i = 1; i < count - 1; ++i) {
        const auto k = static_cast<std::size_t>(i - 1);
        work[static_cast<std::size_t>(i)] = k < list.size() ? list[k] : nominalPoint(scaleType, i);
    }
    work.back() = kDriveMax;
    return work;
}

CorrectionTable buildCorrectionTable(const std::vector<int>& work, int scaleType) {
    CorrectionTable table{};
    const int count = std::min<int>(scalePointCount(scaleType), static_cast<int>(work.size()));
    for (int i = 0; i + 1 < count; ++i) {
        const int n0 = nominalPoint(scaleType, i);
        const int n1 = nominalPoint(scaleType, i + 1);
        const int w0 = work[static_cast<std::size_t>(i)];
        const int w1 = work[static_cast<std::size_t>(i + 1)];
        // The order of operations decides a few entries that land on .5.
        const double slope = static_cast<double>(w1 - w0) / static_cast<double>(n1 - n0);
        for (int index = n0 + 1; index <= n1; ++index) {
            const double entry = w0 + (index - n0) * slope;
            table[static_cast<std::size_t>(index)] =
                static_cast<std::int16_t>(roundHalfEven(entry));
        }
    }
    return table;
}

std::string correctionTableRecord(const CorrectionTable& table, int record) {
    std::array<std::uint8_t, 2 * kEntriesPerRecord> bytes{};
    for (int k = 0; k < kEntriesPerRecord; ++k) {
        const auto entry = static_cast<std::uint16_t>(
            table[static_cast<std::size_t>(record * kEntriesPerRecord + k)]);
        bytes[static_cast<std::size_t>(2 * k)] = static_cast<std::uint8_t>(entry & 0xFF);
        bytes[static_cast<std::size_t>(2 * k + 1)] = static_cast<std::uint8_t>(entry >> 8);
    }
    const auto address = static_cast<std::uint16_t>(kTableAddress + 2 * kEntriesPerRecord * record);
    return formatDataRecord(address, bytes);
}

std::vector<std::string> correctionTableLines(const CorrectionTable& table) {
    std::vector<std::string> lines;
    lines.reserve(kTableRecords + 2);
    lines.push_back(formatExtendedLinearAddress(0));
    for (int b = 0; b < kTableRecords; ++b) lines.push_back(correctionTableRecord(table, b));
    lines.push_back(formatEndOfFile());
    return lines;
}

}  // namespace lv
