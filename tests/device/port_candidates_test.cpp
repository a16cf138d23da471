#include <gtest/gtest.h>

#include "device/port_candidates.h"

namespace lv {
namespace {

TEST(PortCandidates, CommandLineThenEnvironmentThenSystemWithoutRepeats) {
    EXPECT_EQ(portCandidates({"/tmp/a", "/tmp/b"}, "/tmp/c::/tmp/a:", {"/dev/ttyUSB0", "/tmp/b"}),
              (std::vector<std::string>{"/tmp/a", "/tmp/b", "/tmp/c", "/dev/ttyUSB0"}));
    EXPECT_TRUE(portCandidates({}, "", {}).empty());
}

}  // namespace
}  // namespace lv
