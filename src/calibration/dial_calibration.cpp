#include "calibration/dial_calibration.h"

#include <cmath>

#include "common/prompter.h"
#include "common/pump.h"
#include "device/protocol.h"
#include "device/serial_port.h"

namespace lv {

namespace {

constexpr int kDialCentreDrive = 2048;
// 198 to 3898 on the meter's dial covers this many 1/65536 turns of the main dial.
constexpr double kDialSpanAngle = 20024;
constexpr double kDialSpanDrive = 3700;
// One tick of TDelay between steps while "+" or "-" is held.
constexpr double kStepTicks = 1;

}  // namespace

std::int32_t dialNeedleAngle(int drive) {
    return static_cast<std::int32_t>(
        std::lround((drive - kDialCentreDrive) * kDialSpanAngle / kDialSpanDrive));
}

DialCalibrator::DialCalibrator(SerialPort& port, Pump& pump, DialCalibrationValues& DialCalibration,
                               int ScaleType, ShowNeedle showNeedle)
    : m_port(port),
      m_pump(pump),
      m_stored(DialCalibration),
      m_scaleType(ScaleType),
      m_showNeedle(std::move(showNeedle)) {}

void DialCalibrator::Load() {
    m_values = calibrationListValues(m_stored, m_scaleType);
    if (m_port.isOpen()) m_port.write(protocol::commandLine(protocol::kScaleMode));
    select(0);
}

std::string DialCalibrator::lineText(int index) const {
    return std::to_string(m_values.at(static_cast<std::size_t>(index)));
}

int DialCalibrator::nominal(int index) const {
    return nominalPoint(m_scaleType, index + 1);
}

void DialCalibrator::driveNeedle(int drive) {
    m_port.write(protocol::commandLine(protocol::dialNeedleCommand(drive)));
}

void DialCalibrator::changed() {
    if (m_onChange) m_onChange();
}

void DialCalibrator::select(int index) {
    if (index < 0 || index >= count()) return;
    m_current = index;
    driveNeedle(m_values[static_cast<std::size_t>(index)]);
    if (m_showNeedle) m_showNeedle(dialNeedleAngle(nominal(index)));
    changed();
}

void DialCalibrator::Cycle() {
    if (m_values.empty()) return;
    select((m_current + 1) % count());
    // The selection has driven the needle already; the second command is
    // harmless and the meter has always had it.
    driveNeedle(m_values[static_cast<std::size_t>(m_current)]);
    if (m_showNeedle) m_showNeedle(dialNeedleAngle(nominal(m_current)));
}

void DialCalibrator::press() {
    m_changed = true;
    m_held = false;
    changed();
}

void DialCalibrator::stepWhileHeld(Step step) {
    // A second press while the first still steps (a key held with the mouse
    // down) just keeps the running loop going.
    if (m_stepping || m_values.empty()) return;
    m_stepping = true;
    const int delta = step == Step::Up ? kCalibrationStep : -kCalibrationStep;
    do {
        int& value = m_values[static_cast<std::size_t>(m_current)];
        const int next = value + delta;
        const int limit =
            nominal(m_current) + (step == Step::Up ? kCalibrationReach : -kCalibrationReach);
        if (step == Step::Up ? next > limit : next < limit) break;
        value = next;
        driveNeedle(next);
        changed();
        // The release of the button arrives while this waits.
        TDelay(m_pump, kStepTicks);
        m_pump.DoEvents();
    } while (!m_held);
    m_stepping = false;
}

void DialCalibrator::Defaults() {
    for (int i = 0; i < count(); ++i) {
        select(i);
        int& value = m_values[static_cast<std::size_t>(i)];
        // A reset the meter has not been given yet is a change like any other.
        if (value != nominal(i)) m_changed = true;
        value = nominal(i);
        changed();
    }
    select(0);
}

CorrectionTable DialCalibrator::takeOver() {
    m_changed = false;
    m_stored = calibrationFromList(m_values, m_scaleType);
    changed();
    return buildCorrectionTable(workPoints(m_values, m_scaleType), m_scaleType);
}

bool DialCalibrator::mayClose(Prompter& prompter) const {
    if (!m_changed) return true;
    return prompter.ask("Warning", std::string(kCalibrationNotSavedText), Buttons::YesNo,
                        Icon::None) == Answer::Yes;
}

}  // namespace lv
