#include <gtest/gtest.h>

#include "device/port_candidates.h"
#include "device/protocol.h"

namespace lv::protocol {
namespace {

TEST(SplitFrame, ReadsTheFieldsAtTheirPositionsAndRefusesBadLines) {
    const std::tuple<const char*, char, unsigned, unsigned, unsigned, int> good[] = {
        {"P12342A5000F", 'P', 0x1234, 0x2A, 5, 15},
        {"p12ab2a8000a", 'p', 0x12AB, 0x2A, 8, 10},
        {"X00000008000", 'X', 0, 0, 0, -32768}};
    for (const auto& [line, letter, needle, knob, status, bd] : good) {
        const auto f = splitFrame(line);
        ASSERT_TRUE(f) << line;
        EXPECT_EQ(std::tuple(f->letter, unsigned{f->needle}, unsigned{f->knob}, unsigned{f->status},
                             int{f->bd}),
                  std::tuple(letter, needle, knob, status, bd))
            << line;
    }
    for (const char* line : {"", "P12342A5000", "P12342A5000F0", "P12342A5000F\r", "PG2342A5000F",
                             "P1234 A5000F", "P12342AZ000F", "P12342A5+00F", "P12342A5000x"})
        EXPECT_FALSE(splitFrame(line)) << line;
}

TEST(PlaybackLine, FieldsByRule) {
    // (needle x 1024) / 5542 truncated, + 2048, kept to 0..4095; BD quarters in three or more
    // digits while counting; Base as "0.00" without the point; flags as their last hex digit.
    const std::tuple<std::int32_t, bool, std::int32_t, const char*, int, const char*> cases[] = {
        {5541, false, 0, "2.0", 0, "PBFF   2000\r"},
        {-30000, false, 0, "2.0", 0, "P000   2000\r"},
        {30000, false, 0, "2.0", 0, "PFFF   2000\r"},
        {0, true, 60, "2.0", 8, "P8000602008\r"},
        {0, true, 1234, "2.05", 0x1B, "P8001234205B\r"}};
    for (const auto& [needle, counting, quarter, base, flags, line] : cases)
        EXPECT_EQ(playbackLine(needle, counting, quarter, base, flags), line);
}

TEST(PortCandidates, CommandLineThenEnvironmentThenSystemWithoutRepeats) {
    EXPECT_EQ(portCandidates({"/tmp/a", "/tmp/b"}, "/tmp/c::/tmp/a:", {"/dev/ttyUSB0", "/tmp/b"}),
              (std::vector<std::string>{"/tmp/a", "/tmp/b", "/tmp/c", "/dev/ttyUSB0"}));
}

}  // namespace
}  // namespace lv::protocol
