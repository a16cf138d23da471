#pragma once
#include <cstdio>

#include "common/display_sink.h"

namespace lv {

// Until the main window exists the program shows its readouts as text lines
// on standard output: every change of status, lamp, knob, Base and BD.
class ConsoleDisplay : public DisplaySink {
public:
    explicit ConsoleDisplay(std::FILE* out) : m_out(out) {}
    void Update_BaseDisplay(const std::string& text) override;
    void Update_BdDisplay(const std::string& text) override;
    void Update_ModeDisplay(const std::string& text, Colour colour) override;
    void Update_SensKnob(int sensPos) override;
    void Update_LED(Colour colour) override;
    void Update_Clock(int hour, int minute, int second, const CalendarDate& date) override;
    void showPlayTime(const std::string& text) override;

private:
    void line(const char* what, const std::string& text);
    std::FILE* m_out;
    std::string m_lastBd;
};

}  // namespace lv
