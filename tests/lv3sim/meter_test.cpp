// The command side of the virtual meter: bytes cut into lines, the log's
// escapes, the loader, and the meter's modes and replies.
#include "lv3sim/meter.h"

#include <gtest/gtest.h>

#include "lv3sim/line_splitter.h"
#include "lv3sim/rx_log.h"

namespace lv::sim {
namespace {

using namespace std::literals;

TEST(LineSplitter, CutsCommandsHoweverTheyArriveAndForgetsAHalfLineOnReset) {
    using Lines = std::vector<std::string>;
    const struct {
        std::vector<std::string> chunks;
        Lines lines;
        std::string pending;
    } cases[] = {
        {{"S", "L\rU"}, {"SL"}, "U"},
        {{"U\r", "\nQ\r"}, {"U", "Q"}, ""},
        {{"\r\n\n\r"}, {"", "", ""}, ""},
        {{"\xC2\xD4\r"}, {"\xC2\xD4"}, ""},
        {{"A\0B\r"s}, {"A\0B"s}, ""},
        {{std::string(LineSplitter::kMaxLine + 3, 'x')},
         {std::string(LineSplitter::kMaxLine, 'x')},
         "xxx"},
    };
    for (const auto& c : cases) {
        LineSplitter splitter;
        Lines lines;
        for (const std::string& chunk : c.chunks)
            for (std::string& line : splitter.feed(chunk)) lines.push_back(std::move(line));
        EXPECT_EQ(lines, c.lines) << "first chunk: " << escapeBytes(c.chunks.front());
        EXPECT_EQ(splitter.pending(), c.pending);
        splitter.reset();
        EXPECT_EQ(splitter.feed("V\r"), Lines{"V"});
    }
}

TEST(RxLog, ShowsControlBytesAsEscapesAndTimesToTheMicrosecond) {
    EXPECT_EQ(escapeBytes(" P8\0\t\x1F\x7F\xC2\\b"sv), " P8\\x00\\x09\\x1F\\x7F\\xC2\\x5Cb");
    EXPECT_EQ(formatSeconds(std::chrono::microseconds(12345678)), "12.345678");
}

// A line, the meter's reply, its mode after it and, where given, what the log
// is to say of it.
struct Step {
    std::string line;
    std::string reply;
    MeterMode mode;
    std::string note = {};
};

TEST(Meter, FollowsTheProgramsDialogues) {
    using M = MeterMode;
    const std::string version = "V,LV3A,1.0,2.0\r";
    const std::vector<std::vector<Step>> dialogues = {
        // Port probe, then the start sequence of a "3A" meter.
        {{"Q", "", M::Idle},
         {"V", version, M::Idle},
         {"U", "", M::Streaming},
         {"R", "", M::Streaming},
         {"V", version, M::Streaming},
         {"Q", "", M::Idle}},
        // Dial test and calibration, then the restart.
        {{"U", "", M::Streaming},
         {"N0C6", "", M::Streaming, "dial test 198"},
         {"SR", "", M::Streaming, "sensor remote"},
         {"S", "", M::Scale},
         {"800N", "", M::Scale, "dial 2048"},
         {"0c6N", "", M::Scale, "dial 198"},
         {"80GN", "", M::Scale, "unknown command"},
         {"I", "", M::Idle},
         {"", "", M::Idle},
         {"R", "", M::Idle},
         {"U", "", M::Streaming}},
        // Upload: the loader answers every line, the end record leaves it;
        // "Terminate" gets a meter out of a loader that was never unlocked.
        {{"U", "", M::Streaming},
         {"H", "", M::Loader},
         {"V", "FAIL\r", M::Loader},
         {"\xC2\xD4", "PASS\r", M::Loader},
         {":020000040000FA", "PASS\r", M::Loader},
         {":00000001FE", "FAIL\r", M::Loader},
         {":00000001FF", "PASS\r", M::Idle},
         {"V", version, M::Idle},
         {"H", "", M::Loader},
         {":020000040000FA", "FAIL\r", M::Loader},
         {":00000001FF", "PASS\r", M::Idle}},
        // Unlocked, the loader checks every HEX line and where it writes.
        {{"H", "", M::Loader},
         {"\xC2\xD4", "PASS\r", M::Loader},
         {":10e0000000000100020003000400050006000700f4", "PASS\r", M::Loader},
         {":10E0000000000100020003000400050006000700F5", "FAIL\r", M::Loader},
         {"U", "FAIL\r", M::Loader},
         {":0000000AF6", "FAIL\r", M::Loader},
         {":020000040001F9", "PASS\r", M::Loader},
         {":02E0000001001D", "FAIL\r", M::Loader},
         {":020000040000FA", "PASS\r", M::Loader},
         {":04FFFE0001000200FC", "FAIL\r", M::Loader},
         {":02FFFE00010000", "PASS\r", M::Loader}},
        // Lines that mean nothing outside their mode are ignored; replayed
        // samples are noted.
        {{":00000001FF", "", M::Idle},
         {"800N", "", M::Idle, "unknown command"},
         {"\xC2\xD4", "", M::Idle},
         {"v", "", M::Idle},
         {"P800   2051", "", M::Idle, "playback needle 2048 bd off base 205 flags 1"},
         {"P0000100000A", "", M::Idle, "playback needle 0 bd 0100 base 000 flags 10"},
         {"P800   205", "", M::Idle, "unknown command"}},
    };
    for (const auto& dialogue : dialogues) {
        Meter meter({"3A", "1.0", "2.0"}, 0);
        for (const Step& s : dialogue) {
            const MeterResponse r = meter.handleLine(s.line);
            EXPECT_EQ(r.reply, s.reply) << escapeBytes(s.line);
            EXPECT_EQ(meter.mode(), s.mode) << escapeBytes(s.line);
            if (!s.note.empty()) {
                EXPECT_EQ(r.notes, std::vector<std::string>{s.note}) << s.line;
            }
        }
    }
}

}  // namespace
}  // namespace lv::sim
