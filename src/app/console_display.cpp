#include "app/console_display.h"

#include "signal/sens_table.h"

namespace lv {

void ConsoleDisplay::line(const char* what, const std::string& text) {
    std::fprintf(m_out, "%-7s %s\n", what, text.c_str());
    std::fflush(m_out);
}

void ConsoleDisplay::Update_BaseDisplay(const std::string& text) {
    line("Base", text);
}

void ConsoleDisplay::Update_BdDisplay(const std::string& text) {
    // The BD readout is redrawn on every status change; print only news.
    if (text == m_lastBd) return;
    m_lastBd = text;
    line("BD", text);
}

void ConsoleDisplay::Update_ModeDisplay(const std::string& text, Colour) {
    line("Status", text);
}

void ConsoleDisplay::Update_SensKnob(int sensPos) {
    line("Knob", std::to_string(sensPos) + " (" + sensLabel(sensPos) + ")");
}

void ConsoleDisplay::Update_LED(Colour colour) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "#%02X%02X%02X", redOf(colour), greenOf(colour), blueOf(colour));
    line("Lamp", hex);
}

void ConsoleDisplay::Update_Clock(int hour, int minute, int second, const CalendarDate&) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", hour, minute, second);
    line("Clock", text);
}

void ConsoleDisplay::showPlayTime(const std::string& text) {
    line("Time", text);
}

}  // namespace lv
