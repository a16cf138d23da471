#include "calibration/upload.h"

#include <algorithm>
#include <string>

#include "common/prompter.h"
#include "common/pump.h"
#include "device/protocol.h"
#include "device/serial_port.h"

namespace lv {

namespace {

// The answer is looked for this often. The meter may send "PASS" and its CR
// a few milliseconds apart; reading them as two pieces is what lets the
// wait end early, so the look must come well inside that gap.
constexpr double kPollSeconds = 0.001;
// Closer than this to the deadline counts as there: the clock cannot tell it apart.
constexpr double kTimerResolution = 1e-6;
// Ticks of TDelay for the meter to settle on its first mark.
constexpr double kEnterTicks = 5;
// Seconds of SDelay for the meter to leave the dial test.
constexpr double kLeaveSeconds = 5;
// Threshold the receive event is re-armed with after calibration.
constexpr int kRearmThreshold = 5;

void send(SerialPort& port, std::string_view text) {
    port.write(protocol::commandLine(text));
}

bool enterLoader(SerialPort& port, Pump& pump, Prompter& prompter) {
    for (;;) {
        send(port, protocol::kLoader);
        // Frames or answers still on their way when the meter switched.
        pump.wait(kLoaderDrainSeconds);
        port.read(port.bytesWaiting());
        send(port, kLoaderKey);
        if (Acknowledge(port, pump)) return true;
        if (prompter.ask(std::string(kLoaderTitle), std::string(kNotRespondingText),
                         Buttons::OkCancel, Icon::Information) != Answer::Ok)
            return false;
    }
}

// Sends the line until the meter takes it or the operator gives up.
bool sendRecord(SerialPort& port, Pump& pump, Prompter& prompter, const std::string& line) {
    for (;;) {
        send(port, line);
        if (Acknowledge(port, pump)) return true;
        if (prompter.ask(std::string(kUploadTitle), std::string(kErrorSendingText) + line,
                         Buttons::RetryCancel, Icon::Information) != Answer::Retry)
            return false;
    }
}

}  // namespace

bool Acknowledge(SerialPort& port, Pump& pump) {
    std::string reply;
    const double start = pump.Timer();
    for (;;) {
        // Measured from the start rather than against a time of day, so a
        // wait that spans midnight still ends.
        const double left = kAcknowledgeSeconds - secondsSince(pump, start);
        if (left <= kTimerResolution) break;
        pump.wait(std::min(kPollSeconds, left));
        if (const int waiting = port.bytesWaiting(); waiting > 0) {
            const std::string piece = port.read(waiting);
            reply += piece;
            if (piece.size() == 1 && piece[0] == protocol::kCR) break;
        }
    }
    return reply.find("PASS") != std::string::npos;
}

bool uploadCorrectionTable(SerialPort& port, Pump& pump, Prompter& prompter,
                           const CorrectionTable& table, const std::function<void(int)>& progress) {
    const std::vector<std::string> lines = correctionTableLines(table);
    bool complete = enterLoader(port, pump, prompter);
    if (complete) {
        if (progress) progress(0);
        complete = sendRecord(port, pump, prompter, lines.front());
        for (int b = 0; complete && b < kTableRecords; ++b) {
            complete = sendRecord(port, pump, prompter, lines[static_cast<std::size_t>(b) + 1]);
            if (complete && progress) progress(b);
        }
        if (complete) complete = sendRecord(port, pump, prompter, lines.back());
    }
    if (complete)
        prompter.ask(std::string(kUploadTitle), std::string(kUploadCompleteText), Buttons::Ok,
                     Icon::Information);
    else
        prompter.ask(std::string(kUploadTitle), std::string(kUploadInterruptedText), Buttons::Ok,
                     Icon::Critical);
    return complete;
}

void Terminate(SerialPort& port) {
    send(port, protocol::kHexEnd);
}

void enterCalibration(SerialPort& port, Pump& pump) {
    send(port, protocol::kDialTest);
    // The dialog talks to the meter itself; frames must not trigger the
    // receive event meanwhile, and those already here are stale.
    port.setThreshold(0);
    port.discardInput();
    TDelay(pump, kEnterTicks);
}

void leaveCalibration(SerialPort& port, Pump& pump) {
    send(port, protocol::kDialTestEnd);
    SDelay(pump, kLeaveSeconds);
    // A bare CR ends whatever partial line the meter may still hold.
    send(port, "");
    port.setThreshold(kRearmThreshold);
    send(port, protocol::kRun);
    send(port, protocol::kStart);
}

}  // namespace lv
