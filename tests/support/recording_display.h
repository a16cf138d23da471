#pragma once
#include <string>
#include <vector>

#include "common/display_sink.h"

namespace lv::test {

// A DisplaySink that writes every call down, in order, as one short line:
// "Base(6.5)", "Bd(3.0)", "Mode(Input OK,0)", "Knob(36)", "LED(255)",
// "Clock(13,5,0,2024-2-29)", "PlayTime(1:05)". A test compares the whole
// sequence, or only the lines of one routine, with one EXPECT_EQ.
class RecordingDisplay : public lv::DisplaySink {
public:
    std::vector<std::string> calls;

    void Update_BaseDisplay(const std::string& text) override {
        calls.push_back("Base(" + text + ")");
    }
    void Update_BdDisplay(const std::string& text) override { calls.push_back("Bd(" + text + ")"); }
    void Update_ModeDisplay(const std::string& text, Colour colour) override {
        calls.push_back("Mode(" + text + "," + std::to_string(colour) + ")");
    }
    void Update_SensKnob(int sensPos) override {
        calls.push_back("Knob(" + std::to_string(sensPos) + ")");
    }
    void Update_LED(Colour colour) override {
        calls.push_back("LED(" + std::to_string(colour) + ")");
    }
    void Update_Clock(int hour, int minute, int second, const CalendarDate& date) override {
        calls.push_back("Clock(" + std::to_string(hour) + "," + std::to_string(minute) + "," +
                        std::to_string(second) + "," + std::to_string(date.year) + "-" +
                        std::to_string(date.month) + "-" + std::to_string(date.day) + ")");
    }
    void showPlayTime(const std::string& text) override {
        calls.push_back("PlayTime(" + text + ")");
    }

    // The lines that start with prefix, e.g. only("LED(").
    std::vector<std::string> only(const std::string& prefix) const {
        std::vector<std::string> out;
        for (const std::string& c : calls)
            if (c.compare(0, prefix.size(), prefix) == 0) out.push_back(c);
        return out;
    }

    void clear() { calls.clear(); }

    // The calls so far, and a fresh start.
    std::vector<std::string> take() {
        std::vector<std::string> out;
        out.swap(calls);
        return out;
    }
};

}  // namespace lv::test
