#pragma once

namespace lv {

// What the frame path hands the recorder while recording. The recorder
// owns the frame counter and the elapsed-time label; the frame path only
// says when.
class RecorderTap {
public:
    virtual ~RecorderTap() = default;
    // One complete line was taken in recording mode (skipped lines count too).
    virtual void countFrame() = 0;
    // Once per receive event that took a line: recording shows elapsed time,
    virtual void showElapsed() = 0;
    // any other mode forgets the seconds last shown.
    virtual void resetElapsed() = 0;
    // The decoded frame's letter code (80 "P", 79 "O") and BD in tenths.
    virtual void takeFrame(int letterCode, int bdTenths) = 0;
};

class NoRecorder : public RecorderTap {
public:
    void countFrame() override {}
    void showElapsed() override {}
    void resetElapsed() override {}
    void takeFrame(int, int) override {}
};

}  // namespace lv
