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
        {{"U\r", "\n\n\r"}, {"U", "", ""}, ""},
        {{"\xC2\xD4\r"}, {"\xC2\xD4"}, ""},
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

// A line, the meter's reply, its mode after it and, where given, the log's note.
struct Step {
    std::string line;
    std::string reply;
    MeterMode mode;
    std::string note = {};
};

TEST(Meter, FollowsTheProgramsDialogues) {
    using M = MeterMode;
    const std::string v = "V,LV3A,1.0,2.0\r", key = "\xC2\xD4", eof = ":00000001FF";
    const std::string ela0 = ":020000040000FA", row = ":10E0000000000100020003000400050006000700";
    // clang-format off
    const std::vector<std::vector<Step>> dialogues = {
        // Port probe, then the start sequence of a "3A" meter.
        {{"Q", "", M::Idle}, {"V", v, M::Idle}, {"U", "", M::Streaming}, {"V", v, M::Streaming},
         {"Q", "", M::Idle}},
        // Dial test and calibration, then the restart.
        {{"U", "", M::Streaming}, {"N0C6", "", M::Streaming, "dial test 198"},
         {"SR", "", M::Streaming, "sensor remote"}, {"S", "", M::Scale},
         {"0c6N", "", M::Scale, "dial 198"}, {"80GN", "", M::Scale, "unknown command"},
         {"I", "", M::Idle}, {"", "", M::Idle}, {"U", "", M::Streaming}},
        // Upload: the loader answers every line, the end record leaves it;
        // "Terminate" gets a meter out of a loader that was never unlocked.
        {{"U", "", M::Streaming}, {"H", "", M::Loader}, {"V", "FAIL\r", M::Loader},
         {key, "PASS\r", M::Loader}, {eof, "PASS\r", M::Idle}, {"V", v, M::Idle},
         {"H", "", M::Loader}, {ela0, "FAIL\r", M::Loader}, {eof, "PASS\r", M::Idle}},
        // Unlocked, the loader checks every HEX line and where it writes.
        {{"H", "", M::Loader}, {key, "PASS\r", M::Loader}, {row + "f4", "PASS\r", M::Loader},
         {row + "F5", "FAIL\r", M::Loader}, {":0000000AF6", "FAIL\r", M::Loader},
         {":020000040001F9", "PASS\r", M::Loader}, {":02E0000001001D", "FAIL\r", M::Loader},
         {ela0, "PASS\r", M::Loader}, {":04FFFE0001000200FC", "FAIL\r", M::Loader},
         {":02FFFE00010000", "PASS\r", M::Loader}},
        // Lines that mean nothing outside their mode are ignored; replayed samples are noted.
        {{eof, "", M::Idle}, {"800N", "", M::Idle, "unknown command"}, {"v", "", M::Idle},
         {"P800   2051", "", M::Idle, "playback needle 2048 bd off base 205 flags 1"},
         {"P800   205", "", M::Idle, "unknown command"}},
    };
    // clang-format on
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
