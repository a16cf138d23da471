#pragma once
#include <string>

#include "common/colour.h"

namespace lv {

// The controls of the recording panel, as the recorder and the player drive
// them. The panel widget implements it; tests record the calls.
class RecordPanelSink {
public:
    virtual ~RecordPanelSink() = default;

    // lblLoadedFile: caption and tooltip.
    virtual void setLoadedFile(const std::string& caption, const std::string& tooltip) = 0;
    // lblRecMode: caption (the mode's name) and tooltip.
    virtual void setMode(const std::string& caption, const std::string& tooltip) = 0;
    // lblNaming: the naming pattern, e.g. "Prefix_nnn" or "Prefix_Date__Time".
    virtual void setNaming(const std::string& pattern) = 0;
    // cmdSave caption: "Save" or "Save As".
    virtual void setSaveCaption(const std::string& caption) = 0;
    // lblPlayTime: text and colour (red while recording).
    virtual void setPlayTime(const std::string& text, Colour colour) = 0;
    virtual void setTotalTime(const std::string& text) = 0;  // lblTotalTime
    virtual void setTag(const std::string& text) = 0;        // lblTag
    virtual void setTagVisible(bool visible) = 0;

    // Which controls can be used: the recorder and the player decide, the
    // panel only greys out.
    struct Enabled {
        bool record = true, stop = true, play = true, loop = true, fwd = true, rev = true,
             save = true, load = true, settings = true, positionBar = true;
    };
    virtual void setEnabled(const Enabled& enabled) = 0;
    virtual void setLoopCaption(const std::string& caption) = 0;  // "Loop" / "Single"

    // picFilePosition: loading progress (0..50 fiftieths filled from the
    // left), the play marker and the play end, as fractions 0..1 of the bar.
    virtual void setLoadProgress(int fiftieths) = 0;
    virtual void setPosition(double playFraction, double endFraction) = 0;

    // The word on the meter panel: "RECORD", "PLAY", "PAUSE", or "" for none.
    virtual void setPanelWord(const std::string& word) = 0;
};

}  // namespace lv
