#include "lv3sim/meter.h"

#include <gtest/gtest.h>

#include "lv3sim/rx_log.h"

namespace lv::sim {
namespace {

struct Step {
    std::string line;
    std::string reply;
    MeterMode mode;
};

const MeterIdentity kIdentity{"3A", "1.0", "2.0"};
const std::string kVersion = "V,LV3A,1.0,2.0\r";

void play(Meter& meter, const std::vector<Step>& steps) {
    for (const Step& s : steps) {
        SCOPED_TRACE("line " + escapeBytes(s.line));
        EXPECT_EQ(meter.handleLine(s.line).reply, s.reply);
        EXPECT_EQ(meter.mode(), s.mode);
    }
}

TEST(Meter, FollowsTheProgramsDialogues) {
    using M = MeterMode;
    const std::vector<std::vector<Step>> dialogues = {
        // Port probe, then the start sequence of a "3A" meter.
        {{"Q", "", M::Idle},
         {"Q", "", M::Idle},
         {"V", kVersion, M::Idle},
         {"U", "", M::Streaming},
         {"R", "", M::Streaming},
         {"V", kVersion, M::Streaming},
         {"Q", "", M::Idle}},
        // Dial test and calibration, then the restart.
        {{"U", "", M::Streaming},
         {"N0C6", "", M::Streaming},
         {"S", "", M::Scale},
         {"800N", "", M::Scale},
         {"0c6N", "", M::Scale},
         {"I", "", M::Idle},
         {"", "", M::Idle},
         {"R", "", M::Idle},
         {"U", "", M::Streaming}},
        // Upload: the loader answers every line, the end record leaves it.
        {{"U", "", M::Streaming},
         {"H", "", M::Loader},
         {"V", "FAIL\r", M::Loader},
         {"\xC2\xD4", "PASS\r", M::Loader},
         {":020000040000FA", "PASS\r", M::Loader},
         {":00000001FE", "FAIL\r", M::Loader},
         {"H", "", M::Loader},
         {":020000040000FA", "FAIL\r", M::Loader},
         {"\xC2\xD4", "PASS\r", M::Loader},
         {":00000001FF", "PASS\r", M::Idle},
         {"V", kVersion, M::Idle}},
        // "Terminate" gets a meter out of a loader that was never unlocked.
        {{"H", "", M::Loader}, {":00000001FF", "PASS\r", M::Idle}},
        // Lines that mean nothing outside their mode are ignored.
        {{":00000001FF", "", M::Idle},
         {"800N", "", M::Idle},
         {"\xC2\xD4", "", M::Idle},
         {"v", "", M::Idle}},
    };
    for (const auto& dialogue : dialogues) {
        Meter meter(kIdentity, 0);
        play(meter, dialogue);
    }
}

TEST(Meter, RemembersAndNotesWhatItWasTold) {
    const struct {
        std::vector<std::string> lines;
        const char* lastNote;
        std::optional<int> dial;
    } cases[] = {
        {{"S", "800N"}, "dial 2048", 2048},
        {{"S", "FFFN", "80GN"}, "unknown command", 4095},
        {{"N0C6"}, "dial test 198", 198},
        {{"SL", "SR"}, "sensor remote", std::nullopt},
        {{"P800   2051"}, "playback needle 2048 bd off base 205 flags 1", std::nullopt},
        {{"P0000100000A"}, "playback needle 0 bd 0100 base 000 flags 10", std::nullopt},
        {{"P800   205"}, "unknown command", std::nullopt},
    };
    for (const auto& c : cases) {
        Meter meter(kIdentity, 0);
        MeterResponse last;
        for (const std::string& line : c.lines) last = meter.handleLine(line);
        EXPECT_EQ(last.reply, "");
        ASSERT_EQ(last.notes.size(), 1u);
        EXPECT_EQ(last.notes[0], c.lastNote);
        EXPECT_EQ(meter.dialValue(), c.dial) << c.lastNote;
    }
}

}  // namespace
}  // namespace lv::sim
