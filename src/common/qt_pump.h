#pragma once
#include <QElapsedTimer>

#include "common/pump.h"

namespace lv {

// The event pump on Qt: waits run a nested event loop on a precise timer,
// so nothing spins while the program waits for the meter.
class QtPump : public Pump {
public:
    QtPump();
    double Timer() override;
    void DoEvents() override;
    void wait(double seconds) override;

private:
    // Time of day taken once, then advanced by a monotonic clock, so that a
    // clock adjustment cannot stretch or cut a wait.
    double m_startOfDay = 0;
    QElapsedTimer m_clock;
};

}  // namespace lv
