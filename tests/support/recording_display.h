#pragma once
#include <string>
#include <utility>
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

    void Update_BaseDisplay(const std::string& t) override { calls.push_back("Base(" + t + ")"); }
    void Update_BdDisplay(const std::string& t) override { calls.push_back("Bd(" + t + ")"); }
    void Update_ModeDisplay(const std::string& t, Colour c) override {
        calls.push_back("Mode(" + t + "," + std::to_string(c) + ")");
    }
    void Update_SensKnob(int p) override { calls.push_back("Knob(" + std::to_string(p) + ")"); }
    void Update_LED(Colour c) override { calls.push_back("LED(" + std::to_string(c) + ")"); }
    void Update_Clock(int h, int m, int s, const CalendarDate& d) override {
        using std::to_string;
        calls.push_back("Clock(" + to_string(h) + "," + to_string(m) + "," + to_string(s) + "," +
                        to_string(d.year) + "-" + to_string(d.month) + "-" + to_string(d.day) +
                        ")");
    }
    void showPlayTime(const std::string& t) override { calls.push_back("PlayTime(" + t + ")"); }

    // The lines that start with prefix, e.g. only("LED(").
    std::vector<std::string> only(const std::string& prefix) const {
        std::vector<std::string> out;
        for (const std::string& c : calls)
            if (c.compare(0, prefix.size(), prefix) == 0) out.push_back(c);
        return out;
    }

    void clear() { calls.clear(); }

    // The calls so far, and a fresh start.
    std::vector<std::string> take() { return std::exchange(calls, {}); }
};

}  // namespace lv::test
