#include "lv3sim/meter.h"

#include <gtest/gtest.h>

#include "lv3sim/rx_log.h"

namespace lv::sim {
namespace {

using namespace std::literals;

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
