#pragma once
#include <string>
#include <vector>

#include "recording/record_panel_sink.h"

namespace lv::test {

// Keeps what the recording panel would show, and every call in order.
class RecordingPanel : public RecordPanelSink {
public:
    std::vector<std::string> calls;
    std::string loadedCaption, loadedTooltip, modeCaption, modeTooltip, naming, saveCaption,
        playTime, totalTime, tag, loopCaption, panelWord;
    Colour playTimeColour = 0;
    bool tagVisible = false;
    Enabled enabled;
    int loadProgress = 0;
    double playFraction = 0, endFraction = 1;

    void setLoadedFile(const std::string& c, const std::string& t) override {
        loadedCaption = c;
        loadedTooltip = t;
        calls.push_back("LoadedFile(" + c + "|" + t + ")");
    }
    void setMode(const std::string& c, const std::string& t) override {
        modeCaption = c;
        modeTooltip = t;
        calls.push_back("Mode(" + c + "|" + t + ")");
    }
    void setNaming(const std::string& p) override {
        naming = p;
        calls.push_back("Naming(" + p + ")");
    }
    void setSaveCaption(const std::string& c) override {
        saveCaption = c;
        calls.push_back("SaveCaption(" + c + ")");
    }
    void setPlayTime(const std::string& t, Colour c) override {
        playTime = t;
        playTimeColour = c;
        calls.push_back("PlayTime(" + t + ")");
    }
    void setTotalTime(const std::string& t) override {
        totalTime = t;
        calls.push_back("TotalTime(" + t + ")");
    }
    void setTag(const std::string& t) override {
        tag = t;
        calls.push_back("Tag(" + t + ")");
    }
    void setTagVisible(bool v) override { tagVisible = v; }
    void setEnabled(const Enabled& e) override { enabled = e; }
    void setLoopCaption(const std::string& c) override {
        loopCaption = c;
        calls.push_back("Loop(" + c + ")");
    }
    void setLoadProgress(int f) override { loadProgress = f; }
    void setPosition(double play, double end) override {
        playFraction = play;
        endFraction = end;
    }
    void setPanelWord(const std::string& w) override {
        panelWord = w;
        calls.push_back("Word(" + w + ")");
    }
};

}  // namespace lv::test
