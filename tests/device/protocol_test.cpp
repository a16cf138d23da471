#include <gtest/gtest.h>

#include "device/protocol.h"

namespace lv::protocol {
namespace {

TEST(SplitFrame, ReadsTheFieldsAtTheirPositions) {
    struct Case {
        const char* line;
        char letter;
        unsigned needle, knob, status;
        int bd;
    };
    const Case cases[] = {
        {"P12342A5000F", 'P', 0x1234, 0x2A, 5, 15}, {"OFFFF7FFFFFF", 'O', 65535, 0x7F, 15, -1},
        {"p12ab2a8000a", 'p', 0x12AB, 0x2A, 8, 10}, {"P000000003E8", 'P', 0, 0, 0, 1000},
        {"X00000008000", 'X', 0, 0, 0, -32768},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const auto f = splitFrame(c.line);
        ASSERT_TRUE(f);
        EXPECT_EQ(f->letter, c.letter);
        EXPECT_EQ(f->needle, c.needle);
        EXPECT_EQ(f->knob, c.knob);
        EXPECT_EQ(f->status, c.status);
        EXPECT_EQ(f->bd, c.bd);
    }
}

TEST(SplitFrame, RefusesWrongLengthsAndNonHexFields) {
    for (const char* line :
         {"", "P", "P12342A5000", "P12342A5000F0", "P12342A5000F\r", "PG2342A5000F", "P1234 A5000F",
          "P12342AZ000F", "P12342A5+00F", "P12342A5000x"}) {
        SCOPED_TRACE(line);
        EXPECT_FALSE(splitFrame(line));
    }
}

TEST(VersionReply, KeepsOnlyCommaToCapitalZ) {
    const std::string all = "V,lv3A ,1.0\r-/:@Z[a";
    std::string kept;
    for (char c : all)
        if (keptInVersionReply(c)) kept += c;
    EXPECT_EQ(kept, "V,3A,1.0-/:@Z");
}

TEST(VersionReply, FieldsAndMissingCommas) {
    struct Case {
        const char* reply;
        bool ok;
        VersionInfo expected;
    };
    const VersionInfo before{"OLDHW", "OC", "OLDBOOT", "OLDFW"};
    const Case cases[] = {
        {"V,LV3A,1.02,2.10", true, {"LV3A", "3A", "1.02", "2.10"}},
        {"V,LV40,B7,F1,X", true, {"LV40", "40", "B7", "F1,X"}},
        {"V,LV31,B7", true, {"LV31", "31", "OLDBOOT", ""}},
        {"V,LV2A", true, {"OLDHW", "2A", "", ""}},
        {"V,LV", true, {"OLDHW", "", "", ""}},
        {"V,LV3", true, {"OLDHW", "3", "", ""}},
        {"V,3A,1,2", false, before},
        {"V,L", false, before},
        {"", false, before},
        {"P,LV40,1,2", false, before},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reply);
        VersionInfo info = before;
        EXPECT_EQ(parseVersionReply(c.reply, info), c.ok);
        EXPECT_EQ(info.hardware, c.expected.hardware);
        EXPECT_EQ(info.code, c.expected.code);
        EXPECT_EQ(info.boot, c.expected.boot);
        EXPECT_EQ(info.firmware, c.expected.firmware);
    }
}

TEST(PlaybackLine, FieldsByRule) {
    struct Case {
        std::int32_t needle;
        bool counting;
        std::int32_t quarter;
        const char* base;
        int flags;
        const char* line;
    };
    const Case cases[] = {
        // (needle x 1024) / 5542 truncated, + 2048, kept to 0..4095.
        {0, false, 0, "2.0", 0, "P800   2000\r"},
        {5542, false, 0, "2.0", 0, "PC00   2000\r"},
        {-5542, false, 0, "2.0", 0, "P400   2000\r"},
        {5541, false, 0, "2.0", 0, "PBFF   2000\r"},
        {30000, false, 0, "2.0", 0, "PFFF   2000\r"},
        {-30000, false, 0, "2.0", 0, "P000   2000\r"},
        // BD quarters in three or more digits while counting.
        {0, true, 60, "2.0", 8, "P8000602008\r"},
        {0, true, 1234, "2.0", 8, "P80012342008\r"},
        // Base as "0.00" without the point; flags as their last hex digit.
        {0, false, 0, "2.05", 0x1B, "P800   205B\r"},
        {0, false, 0, "6.5", 3, "P800   6503\r"},
        {0, false, 0, "0.5", 1, "P800   0501\r"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(playbackLine(c.needle, c.counting, c.quarter, c.base, c.flags), c.line);
    }
}

TEST(Commands, DialNeedleDriveInThreeUpperHexDigits) {
    EXPECT_EQ(dialNeedleCommand(2048), "800N");
    EXPECT_EQ(dialNeedleCommand(198), "0C6N");
    EXPECT_EQ(dialNeedleCommand(4095), "FFFN");
    EXPECT_EQ(dialNeedleCommand(0), "000N");
}

}  // namespace
}  // namespace lv::protocol
