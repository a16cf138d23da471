#include "recording/lvd_record.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace {

using Bytes = std::array<std::uint8_t, 20>;

// One record whose every field has a distinct value, and its bytes as a
// recording file holds them.
lv::lvdRecord sampleRecord()
{
    lv::lvdRecord r;
    r.TimeMs = 0x01020304;
    r.RawData = -2;         // reading 65534
    r.NeedlePos = -2503;    // 0xF639, the needle's rest
    r.BdCount = 1234;       // 0x04D2
    r.BaseCode = 0x7B;
    r.Sensitivity = 0x40;
    r.StatusFlags = 0xAB;
    r.Reserved = 0x11;
    r.Stamp = {0x21, 0x22, 0x23, 0x24};
    r.StampMarker = 'C';
    r.FrameType = 'P';
    return r;
}

constexpr Bytes kSampleBytes = {
    0x04, 0x03, 0x02, 0x01,  // TimeMs, low byte first
    0xFE, 0xFF,              // RawData
    0x39, 0xF6,              // NeedlePos
    0xD2, 0x04,              // BdCount
    0x7B, 0x40, 0xAB, 0x11,  // BaseCode, Sensitivity, StatusFlags, reserved
    0x21, 0x22, 0x23, 0x24,  // stamp bytes
    0x43, 0x50,              // "C", "P"
};

TEST(LvdRecordBytes, EncodesEachFieldLittleEndianAtItsOffset)
{
    Bytes out{};
    lv::encodeRecord(sampleRecord(), out.data());
    EXPECT_EQ(out, kSampleBytes);
}

TEST(LvdRecordBytes, DecodesTheSameBytesBackToTheFields)
{
    EXPECT_EQ(lv::decodeRecord(kSampleBytes.data()), sampleRecord());
}

TEST(LvdRecordBytes, SignedFieldsKeepTheirExtremes)
{
    struct Case {
        Bytes bytes;
        std::int32_t time;
        std::int16_t raw;
    };
    const Case cases[] = {
        {{0xFF, 0xFF, 0xFF, 0x7F, 0x00, 0x80}, 2147483647, -32768},
        {{0x00, 0x00, 0x00, 0x80, 0xFF, 0x7F}, -2147483647 - 1, 32767},
        {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, -1, -1},
    };
    for (const Case& c : cases) {
        const lv::lvdRecord r = lv::decodeRecord(c.bytes.data());
        EXPECT_EQ(r.TimeMs, c.time);
        EXPECT_EQ(r.RawData, c.raw);
        Bytes again{};
        lv::encodeRecord(r, again.data());
        EXPECT_EQ(again, c.bytes);
    }
}

TEST(StatusFlags, PacksLampStateBdAndDialType)
{
    struct Case {
        int lamp;
        bool state;
        bool bd;
        int dial;
        std::uint8_t flags;
    };
    const Case cases[] = {
        {0, false, false, 0, 0x00}, {3, false, false, 0, 0x03}, {1, true, false, 0, 0x05},
        {2, false, true, 1, 0x2A},  {1, false, false, 3, 0x61}, {3, true, true, 7, 0xEF},
        // Only the bits that fit: lamp 4 -> 0, lamp 7 -> 3, dial 8 -> 0, dial 9 -> 1.
        {4, false, false, 8, 0x00}, {7, false, false, 9, 0x23},
    };
    for (const Case& c : cases)
        EXPECT_EQ(lv::packStatusFlags(c.lamp, c.state, c.bd, c.dial), c.flags)
            << "lamp " << c.lamp << " dial " << c.dial;
}

TEST(StatusFlags, UnpacksEachFieldAndIgnoresBitFour)
{
    struct Case {
        std::uint8_t flags;
        int lamp;
        bool state;
        bool bd;
        int dial;
    };
    const Case cases[] = {
        {0xFF, 3, true, true, 7}, {0x10, 0, false, false, 0}, {0x2A, 2, false, true, 1},
        {0x61, 1, false, false, 3}, {0x04, 0, true, false, 0}, {0xE0, 0, false, false, 7},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lv::lampCodeOf(c.flags), c.lamp) << int(c.flags);
        EXPECT_EQ(lv::stateFlagOf(c.flags), c.state) << int(c.flags);
        EXPECT_EQ(lv::bdFlagOf(c.flags), c.bd) << int(c.flags);
        EXPECT_EQ(lv::dialTypeOf(c.flags), c.dial) << int(c.flags);
    }
}

TEST(FrameType, OnlyTheThreeFrameLettersAreValid)
{
    for (int c = 0; c < 256; ++c) {
        const bool expected = c == 'O' || c == 'P' || c == 'T';
        EXPECT_EQ(lv::isValidFrameType(static_cast<std::uint8_t>(c)), expected) << c;
    }
}

TEST(RecordReadout, ShowsWhatPlaybackDisplays)
{
    struct Case {
        std::uint8_t base;
        std::int16_t bd;
        std::int16_t raw;
        std::uint8_t flags;
        const char* baseText;
        const char* bdText;
        std::int32_t rawReading;
        int lamp;
        bool bdFlag;
        int dial;
    };
    const Case cases[] = {
        // ((68 >> 1) + 8) / 20 = 2.1; BD 99.9 keeps its tenths.
        {68, 999, 100, 0x08, "2.1", "99.9", 100, 0, true, 0},
        // (33 + 8) / 20 = 2.05; from 100.0 on the BD shows whole units.
        {67, 1234, -1, 0x21, "2.05", "123", 65535, 1, false, 1},
        {0, -5, -32768, 0x42, "0.4", "-0.5", 32768, 2, false, 2},
        {255, 0, 0, 0x6B, "6.75", "0.0", 0, 3, true, 3},
    };
    for (const Case& c : cases) {
        lv::lvdRecord r;
        r.BaseCode = c.base;
        r.BdCount = c.bd;
        r.RawData = c.raw;
        r.StatusFlags = c.flags;
        r.Sensitivity = 41;
        r.NeedlePos = -2503;
        const lv::RecordReadout out = lv::readoutOf(r);
        EXPECT_EQ(out.base, c.baseText);
        EXPECT_EQ(out.bd, c.bdText);
        EXPECT_EQ(out.rawReading, c.rawReading);
        EXPECT_EQ(out.lampCode, c.lamp);
        EXPECT_EQ(out.bdFlag, c.bdFlag);
        EXPECT_EQ(out.dialType, c.dial);
        EXPECT_EQ(out.sensitivity, 41);
        EXPECT_EQ(out.needlePos, -2503);
    }
}

}  // namespace
