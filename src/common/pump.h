#pragma once

namespace lv {

// Time and the event pump. Every wait in the program goes through here so that
// window events keep running and tests can drive a fake clock.
class Pump {
public:
    virtual ~Pump() = default;
    // Seconds since midnight, as the original's Timer (wraps at 86400).
    virtual double Timer() = 0;
    // Let pending events run once.
    virtual void DoEvents() = 0;
    // Let events run for this long without using the processor meanwhile.
    virtual void wait(double seconds) = 0;
};

// Seconds from `start` (a Timer() reading) to now, across midnight.
double secondsSince(Pump& pump, double start);

// Waits of 0.054 s ticks on the seconds-since-midnight clock, safe across midnight.
void TDelay(Pump& pump, double ticks);
// 18 ticks a "second": SDelay(1) lasts 0.972 s, which the recorder relies on.
void SDelay(Pump& pump, double secs);

}  // namespace lv
