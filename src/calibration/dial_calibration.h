#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "calibration/correction_table.h"

// The calibration list of frmScale without its window: one line per inner
// mark of the printed scale, holding the drive that puts the meter's own
// needle on that mark. Every selection drives the meter's needle there.
namespace lv {

class Prompter;
class Pump;
class SerialPort;

inline constexpr std::string_view kCalibrationNotSavedText = "Previous values not saved, Exit?";
// Drive units a step of "+" or "-" moves the selected mark.
inline constexpr int kCalibrationStep = 2;

// Where a drive value sits on the main dial, in 1/65536 of a turn from
// straight up, clockwise: 3700 drive units (198 to 3898) span 20024 of them,
// centred on 2048.
std::int32_t dialNeedleAngle(int drive);

class DialCalibrator {
public:
    enum class Step { Up, Down };
    using ShowNeedle = std::function<void(std::int32_t angle)>;

    // `DialCalibration` is the caller's: it is read by Load and written by
    // takeOver. `showNeedle` marks the selected point on the main dial.
    DialCalibrator(SerialPort& port, Pump& pump, DialCalibrationValues& DialCalibration,
                   int ScaleType, ShowNeedle showNeedle);

    // Fills the list from the stored values (a stored 0 shows the nominal
    // drive), puts the meter into scale mode when the port is open, and
    // selects the first point.
    void Load();

    // A list line as the window shows it: the drive in decimal.
    std::string lineText(int index) const;
    const std::vector<int>& values() const { return m_values; }
    int count() const { return static_cast<int>(m_values.size()); }
    int currentIndex() const { return m_current; }
    // The drive the printed mark of list line `index` stands for.
    int nominal(int index) const;

    // A line selected (clicked, or chosen by code): drives the meter's needle
    // to the line's value and marks the point on the main dial.
    void select(int index);
    // The next line, wrapping to the first; drives the needle twice.
    void Cycle();

    // "+" or "-" went down: the values count as changed, and stepping goes
    // on until release().
    void press();
    void release() { m_held = true; }
    // Steps the selected line by 2 at the pace of TDelay 1, letting events run
    // in between, until released, or until the next step would pass the
    // mark's nominal drive +/- 185. At least one step is tried, so a click
    // whose release came first still moves the value once.
    void stepWhileHeld(Step step);
    bool stepping() const { return m_stepping; }

    // Every line back to its nominal drive. Each line is selected first, so
    // the needle is driven to the value the line had; then line 0 again.
    // A line that was off its nominal drive counts as changed.
    void Defaults();

    // Values not yet written to the meter ("Upload" enabled).
    bool valuesChanged() const { return m_changed; }
    // Upload's first half: the list into DialCalibration (scale type 1 clears
    // slots 9 and 10) and the correction table to send. The values then
    // count as kept.
    CorrectionTable takeOver();

    // Closing with values not uploaded asks first; true when it may close.
    bool mayClose(Prompter& prompter) const;

    // Called after every change of a line, the selection or valuesChanged.
    void setChangeHandler(std::function<void()> handler) { m_onChange = std::move(handler); }

private:
    void driveNeedle(int drive);
    void changed();

    SerialPort& m_port;
    Pump& m_pump;
    DialCalibrationValues& m_stored;
    int m_scaleType;
    ShowNeedle m_showNeedle;
    std::function<void()> m_onChange;
    std::vector<int> m_values;
    int m_current = 0;
    bool m_held = true;
    bool m_stepping = false;
    bool m_changed = false;
};

}  // namespace lv
