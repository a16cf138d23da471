#include "calibration/upload.h"

#include <gtest/gtest.h>

#include <numeric>

#include "calibration/intel_hex.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

using Question = test::ScriptedPrompter::Question;
using Lines = std::vector<std::string>;
using Pieces = std::vector<std::pair<double, std::string>>;  // seconds from now, text
const Question kComplete{"Firmware Upload", "Upload Complete", Buttons::Ok, Icon::Information};
const Question kInterrupted{"Firmware Upload",
                            "Upload was interrupted, your meter may not function properly.\n"
                            "Contact manufacturer if the meter shows a permanent red light.",
                            Buttons::Ok, Icon::Critical};

// Checksums worked out by hand; lower-case digits are read, upper-case written.
TEST(IntelHex, ParsesGoodLinesFormatsThemBackAndRejectsBadOnesWithTheReason) {
    const std::pair<std::string, HexRecord> cases[] = {
        {":06e0000000000100ff0119", {HexRecordType::Data, 0xE000, {0, 0, 1, 0, 0xFF, 1}}},
        {":020000040800F2", {HexRecordType::ExtendedLinearAddress, 0, {0x08, 0}}},
        {":00000001FF", {HexRecordType::EndOfFile, 0, {}}}};
    for (const auto& [line, expected] : cases) {
        HexLineError error = HexLineError::BadChecksum;
        EXPECT_EQ(parseHexLine(line, &error), expected) << line;
        EXPECT_EQ(error, HexLineError::None);
    }
    EXPECT_EQ(formatHexRecord(cases[0].second), ":06E0000000000100FF0119");
    // 16 bytes of 0xFF at 0xFFF0: 0x10 + 0xFF + 0xF0 + 16 * 0xFF = 0x11EF.
    EXPECT_EQ(formatDataRecord(0xFFF0, std::vector<std::uint8_t>(16, 0xFF)),
              ":10FFF000" + std::string(32, 'F') + "11");
    using enum HexLineError;
    const std::pair<const char*, HexLineError> bad[] = {
        {" :00000001FF", MissingColon},   {":00000001F", OddDigits},
        {":00 000001FF", NotHex},         {":000001FF", TooShort},
        {":0200000400FA", CountMismatch}, {":00000001FE", BadChecksum}};
    for (const auto& [line, expected] : bad) {
        HexLineError error = None;
        EXPECT_FALSE(parseHexLine(line, &error).has_value()) << line;
        EXPECT_EQ(error, expected) << line << ": " << hexLineErrorText(error);
    }
}

// A refused record is resent on Retry and ends the upload on Cancel; a loader that does not
// answer its key ends it before any record.
TEST(Upload, ARefusedLineIsResentOnRetryAndEndsTheUploadOnCancel) {
    const std::string record9 = ":10E09000480049004A004B004C004D004E004F0024";
    const Question error{"Firmware Upload", "Error sending " + record9, Buttons::RetryCancel,
                         Icon::Information};
    const Question noLoader{"Firmware Upgrade",
                            "Hardware not responding, check connections, try again ",
                            Buttons::OkCancel, Icon::Information};
    const std::tuple<std::string, const char*, Answer, std::size_t, Question> cases[] = {
        {record9, "FAIL", Answer::Retry, 517, error},
        {record9, "", Answer::Retry, 517, error},
        {record9, "FAIL", Answer::Cancel, 13, error},
        {"\xC2\xD4", "", Answer::Cancel, 2, noLoader}};  // the loader's key
    for (const auto& [line, reply, answer, sent, question] : cases) {
        SCOPED_TRACE(sent);
        test::ScriptedPort port;
        test::FakePump pump;
        test::ScriptedPrompter prompter;
        prompter.answers = {answer, Answer::Ok};
        CorrectionTable table;
        std::iota(table.begin(), table.end(), 0);
        port.open();
        // A loader answering "PASS", its CR 2 ms later, but `line` once with `reply` ("" =
        // silence); after "H" it still streams a moment, and the drain must take that.
        port.onWrite = [&, refused = false](const std::string& bytes) mutable {
            if (bytes == "H\r") return pump.after(0.1, [&] { port.input += "PASS\r"; });
            const bool refuse = bytes == line + "\r" && !std::exchange(refused, true);
            port.input += refuse ? reply : "PASS";
            if (!refuse || *reply) pump.after(0.002, [&] { port.input += "\r"; });
        };
        const bool retry = answer == Answer::Retry;
        EXPECT_EQ(uploadCorrectionTable(port, pump, prompter, table, [](int) {}), retry);
        const Lines& w = port.written;
        ASSERT_EQ(w.size(), sent);  // the refused line sent last, or twice where record 9 goes
        EXPECT_EQ(Lines(w.begin() + sent - (retry ? 505 : 1), w.begin() + sent - (retry ? 503 : 0)),
                  Lines(retry ? 2 : 1, line + "\r"));
        EXPECT_EQ(prompter.asked, (std::vector{question, retry ? kComplete : kInterrupted}));
    }
}

TEST(Upload, AcknowledgeEndsAtALoneCrOrAtTheDeadline) {
    // Start of the clock, pieces of answer, seconds until the end, passed.
    const std::tuple<double, Pieces, double, bool> cases[] = {
        {36000, {{0.01, "PASS\r"}}, 0.3, true},  // whole: waited out
        {36000, {{0.01, "PASS"}, {0.015, "\r"}}, 0.015, true},
        {36000, {}, 0.3, false},
        {36000, {{0.05, "\r"}, {0.1, "PASS\r"}}, 0.05, false},
        {86399.9, {{0.01, "PASS\r"}}, 0.3, true}};  // across midnight
    for (const auto& [start, pieces, ends, pass] : cases) {
        test::ScriptedPort port;
        test::FakePump pump(start);
        for (const auto& [at, piece] : pieces)
            pump.after(at, [&port, p = piece] { port.input += p; });
        EXPECT_EQ(Acknowledge(port, pump), pass);
        const double took = pump.now() - start + (pump.now() < start ? 86400 : 0);
        EXPECT_NEAR(took, ends, 0.0015) << start << " " << pieces.size();
    }
}

}  // namespace
}  // namespace lv
