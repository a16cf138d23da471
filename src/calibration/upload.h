#pragma once
#include <functional>
#include <string_view>

#include "calibration/correction_table.h"

// Writing the correction table into the meter through its loader, one Intel
// HEX line at a time, each answered "PASS"; and the exchange that takes the
// meter into dial calibration and back to streaming. Every wait goes through
// the Pump, so the window stays responsive (and "Terminate" can be pressed)
// while a line is in flight.
namespace lv {

class Prompter;
class Pump;
class SerialPort;

// How long the meter has to answer a line.
inline constexpr double kAcknowledgeSeconds = 0.3;
// After "H", what the meter still sends is read and thrown away for this long.
inline constexpr double kLoaderDrainSeconds = 0.2;
// The progress bar's range is 0 to this; the values it gets are record
// indexes, 0 to 511.
inline constexpr int kUploadProgressMax = kTableRecords;

inline constexpr std::string_view kLoaderKey = "\xC2\xD4";
inline constexpr std::string_view kNotRespondingText =
    "Hardware not responding, check connections, try again ";
inline constexpr std::string_view kLoaderTitle = "Firmware Upgrade";
inline constexpr std::string_view kUploadTitle = "Firmware Upload";
inline constexpr std::string_view kErrorSendingText = "Error sending ";
inline constexpr std::string_view kUploadCompleteText = "Upload Complete";
inline constexpr std::string_view kUploadInterruptedText =
    "Upload was interrupted, your meter may not function properly.\n"
    "Contact manufacturer if the meter shows a permanent red light.";

// Waits for the meter's answer to a line: true when "PASS" came within
// 0.3 s. It ends early only when the piece read last is a lone carriage
// return; an answer that arrives whole ("PASS" and its CR together) is
// waited out to the deadline.
bool Acknowledge(SerialPort& port, Pump& pump);

// The whole upload: loader entry (OK retries it), the address record, the
// 512 data records, the end record (Retry resends a refused line), then the
// closing message. `progress` gets 0 when the records start and the index
// of each record once it is acknowledged. True when the meter took it all.
bool uploadCorrectionTable(SerialPort& port, Pump& pump, Prompter& prompter,
                           const CorrectionTable& table,
                           const std::function<void(int)>& progress = {});

// "Terminate": the end record alone, which takes the meter out of its
// loader whatever state the upload left it in.
void Terminate(SerialPort& port);

// Before the calibration dialog: the meter's needle to its first mark, the
// receive event disarmed and the stream's leftovers dropped.
void enterCalibration(SerialPort& port, Pump& pump);
// After it: the dial test ended, the receive event re-armed and the meter
// streaming again.
void leaveCalibration(SerialPort& port, Pump& pump);

}  // namespace lv
