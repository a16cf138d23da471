#pragma once
#include <string>
#include <vector>

#include "recording/record_panel_sink.h"

namespace lv::test {

// Keeps what the recording panel would show, and every call in order.
class RecordingPanel : public RecordPanelSink {
public:
    std::vector<std::string> calls;
    std::string loadedCaption, loadedTooltip, naming, saveCaption, playTime, totalTime;
    Enabled enabled;
    int loadProgress = 0;
    double endFraction = 1;

    void setLoadedFile(const std::string& c, const std::string& t) override {
        note("LoadedFile(" + (loadedCaption = c) + "|" + (loadedTooltip = t) + ")");
    }
    void setMode(const std::string& c, const std::string& t) override {
        note("Mode(" + c + "|" + t + ")");
    }
    void setNaming(const std::string& p) override { note("Naming(" + (naming = p) + ")"); }
    void setSaveCaption(const std::string& c) override {
        note("SaveCaption(" + (saveCaption = c) + ")");
    }
    void setPlayTime(const std::string& t, Colour) override {
        note("PlayTime(" + (playTime = t) + ")");
    }
    void setTotalTime(const std::string& t) override { note("TotalTime(" + (totalTime = t) + ")"); }
    void setTag(const std::string& t) override { note("Tag(" + t + ")"); }
    void setTagVisible(bool) override {}
    void setEnabled(const Enabled& e) override { enabled = e; }
    void setLoopCaption(const std::string& c) override { note("Loop(" + c + ")"); }
    void setLoadProgress(int f) override { loadProgress = f; }
    void setPosition(double, double end) override { endFraction = end; }
    void setPanelWord(const std::string& w) override { note("Word(" + w + ")"); }

private:
    void note(std::string call) { calls.push_back(std::move(call)); }
};

}  // namespace lv::test
