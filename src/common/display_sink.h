#pragma once
#include <string>

#include "common/colour.h"

namespace lv {

struct CalendarDate {
    int year = 1999;
    int month = 12;
    int day = 31;
};

// A moment as the clock shows it, read by the caller so that tests choose it.
struct ClockTime {
    int hour = 0;
    int minute = 0;
    int second = 0;
    CalendarDate date;
};

// The main window's display routines, as the model calls them. The model keeps
// what is shown (ShownBase, ShownBd, ShownStatus, LedColour) and hands the texts
// and colours over; the window only draws.
class DisplaySink {
public:
    virtual ~DisplaySink() = default;
    virtual void Update_BaseDisplay(const std::string& text) = 0;
    virtual void Update_BdDisplay(const std::string& text) = 0;
    virtual void Update_ModeDisplay(const std::string& text, Colour colour) = 0;
    virtual void Update_SensKnob(int sensPos) = 0;
    virtual void Update_LED(Colour colour) = 0;
    virtual void Update_Clock(int hour, int minute, int second, const CalendarDate& date) = 0;
    virtual void showPlayTime(const std::string& text) = 0;
};

// For callers that need a sink but show nothing (tools, benchmarks).
class NullDisplaySink : public DisplaySink {
public:
    void Update_BaseDisplay(const std::string&) override {}
    void Update_BdDisplay(const std::string&) override {}
    void Update_ModeDisplay(const std::string&, Colour) override {}
    void Update_SensKnob(int) override {}
    void Update_LED(Colour) override {}
    void Update_Clock(int, int, int, const CalendarDate&) override {}
    void showPlayTime(const std::string&) override {}
};

}  // namespace lv
