#include "recording/lvd_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include "recording/temp_folder.h"

namespace {

using namespace std::chrono;
using Bytes = std::vector<std::uint8_t>;
using lv::test::readBytes;
using lv::test::writeBytes;

constexpr std::uint8_t kDial1 = 0x20;  // dial type 1 in StatusFlags

// A file image put together byte by byte, as the format lays it out.
struct Image {
    Bytes bytes;

    // Record n (from 1): TimeMs little-endian at 0, StatusFlags at 12, FrameType at 19.
    Image& record(std::size_t n, std::int32_t timeMs, std::uint8_t flags = kDial1,
                  std::uint8_t type = 'P')
    {
        const std::size_t base = (n - 1) * 20;
        if (bytes.size() < base + 20) bytes.resize(base + 20);
        const auto t = static_cast<std::uint32_t>(timeMs);
        bytes[base + 0] = t & 0xFF;
        bytes[base + 1] = (t >> 8) & 0xFF;
        bytes[base + 2] = (t >> 16) & 0xFF;
        bytes[base + 3] = (t >> 24) & 0xFF;
        bytes[base + 12] = flags;
        bytes[base + 19] = type;
        return *this;
    }
    // Records 1..n at 20 ms steps.
    static Image steady(std::size_t n, std::uint8_t flags = kDial1)
    {
        Image image;
        for (std::size_t i = 1; i <= n; ++i) image.record(i, static_cast<std::int32_t>(i * 20), flags);
        return image;
    }
};

TEST(LvdRecordCount, LengthOverTwentyRoundedHalvesToEven)
{
    struct Case {
        std::uint64_t length;
        std::int64_t count;
    };
    const Case cases[] = {
        {0, 0},     {10, 0},    {11, 1},    {30, 2},  {50, 2},  // 0.5 -> 0, 1.5 -> 2, 2.5 -> 2
        {100, 5},   {109, 5},   {110, 6},   {119, 6}, {120, 6},  // 5.5 -> 6, 5.95 -> 6
        {130, 6},   {131, 7},   {10800000, 540000},
    };
    for (const Case& c : cases) EXPECT_EQ(lv::lvdRecordCount(c.length), c.count) << c.length << " bytes";
}

TEST(VerifyLvdFormat, AllFiveFirstRecordsMustBeFrames)
{
    struct Case {
        const char* what;
        Bytes bytes;
        bool valid;
    };
    Image badThird = Image::steady(5);
    badThird.bytes[2 * 20 + 19] = 'X';
    Image badSixth = Image::steady(6);
    badSixth.bytes[5 * 20 + 19] = 0;
    Image letters = Image::steady(5);
    letters.bytes[19] = 'O';
    letters.bytes[39] = 'T';
    Image lowerCase = Image::steady(5);
    lowerCase.bytes[99] = 'p';
    Bytes cut = Image::steady(5).bytes;
    cut.resize(99);
    const Case cases[] = {
        {"five records", Image::steady(5).bytes, true},
        {"O, T and P", letters.bytes, true},
        {"99 bytes", cut, false},
        {"four records", Image::steady(4).bytes, false},
        {"empty", {}, false},
        {"bad third", badThird.bytes, false},
        {"lower-case p", lowerCase.bytes, false},
        {"only the sixth bad", badSixth.bytes, true},
    };
    for (const Case& c : cases) EXPECT_EQ(lv::Verify_lvd_Format(c.bytes), c.valid) << c.what;
}

TEST(LoadLvdBytes, FiveValidRecordsLoadWithTheLastTimeAsTotal)
{
    Image image;
    for (std::size_t i = 1; i <= 5; ++i) image.record(i, static_cast<std::int32_t>(i * 17));
    lv::RecBuffer buffer;
    const lv::LoadResult r = lv::loadLvdBytes(image.bytes, 1, buffer);
    ASSERT_TRUE(r.ok()) << r.title;
    EXPECT_EQ(r.recordsRead, 5);
    EXPECT_EQ(buffer.RecCount, 5);
    EXPECT_EQ(buffer.upperBound(), 5);
    EXPECT_EQ(buffer.RecIndex, 1);
    EXPECT_EQ(buffer.TotalTimeMs, 85);
    EXPECT_EQ(buffer(3).TimeMs, 51);
    EXPECT_EQ(buffer.CurRecord, buffer(5));
}

TEST(LoadLvdBytes, PartialTrailingRecordsReadWithZeros)
{
    struct Case {
        std::size_t length;
        std::int32_t count;
        std::int32_t total;  // TimeMs of the last counted record
        std::uint8_t lastFlags;
        std::uint8_t lastType;
    };
    // Records 1..5 at 20 ms steps, record 6 at 0x0201 ms, 7 at 0x0403 ms, cut by the length.
    const Case cases[] = {
        {102, 5, 100, kDial1, 'P'},     // two bytes over: ignored
        {109, 5, 100, kDial1, 'P'},     // nine over: ignored
        {110, 6, 0x0201, 0, 0},         // ten over and 6 is even: flags and type missing
        {119, 6, 0x0201, kDial1, 0},    // nineteen over: only the type missing
        {120, 6, 0x0201, kDial1, 'P'},
        {130, 6, 0x0201, kDial1, 'P'},  // ten over, but 7 would be odd
        {131, 7, 0x0403, 0, 0},         // eleven over
    };
    for (const Case& c : cases) {
        Image image = Image::steady(5);
        image.record(6, 0x0201).record(7, 0x0403);
        image.bytes.resize(c.length);
        lv::RecBuffer buffer;
        ASSERT_TRUE(lv::loadLvdBytes(image.bytes, std::nullopt, buffer).ok()) << c.length;
        ASSERT_EQ(buffer.RecCount, c.count) << c.length;
        EXPECT_EQ(buffer.upperBound(), c.count) << c.length;
        EXPECT_EQ(buffer.TotalTimeMs, c.total) << c.length;
        EXPECT_EQ(buffer(c.count).StatusFlags, c.lastFlags) << c.length;
        EXPECT_EQ(buffer(c.count).FrameType, c.lastType) << c.length;
    }
}

TEST(LoadLvdBytes, IncompatibleFileLeavesTheBufferAsItWas)
{
    Image image = Image::steady(8);
    image.bytes[2 * 20 + 19] = 'Q';
    lv::RecBuffer buffer;
    buffer.append({});
    buffer.append({});
    buffer.StartTimeSecs = 77;
    const lv::LoadResult r = lv::loadLvdBytes(image.bytes, 1, buffer);
    EXPECT_EQ(r.status, lv::LoadStatus::Incompatible);
    EXPECT_EQ(r.title, "Incompatible file format");
    EXPECT_EQ(r.text, "This file is corrupt or needs to be converted to version 2 format.");
    EXPECT_EQ(buffer.RecCount, 2);
    EXPECT_EQ(buffer.upperBound(), 3000);
    EXPECT_EQ(buffer.StartTimeSecs, 77);
}

TEST(LoadLvdBytes, WrongDialTypeStopsAtTheFirstOtherRecordAndKeepsThoseRead)
{
    struct Case {
        std::vector<std::size_t> otherType;  // records recorded with dial type 2
        std::int32_t recordsRead;
    };
    const Case cases[] = {{{7, 9}, 7}, {{1}, 1}, {{10}, 10}};
    for (const Case& c : cases) {
        Image image = Image::steady(10);
        for (std::size_t n : c.otherType) image.bytes[(n - 1) * 20 + 12] = 0x40;
        lv::RecBuffer buffer;
        buffer.StartTimeSecs = 77;
        const lv::LoadResult r = lv::loadLvdBytes(image.bytes, 1, buffer);
        EXPECT_EQ(r.status, lv::LoadStatus::WrongDialType);
        EXPECT_EQ(r.title, "Wrong Dial Type");
        EXPECT_EQ(r.text, "This file is incompatible.");
        EXPECT_EQ(r.recordsRead, c.recordsRead);
        EXPECT_EQ(buffer.upperBound(), 10);
        for (std::int32_t i = 1; i <= c.recordsRead; ++i) EXPECT_EQ(buffer(i).TimeMs, i * 20) << i;
        for (std::int32_t i = c.recordsRead + 1; i <= 10; ++i) EXPECT_EQ(buffer(i), lv::lvdRecord{}) << i;
        EXPECT_EQ(buffer.StartTimeSecs, 77);  // the stamps are read only after a whole load
    }
}

TEST(LoadLvdBytes, WithoutADialTypeEveryTypeLoads)
{
    Image image = Image::steady(6, 0x00);
    image.bytes[3 * 20 + 12] = 0xE0;
    lv::RecBuffer buffer;
    const lv::LoadResult r = lv::loadLvdBytes(image.bytes, std::nullopt, buffer);
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(lv::dialTypeOf(buffer(4).StatusFlags), 7);
}

TEST(LoadLvdBytes, NoStampsMeanMidnightOnTheLastDayOf1999)
{
    lv::RecBuffer buffer;
    buffer.StartTimeSecs = 77;
    buffer.StartDays = 5;
    buffer.RecordingDate = 2020y / May / 5;
    ASSERT_TRUE(lv::loadLvdBytes(Image::steady(5).bytes, 1, buffer).ok());
    EXPECT_EQ(buffer.StartTimeSecs, 0);
    EXPECT_EQ(buffer.StartDays, 0);
    EXPECT_EQ(buffer.RecordingDate, 1999y / December / 31);
}

TEST(LoadLvdBytes, ProgressInFiftiethsWithAStepOfAtLeastOneRecord)
{
    struct Case {
        std::size_t records;
        std::size_t calls;  // every max(1, records / 50) records
        int last;           // capped at 50
    };
    const Case cases[] = {{5, 5, 5}, {49, 49, 49}, {100, 50, 50}, {149, 74, 50}, {1000, 50, 50}};
    for (const Case& c : cases) {
        std::vector<int> seen;
        lv::RecBuffer buffer;
        ASSERT_TRUE(lv::loadLvdBytes(Image::steady(c.records).bytes, 1, buffer,
                                     [&seen](int f) { seen.push_back(f); })
                        .ok());
        ASSERT_EQ(seen.size(), c.calls) << c.records << " records";
        EXPECT_EQ(seen.front(), 1);
        EXPECT_EQ(seen.back(), c.last) << c.records << " records";
    }
}

class LvdFile : public ::testing::Test {
protected:
    lv::test::TempFolder folder;
    std::filesystem::path file(const char* name) const { return folder.path() / name; }
};

TEST_F(LvdFile, MissingFileIsNotFoundWithItsPath)
{
    lv::RecBuffer buffer;
    const auto path = file("nothing.lvd");
    const lv::LoadResult r = lv::loadLvdFile(path, 1, buffer);
    EXPECT_EQ(r.status, lv::LoadStatus::NotFound);
    EXPECT_EQ(r.title, "File Not Found");
    EXPECT_EQ(r.text, path.string());
}

TEST_F(LvdFile, FolderAndEmptyFileFailClearly)
{
    std::filesystem::create_directory(file("folder.lvd"));
    writeBytes(file("empty.lvd"), {});
    lv::RecBuffer buffer;
    const lv::LoadResult dir = lv::loadLvdFile(file("folder.lvd"), 1, buffer);
    EXPECT_EQ(dir.status, lv::LoadStatus::Unreadable);
    EXPECT_FALSE(dir.title.empty());
    EXPECT_NE(dir.text.find(file("folder.lvd").string()), std::string::npos);
    EXPECT_EQ(lv::loadLvdFile(file("empty.lvd"), 1, buffer).status, lv::LoadStatus::Incompatible);
    EXPECT_EQ(buffer.RecCount, 0);
}

TEST_F(LvdFile, FileWithoutReadPermissionFailsClearly)
{
    if (::geteuid() == 0) GTEST_SKIP() << "root reads any file";
    writeBytes(file("locked.lvd"), Image::steady(5).bytes);
    std::filesystem::permissions(file("locked.lvd"), std::filesystem::perms::none);
    lv::RecBuffer buffer;
    const lv::LoadResult r = lv::loadLvdFile(file("locked.lvd"), 1, buffer);
    EXPECT_EQ(r.status, lv::LoadStatus::Unreadable);
    EXPECT_NE(r.text.find(file("locked.lvd").string()), std::string::npos);
    EXPECT_EQ(buffer.RecCount, 0);
}

TEST_F(LvdFile, LoadsAFileAndNamesItForTheCaption)
{
    Image image = Image::steady(8);
    image.bytes.resize(7 * 20 + 15);  // the eighth record cut to 15 bytes
    writeBytes(file("Test007.lvd"), image.bytes);
    lv::RecBuffer buffer;
    const lv::LoadResult r = lv::loadLvdFile(file("Test007.lvd"), 1, buffer);
    ASSERT_TRUE(r.ok()) << r.text;
    EXPECT_EQ(r.caption, "Test007.lvd");
    EXPECT_EQ(buffer.RecCount, 8);
    EXPECT_EQ(buffer(7).TimeMs, 140);
    EXPECT_EQ(buffer(8).TimeMs, 160);
    EXPECT_EQ(buffer(8).FrameType, 0);
    EXPECT_EQ(buffer.TotalTimeMs, 160);
}

TEST_F(LvdFile, StampsGoIntoTheFileButNotIntoTheBuffer)
{
    lv::RecBuffer buffer;
    for (int i = 1; i <= 6; ++i) {
        lv::lvdRecord r;
        r.TimeMs = i * 20;
        r.FrameType = 'P';
        r.StatusFlags = kDial1;
        r.Stamp = {0xA1, 0xA2, 0xA3, 0xA4};
        buffer.append(r);
    }
    const lv::lvdRecord firstBefore = buffer(1);
    ASSERT_TRUE(lv::saveLvdFile(file("s.lvd"), buffer, lv::StartStamp{45296, 8801, 0x01, 0x02}).saved);

    const Bytes bytes = readBytes(file("s.lvd"));
    ASSERT_EQ(bytes.size(), 120u);
    const Bytes c(bytes.begin() + 14, bytes.begin() + 19);
    const Bytes d(bytes.begin() + 34, bytes.begin() + 39);
    const Bytes third(bytes.begin() + 54, bytes.begin() + 59);
    EXPECT_EQ(c, (Bytes{0x01, 0x00, 0xB0, 0xF0, 'C'}));
    EXPECT_EQ(d, (Bytes{0x02, 0xA2, 0x22, 0x61, 'D'}));  // byte 15 keeps what the record had
    EXPECT_EQ(third, (Bytes{0xA1, 0xA2, 0xA3, 0xA4, 0x00}));
    EXPECT_EQ(buffer(1), firstBefore);

    lv::RecBuffer loaded;
    ASSERT_TRUE(lv::loadLvdFile(file("s.lvd"), 1, loaded).ok());
    EXPECT_EQ(loaded.StartTimeSecs, 45296);
    EXPECT_EQ(loaded.StartDays, 8801);
    EXPECT_EQ(loaded.RecordingDate, 2024y / February / 4);
}

TEST_F(LvdFile, SaveAsWritesTheBufferExactlyAsLoaded)
{
    Image image = Image::steady(6);
    const Bytes stampC = {0x03, 0x00, 0x01, 0x02, 'C'};
    const Bytes stampD = {0x01, 0x55, 0x00, 0x07, 'D'};
    std::copy(stampC.begin(), stampC.end(), image.bytes.begin() + 14);
    std::copy(stampD.begin(), stampD.end(), image.bytes.begin() + 34);
    image.bytes[5 * 20 + 13] = 0x99;  // a reserved byte and left-over stamp bytes further on
    image.bytes[5 * 20 + 16] = 0x42;
    writeBytes(file("in.lvd"), image.bytes);

    lv::RecBuffer buffer;
    ASSERT_TRUE(lv::loadLvdFile(file("in.lvd"), 1, buffer).ok());
    ASSERT_TRUE(lv::saveLvdFile(file("out.lvd"), buffer, std::nullopt).saved);
    EXPECT_EQ(readBytes(file("out.lvd")), image.bytes);
}

TEST_F(LvdFile, ShorterRecordingOverALongerFileKeepsItsTail)
{
    writeBytes(file("t.lvd"), Image::steady(12).bytes);
    lv::RecBuffer shorter;
    for (int i = 1; i <= 6; ++i) {
        lv::lvdRecord r;
        r.TimeMs = 1000 + i;
        r.FrameType = 'O';
        r.StatusFlags = kDial1;
        shorter.append(r);
    }
    ASSERT_TRUE(lv::saveLvdFile(file("t.lvd"), shorter, std::nullopt).saved);

    lv::RecBuffer loaded;
    ASSERT_TRUE(lv::loadLvdFile(file("t.lvd"), 1, loaded).ok());
    EXPECT_EQ(loaded.RecCount, 12);
    EXPECT_EQ(loaded(6).TimeMs, 1006);
    EXPECT_EQ(loaded(6).FrameType, 'O');
    EXPECT_EQ(loaded(7).TimeMs, 140);
    EXPECT_EQ(loaded.TotalTimeMs, 240);
}

TEST_F(LvdFile, StampsNeverAddRecordsToAShortRecording)
{
    lv::RecBuffer one;
    one.append(lv::lvdRecord{});
    ASSERT_TRUE(lv::saveLvdFile(file("one.lvd"), one, lv::StartStamp{1, 1, 1, 1}).saved);
    const Bytes bytes = readBytes(file("one.lvd"));
    ASSERT_EQ(bytes.size(), 20u);
    EXPECT_EQ(bytes[18], 'C');
}

TEST_F(LvdFile, UnwritablePlaceFailsWithThePath)
{
    lv::RecBuffer buffer;
    buffer.append({});
    std::filesystem::create_directory(file("dir.lvd"));
    for (const auto& path : {file("missing/x.lvd"), file("dir.lvd")}) {
        const lv::SaveResult r = lv::saveLvdFile(path, buffer, std::nullopt);
        EXPECT_FALSE(r.saved) << path;
        EXPECT_FALSE(r.title.empty());
        EXPECT_NE(r.text.find(path.string()), std::string::npos);
    }
}

}  // namespace
