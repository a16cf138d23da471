#include <gtest/gtest.h>

#include "device/port_candidates.h"

namespace lv {
namespace {

TEST(PortCandidates, CommandLineThenEnvironmentThenSystemWithoutRepeats) {
    struct Case {
        std::vector<std::string> given;
        std::string env;
        std::vector<std::string> system;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {{}, "", {}, {}},
        {{"/tmp/a"}, "", {"/dev/ttyS0"}, {"/tmp/a", "/dev/ttyS0"}},
        {{"/tmp/a", "/tmp/b"},
         "/tmp/c:/tmp/a",
         {"/dev/ttyUSB0", "/tmp/b"},
         {"/tmp/a", "/tmp/b", "/tmp/c", "/dev/ttyUSB0"}},
        {{}, "::/tmp/x:", {}, {"/tmp/x"}},
        {{}, "/tmp/x", {}, {"/tmp/x"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.env);
        EXPECT_EQ(portCandidates(c.given, c.env, c.system), c.expected);
    }
}

}  // namespace
}  // namespace lv
