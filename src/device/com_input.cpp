#include "device/com_input.h"

#include "device/link_status.h"
#include "device/protocol.h"
#include "signal/lamp_rules.h"
#include "signal/needle_model.h"

namespace lv {

namespace {

constexpr int kGoodFramesForOk = 5;
// A device that never sends a CR (a wrong baud rate, an unrelated device)
// would otherwise grow the pending text for as long as the program runs.
// Well past any real frame, only a possible frame's worth of tail is kept.
constexpr std::size_t kPendingLimit = 256;
constexpr std::size_t kPendingTail = protocol::kFrameFieldsLength + 1;

void badFrame(LiveContext& ctx) {
    MeterState& st = ctx.st;
    st.GoodFrames = 0;
    // Forgetting the shown BD text makes the next good frame draw it afresh.
    st.ShownBd.clear();
    st.StatusText = std::string(kStatusInputError);
    if (st.ShownStatus != kStatusInputError)
        showStatus(st, ctx.display, kStatusInputError, kStatusErrorColour);
    lampInputError(st, ctx.cfg, ctx.display);
}

void countGoodFrame(LiveContext& ctx) {
    MeterState& st = ctx.st;
    if (st.GoodFrames < kGoodFramesForOk) {
        ++st.GoodFrames;
        if (st.GoodFrames == kGoodFramesForOk) {
            lampRecover(st, ctx.cfg, ctx.display);
            st.StatusText = std::string(st.RunMode == kRunLive ? kStatusInputOk : kStatusRecording);
            if (st.StatusText != st.ShownStatus)
                showStatus(st, ctx.display, st.StatusText, ctx.cfg.Text_Color);
        }
    }
    // Someone else (the watchdog) declared an error after the link was judged
    // good: it has to earn five good frames again.
    if (st.ShownStatus == kStatusInputError && st.GoodFrames == kGoodFramesForOk) st.GoodFrames = 0;
}

}  // namespace

void comInputOverflow(LiveContext& ctx) {
    MeterState& st = ctx.st;
    st.pendingText.clear();
    lampLag(st, ctx.cfg, ctx.display);
    st.GoodFrames = 0;
}

void comInputText(LiveContext& ctx, std::string_view waiting) {
    MeterState& st = ctx.st;
    st.NewData = false;
    st.DataSilent = false;
    st.pendingText.append(waiting);

    int lines = 0;
    std::string line;
    bool taken = false;
    for (;;) {
        const auto cr = st.pendingText.find(protocol::kCR);
        if (cr == std::string::npos) break;
        ++lines;
        if (st.RunMode == kRunRecording) ctx.recorder.countFrame();
        line.assign(st.pendingText, 0, cr);
        st.pendingText.erase(0, cr + 1);
        taken = true;
        // A reference frame must be shown, not skipped for a later one.
        if (line.find('O') != std::string::npos) break;
    }
    if (st.pendingText.size() > kPendingLimit &&
        st.pendingText.find(protocol::kCR) == std::string::npos)
        st.pendingText.erase(0, st.pendingText.size() - kPendingTail);
    if (!taken) return;

    if (st.RunMode == kRunRecording)
        ctx.recorder.showElapsed();
    else
        ctx.recorder.resetElapsed();

    const auto fields = protocol::splitFrame(line);
    if (!fields) {
        badFrame(ctx);
        return;
    }

    st.SensPos = static_cast<std::int16_t>(fields->knob / 2);
    if (st.SensPos != st.lastKnobPos) {
        ctx.display.Update_SensKnob(st.SensPos);
        st.lastKnobPos = st.SensPos;
    }

    if (fields->letter != 'P' && fields->letter != 'O') {
        badFrame(ctx);
        return;
    }
    st.RawNeedle = fields->needle;
    st.NewData = true;
    if (fields->letter == 'O') st.ReferencePending = true;

    if (lines > st.LagLimit) {
        lampLag(st, ctx.cfg, ctx.display);
        st.GoodFrames = 0;
    }
    countGoodFrame(ctx);

    st.StatusFlags = fields->status;
    if (fields->status != st.lastStatusDigit) {
        lampForStatus(st, ctx.cfg, ctx.display, fields->status);
        st.BdCounting = (fields->status & 0x8) != 0;
        ctx.display.Update_BdDisplay(st.ShownBd);
        st.lastStatusDigit = fields->status;
    }

    st.BdValue = fields->bd;
    st.BdQuarter = st.BdValue * 4;
    const std::string bd = bdText(st.BdValue);
    if (bd != st.ShownBd) {
        st.ShownBd = bd;
        ctx.display.Update_BdDisplay(bd);
    }

    if (st.RunMode == kRunRecording)
        ctx.recorder.takeFrame(static_cast<unsigned char>(fields->letter), st.BdQuarter / 4);
}

void Com_Input(LiveContext& ctx, SerialPort& port) {
    const int waiting = port.bytesWaiting();
    if (waiting >= kOverflowCount) {
        port.discardInput();
        comInputOverflow(ctx);
        return;
    }
    comInputText(ctx, port.read(waiting));
}

}  // namespace lv
