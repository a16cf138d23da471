#include <gtest/gtest.h>

#include <unistd.h>
#include "support/temp_dir.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "common/vb_date.h"
#include "recording/lvd_file.h"
#include "recording/naming.h"

namespace {

using namespace std::chrono;
namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kDial1 = 0x20;  // dial type 1 in StatusFlags

// Records 1..n as a file holds them: TimeMs i * 20 at byte 0, flags at 12, 'P' at 19.
Bytes steady(std::size_t n) {
    Bytes bytes(n * 20);
    for (std::size_t i = 1; i <= n; ++i) {
        bytes[(i - 1) * 20] = static_cast<std::uint8_t>(i * 20);
        bytes[(i - 1) * 20 + 12] = kDial1;
        bytes[(i - 1) * 20 + 19] = 'P';
    }
    return bytes;
}

lv::lvdRecord frame(std::int32_t timeMs, std::array<std::uint8_t, 4> stamp = {}) {
    return {.TimeMs = timeMs, .StatusFlags = kDial1, .Stamp = stamp, .FrameType = 'P'};
}

// A buffer that already holds something, to see what a load replaces.
lv::RecBuffer usedBuffer() {
    lv::RecBuffer buffer;
    buffer.append(frame(5));
    buffer.append(frame(6));
    buffer.StartTimeSecs = 77;
    buffer.RecordingDate = 2020y / May / 5;
    return buffer;
}

void writeBytes(const fs::path& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary) << std::string(bytes.begin(), bytes.end());
}

Bytes readBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A fresh folder per test, removed with everything in it.
class Folder : public ::testing::Test {
protected:
    lv::test::TempDir m_temp{"lv_rec"};
    Folder() { dir = m_temp.path(); }
    fs::path file(const std::string& name) const { return dir / name; }
    std::string save() const { return file("save").string() + "/"; }
    void touch(const std::string& relative) const {
        fs::create_directories(file(relative).parent_path());
        writeBytes(file(relative), {'x'});
    }
    // Every file under the folder, relative to it.
    std::set<std::string> files() const {
        std::set<std::string> out;
        for (const auto& e : fs::recursive_directory_iterator(dir))
            if (!e.is_directory()) out.insert(fs::relative(e.path(), dir).string());
        return out;
    }
    lv::ResetOutcome reset(const std::string& prefix, const std::string& savePath) {
        lv::Settings s;
        s.SavePath = savePath;
        s.SavePrefix = prefix;
        s.SuffixNum = 57;
        const lv::ResetOutcome outcome = lv::resetNumbering(s);
        EXPECT_EQ(s.SuffixNum, 1);
        return outcome;
    }

    fs::path dir;
};

TEST(LvdRecord, TwentyBytesLittleEndianAtFixedOffsets) {
    // TimeMs, RawData, NeedlePos, BdCount, BaseCode, Sensitivity, StatusFlags, Reserved,
    // Stamp, StampMarker, FrameType.
    const lv::lvdRecord r{
        -0x01020305, -2, -2503, 1234, 0x7B, 0x40, 0xAB, 0x11, {0x21, 0x22, 0x23, 0x24}, 'C', 'P'};
    const std::array<std::uint8_t, 20> bytes = {0xFB, 0xFC, 0xFD, 0xFE, 0xFE, 0xFF, 0x39,
                                                0xF6, 0xD2, 0x04, 0x7B, 0x40, 0xAB, 0x11,
                                                0x21, 0x22, 0x23, 0x24, 'C',  'P'};
    std::array<std::uint8_t, 20> out{};
    lv::encodeRecord(r, out.data());
    EXPECT_EQ(out, bytes);
    EXPECT_EQ(lv::decodeRecord(bytes.data()), r);
}

TEST(LvdRecord, StatusFlagsPackAndUnpack) {
    // The last two are out of range: only the bits that fit.
    const std::tuple<int, bool, bool, int, std::uint8_t> cases[] = {
        {3, false, false, 0, 0x03}, {1, true, false, 0, 0x05},  {2, false, true, 1, 0x2A},
        {3, true, true, 7, 0xEF},   {4, false, false, 8, 0x00}, {7, false, false, 9, 0x23}};
    for (const auto& [lamp, state, bd, dial, flags] : cases) {
        EXPECT_EQ(lv::packStatusFlags(lamp, state, bd, dial), flags) << lamp << dial;
        if (lamp > 3 || dial > 7) continue;
        const auto read = static_cast<std::uint8_t>(flags | 0x10);  // bit 4 is ignored
        EXPECT_EQ(lv::lampCodeOf(read), lamp);
        EXPECT_EQ(lv::stateFlagOf(read), state);
        EXPECT_EQ(lv::bdFlagOf(read), bd);
        EXPECT_EQ(lv::dialTypeOf(read), dial);
    }
}

TEST(LvdRecord, ReadoutForPlayback) {
    const auto shown = [](const lv::lvdRecord& r) {
        const lv::RecordReadout o = lv::readoutOf(r);
        return o.base + " " + o.bd + " " + std::to_string(o.rawReading) + " " +
               std::to_string(o.needlePos) + " " + std::to_string(o.sensitivity) + " " +
               std::to_string(o.lampCode) + std::to_string(o.bdFlag) + std::to_string(o.dialType);
    };
    // Base ((68 >> 1) + 8) / 20; the BD in whole units from 100.0 on; RawData unsigned.
    EXPECT_EQ(shown({0, 100, -2503, 999, 68, 41, 0x08}), "2.1 99.9 100 -2503 41 010");
    EXPECT_EQ(shown({0, -1, 0, 1234, 67, 0, 0x61}), "2.05 123 65535 0 0 103");
}

TEST(LoadLvdBytes, FirstFiveRecordsMustBeFramesElseTheBufferIsUntouched) {
    const std::tuple<std::size_t, std::uint8_t, bool> cases[] = {{3, 'X', false}, {5, 'p', false},
                                                                 {1, 0, false},   {6, 0, true},
                                                                 {1, 'O', true},  {2, 'T', true}};
    for (const auto& [record, letter, valid] : cases) {
        Bytes bytes = steady(6);
        bytes[(record - 1) * 20 + 19] = letter;
        EXPECT_EQ(lv::Verify_lvd_Format(bytes), valid) << record;
        lv::RecBuffer buffer = usedBuffer();
        const lv::LoadResult r = lv::loadLvdBytes(bytes, 1, buffer);
        EXPECT_EQ(r.ok(), valid) << record;
        if (valid) continue;
        EXPECT_EQ(r.status, lv::LoadStatus::Incompatible);
        EXPECT_EQ(r.title, "Incompatible file format");
        EXPECT_EQ(r.text, "This file is corrupt or needs to be converted to version 2 format.");
        EXPECT_EQ(std::tuple(buffer.RecCount, buffer.upperBound(), buffer.StartTimeSecs),
                  std::tuple(2, 3000, 77));
    }
}

TEST(LoadLvdBytes, WrongDialTypeKeepsTheRecordsReadUpToTheFirstOther) {
    // Records of dial type 7 in a file of type 1.
    const std::tuple<std::optional<int>, std::vector<std::size_t>, std::int32_t> cases[] = {
        {1, {7, 9}, 7}, {1, {1}, 1}, {1, {10}, 10}, {std::nullopt, {4}, 10}};
    for (const auto& [dial, others, read] : cases) {
        Bytes bytes = steady(10);
        for (std::size_t n : others) bytes[(n - 1) * 20 + 12] = 0xE0;
        bytes[18] = 'D';  // stamp markers in the wrong records count for nothing
        bytes[38] = 'C';
        bytes[17] = bytes[37] = 0x11;
        lv::RecBuffer buffer = usedBuffer();
        const lv::LoadResult r = lv::loadLvdBytes(bytes, dial, buffer);
        EXPECT_EQ(r.status, dial ? lv::LoadStatus::WrongDialType : lv::LoadStatus::Loaded);
        EXPECT_EQ(r.title + "|" + r.text,
                  dial ? "Wrong Dial Type|This file is incompatible." : "|");
        EXPECT_EQ(r.recordsRead, read);
        EXPECT_EQ(buffer.upperBound(), 10);
        for (std::int32_t i = 1; i <= 10; ++i)
            EXPECT_EQ(buffer(i).TimeMs, i <= read ? i * 20 : 0) << i;
        // Start stamps are taken only by a whole load, and this file has none.
        EXPECT_EQ(buffer.StartTimeSecs, dial ? 77 : 0);
        EXPECT_EQ(buffer.RecordingDate, dial ? 2020y / May / 5 : 1999y / December / 31);
    }
}

TEST(LoadLvdBytes, ProgressInFiftiethsWithAStepOfAtLeastOneRecord) {
    for (const auto& [records, calls, last] :
         {std::tuple<std::size_t, std::size_t, int>{5, 5, 5}, {100, 50, 50}, {149, 74, 50}}) {
        std::vector<int> seen;
        lv::RecBuffer buffer;
        lv::loadLvdBytes(steady(records), 1, buffer, [&seen](int f) { seen.push_back(f); });
        ASSERT_EQ(seen.size(), calls) << records;
        EXPECT_EQ(seen.front(), 1);
        EXPECT_EQ(seen.back(), last);
    }
}

TEST_F(Folder, RecordCountRoundsHalvesToEvenAndShortFilesFail) {
    // 110 bytes: ten over and 6 is even; 130: ten over, but 7 would be odd.
    const std::tuple<std::size_t, std::int32_t, std::int32_t, std::uint8_t, std::uint8_t> cases[] =
        {{10, 0, 0, 0, 0},           {11, 1, 0, 0, 0},    {30, 2, 0, 0, 0},
         {50, 2, 0, 0, 0},           {99, 5, 0, 0, 0},    {100, 5, 100, kDial1, 'P'},
         {109, 5, 100, kDial1, 'P'}, {110, 6, 120, 0, 0}, {119, 6, 120, kDial1, 0},
         {130, 6, 120, kDial1, 'P'}, {131, 7, 140, 0, 0}};
    for (const auto& [length, count, total, flags, type] : cases) {
        EXPECT_EQ(lv::lvdRecordCount(length), count) << length;
        Bytes bytes = steady(7);
        bytes.resize(length);
        writeBytes(file("lvd"), bytes);
        lv::RecBuffer fromBytes = usedBuffer(), fromFile = usedBuffer();
        const lv::LoadResult r = lv::loadLvdBytes(bytes, 1, fromBytes);
        EXPECT_EQ(lv::loadLvdFile(file("lvd"), 1, fromFile).status, r.status) << length;
        if (length < 100) {
            EXPECT_EQ(r.status, lv::LoadStatus::Incompatible) << length;
            continue;
        }
        for (const lv::RecBuffer& b : {fromBytes, fromFile}) {
            ASSERT_EQ(b.RecCount, count) << length;
            EXPECT_EQ(b.upperBound(), count);
            EXPECT_EQ(b.RecIndex, 1);
            EXPECT_EQ(b.TotalTimeMs, total);
            EXPECT_EQ(b(count).StatusFlags, flags) << length;
            EXPECT_EQ(b(count).FrameType, type) << length;
        }
    }
}

TEST_F(Folder, LoadFailuresSayWhichFile) {
    fs::create_directory(file("folder.lvd"));
    writeBytes(file("empty.lvd"), {});
    writeBytes(file("locked.lvd"), steady(5));
    fs::permissions(file("locked.lvd"), fs::perms::none);
    using enum lv::LoadStatus;
    const std::tuple<std::string, lv::LoadStatus, std::string> cases[] = {
        {"none.lvd", NotFound, "File Not Found"},
        {"folder.lvd", Unreadable, "Cannot Open File"},
        {"locked.lvd", Unreadable, "Cannot Open File"},
        {"empty.lvd", Incompatible, "Incompatible file format"}};
    for (const auto& [name, status, title] : cases) {
        if (name == "locked.lvd" && ::geteuid() == 0) continue;  // root reads any file
        lv::RecBuffer buffer;
        const lv::LoadResult r = lv::loadLvdFile(file(name), 1, buffer);
        EXPECT_EQ(r.status, status) << name;
        EXPECT_EQ(r.title, title);
        const std::string path = status == Incompatible ? "" : file(name).string();
        EXPECT_EQ(r.text.substr(0, path.size()), path);
        EXPECT_EQ(buffer.RecCount, 0);
    }
}

TEST_F(Folder, StartStampsGoIntoRecordsOneAndTwoOfTheFileOnly) {
    lv::RecBuffer buffer;
    for (int i = 1; i <= 6; ++i) buffer.append(frame(i * 20, {0xA1, 0xA2, 0xA3, 0xA4}));
    const lv::lvdRecord first = buffer(1);
    lv::Settings s;
    s.ClockType = 0x0201;  // only the low bytes of the two styles go in
    s.DateType = 2;
    ASSERT_TRUE(lv::saveLvdFile(file("s.lvd"), buffer, lv::startStampFor(s, 45296, 32768)).saved);
    const Bytes bytes = readBytes(file("s.lvd"));
    ASSERT_EQ(bytes.size(), 120u);
    // Byte 15 of the "D" record keeps what the record had; record 3 is as recorded.
    EXPECT_EQ(Bytes(bytes.begin() + 14, bytes.begin() + 19), (Bytes{0x01, 0x00, 0xB0, 0xF0, 'C'}));
    EXPECT_EQ(Bytes(bytes.begin() + 34, bytes.begin() + 39), (Bytes{0x02, 0xA2, 0x80, 0x00, 'D'}));
    EXPECT_EQ(Bytes(bytes.begin() + 54, bytes.begin() + 59), (Bytes{0xA1, 0xA2, 0xA3, 0xA4, 0x00}));
    EXPECT_EQ(buffer(1), first);

    lv::RecBuffer loaded;
    ASSERT_TRUE(lv::loadLvdFile(file("s.lvd"), 1, loaded).ok());
    EXPECT_EQ(loaded.StartTimeSecs, 45296);
    EXPECT_EQ(loaded.StartDays, 32768);  // past 16 signed bits, still a date
    EXPECT_EQ(loaded.RecordingDate, 2089y / September / 17);

    lv::RecBuffer one;  // a stamp never adds a record
    one.append(frame(0));
    ASSERT_TRUE(lv::saveLvdFile(file("one.lvd"), one, lv::StartStamp{1, 1, 1, 1}).saved);
    EXPECT_EQ(readBytes(file("one.lvd")).size(), 20u);
}

TEST_F(Folder, SaveAsWritesALoadedFileBackAndKeepsTheTailOfALongerFile) {
    Bytes image = steady(6);
    const Bytes c = {0x03, 0x00, 0x01, 0x02, 'C'}, d = {0x01, 0x55, 0x00, 0x07, 'D'};
    std::copy(c.begin(), c.end(), image.begin() + 14);
    std::copy(d.begin(), d.end(), image.begin() + 34);
    image[5 * 20 + 13] = 0x99;  // reserved and left-over stamp bytes further on
    image[5 * 20 + 16] = 0x42;
    writeBytes(file("in.lvd"), image);
    lv::RecBuffer buffer;
    const lv::LoadResult r = lv::loadLvdFile(file("in.lvd"), 1, buffer);
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(r.caption, "in.lvd");
    const Bytes longer = steady(12);
    writeBytes(file("out.lvd"), longer);
    ASSERT_TRUE(lv::saveLvdFile(file("out.lvd"), buffer, std::nullopt).saved);
    image.insert(image.end(), longer.begin() + 120, longer.end());
    EXPECT_EQ(readBytes(file("out.lvd")), image);
}

TEST_F(Folder, UnwritablePlaceFailsWithThePath) {
    lv::RecBuffer buffer;
    buffer.append({});
    fs::create_directory(file("dir.lvd"));
    for (const fs::path& path : {file("missing/x.lvd"), file("dir.lvd")}) {
        const lv::SaveResult r = lv::saveLvdFile(path, buffer, std::nullopt);
        EXPECT_FALSE(r.saved) << path;
        EXPECT_EQ(r.title, "File Not Saved");
        EXPECT_EQ(r.text.substr(0, path.string().size()), path.string());
    }
}

TEST(RecBuffer, GrowsByThreeThousandKeepingEveryRecordAndClearsBack) {
    lv::RecBuffer buffer;
    EXPECT_THROW(buffer(0), std::out_of_range);
    EXPECT_THROW(buffer(3001), std::out_of_range);
    buffer.append(frame(-10));
    EXPECT_EQ(buffer(1).TimeMs, 0);  // a negative time is stored as 0
    const auto state = [&buffer] {
        return std::tuple(buffer.upperBound(), buffer.RecCount, buffer.RecIndex,
                          buffer.TotalTimeMs);
    };
    for (std::int32_t i = 2; i <= 6500; ++i) {
        buffer.append(frame(i * 20));
        const std::int32_t room = i <= 3000 ? 3000 : i <= 6001 ? 6001 : 9002;
        EXPECT_EQ(state(), std::tuple(room, i, i + 1, i * 20)) << i;
    }
    for (std::int32_t i = 2; i <= 6500; ++i) ASSERT_EQ(buffer(i).TimeMs, i * 20) << i;
    EXPECT_EQ(buffer.valid().size(), 6500u);
    buffer.clear();
    EXPECT_EQ(state(), std::tuple(3000, 0, 1, 0));
    EXPECT_EQ(buffer(1), lv::lvdRecord{});
    buffer.markStart({2024y / February / 4, 12, 34, 56});
    EXPECT_EQ(buffer.StartTimeSecs, 45296);
    EXPECT_EQ(buffer.StartDays, 8801);
    EXPECT_EQ(buffer.RecordingDate, 2024y / February / 4);
}

lv::RecBuffer bufferWithTimes(const std::vector<std::int32_t>& times) {
    lv::RecBuffer buffer;
    for (std::int32_t t : times) buffer.append(frame(t));
    return buffer;
}

TEST(FindlvdRecord, FirstRecordAtOrAfterTheTime) {
    lv::RecBuffer buffer = bufferWithTimes({0, 20, 40, 70, 80, 150, 160, 165, 300, 320});
    // At 0, between two records (the later), on one, past the end (the last), before the start.
    const std::pair<std::int32_t, std::int32_t> cases[] = {{0, 1},    {30, 3},      {161, 8},
                                                           {320, 10}, {100000, 10}, {-50, 1}};
    for (const auto& [timeMs, position] : cases) {
        EXPECT_EQ(buffer.FindlvdRecord(timeMs), position) << timeMs;
        EXPECT_EQ(buffer.CurRecord, buffer(position)) << timeMs;
    }
    EXPECT_EQ(lv::RecBuffer().FindlvdRecord(5000), 0);
}

TEST(FindlvdRecord, AgreesWithAPlainScanWhateverTheSpacing) {
    // Repeats, far slower than 20 ms a record, bursts of ten at one time.
    int spacing = 0;
    for (std::int32_t (*timeOf)(std::int32_t) :
         {+[](std::int32_t i) { return i / 3; }, +[](std::int32_t i) { return i * 137; },
          +[](std::int32_t i) { return i / 10 * 250; }}) {
        ++spacing;
        std::vector<std::int32_t> times;
        for (std::int32_t i = 0; i < 200; ++i) times.push_back(timeOf(i));
        lv::RecBuffer buffer = bufferWithTimes(times);
        for (std::int32_t t = -5; t <= times.back() + 30; ++t) {
            const auto first = std::lower_bound(times.begin(), times.end(), t);
            const auto expected =
                static_cast<std::int32_t>(first - times.begin()) + (first == times.end() ? 0 : 1);
            ASSERT_EQ(buffer.FindlvdRecord(t), expected) << "spacing " << spacing << " at " << t;
        }
    }
}

TEST(Naming, NumberOrDateTimeAfterThePrefix) {
    // Any suffix type but 0 names by date and time.
    const std::tuple<std::int32_t, std::int16_t, std::string, std::string> cases[] = {
        {0, 7, "Test007", "Testnnn"},
        {0, 1234, "Test1234", "Testnnn"},
        {1, 7, "Test24-03-05__14.07.09", "TestDate__Time"},
        {7, 7, "Test24-03-05__14.07.09", "TestDate__Time"}};
    for (const auto& [suffixType, num, name, pattern] : cases) {
        lv::Settings s;
        s.SavePrefix = "Test";
        s.SuffixNum = num;
        s.SuffixType = suffixType;
        EXPECT_EQ(lv::autoName(s, {2024y / March / 5, 14, 7, 9}), name);
        EXPECT_EQ(lv::namingPatternText(s), pattern);
    }
    EXPECT_EQ(lv::lvdPathFor("/data/rec/", "Test007"), fs::path("/data/rec/Test007.lvd"));
    EXPECT_EQ(lv::wavPathFor("/data/rec/", "Test007"), fs::path("/data/rec/Test007.wav"));
    const char* captions[] = {"", "Manual", "Auto Name", "Auto Save", "Capture", ""};
    for (int mode = 0; mode <= 5; ++mode) EXPECT_EQ(lv::recordingModeCaption(mode), captions[mode]);
}

TEST(VbDate, DaysSince1999BothWays) {
    // 2000 is a leap year; 32767 days is the last a 16-bit count holds.
    const std::pair<year_month_day, std::int32_t> cases[] = {{1999y / December / 31, 0},
                                                             {2000y / March / 1, 61},
                                                             {2024y / February / 4, 8801},
                                                             {1999y / December / 30, -1},
                                                             {2089y / September / 16, 32767}};
    for (const auto& [date, days] : cases) {
        EXPECT_EQ(lv::daysSince1999(date), days);
        EXPECT_EQ(lv::dateFromDays(days), date) << days;
    }
}

TEST(VbDate, NameStampAndClockText) {
    EXPECT_EQ(lv::formatNameStamp({2000y / January / 1, 0, 0, 0}), "00-01-01__00.00.00");
    EXPECT_EQ(lv::formatNameStamp({2105y / November / 20, 9, 30, 0}), "05-11-20__09.30.00");
    const std::pair<std::int64_t, const char*> clocks[] = {
        {45296, "12:34:56"}, {86400, "00:00:00"}, {90000, "01:00:00"}, {-1, "23:59:59"}};
    for (const auto& [secs, text] : clocks) EXPECT_EQ(lv::clockText(secs), text) << secs;
    const lv::LocalDateTime now = lv::localNow();
    EXPECT_TRUE(now.date.ok() && now.date.year() >= 2020y && now.hour < 24 && now.second < 60);
}

TEST_F(Folder, PrefixIsValidWhenItsFirstFileCanBeCreated) {
    fs::create_directory(file("sub"));
    touch("Keep000.lvd");  // already there: a usable name, left as it is
    // "/proc/" takes no new file, root included.
    const std::string here = dir.string() + "/";
    const std::tuple<std::string, std::string, bool> cases[] = {
        {here, "Test", true},       {here, "", true},
        {here, "sub/x", true},      {here, "Keep", true},
        {here, "missing/x", false}, {here + "nowhere/", "Test", false},
        {"/proc/", "Test", false},  {here, std::string(300, 'a'), false}};
    for (const auto& [savePath, prefix, valid] : cases) {
        const auto problem = lv::validatePrefix(savePath, prefix);
        EXPECT_EQ(problem ? problem->title + "|" + problem->text : "",
                  valid ? "" : "Validate Filename|Error: Invalid Prefix name ")
            << savePath << prefix;
        EXPECT_EQ(files(), std::set<std::string>{"Keep000.lvd"}) << prefix;
    }
    EXPECT_EQ(readBytes(file("Keep000.lvd")), Bytes{'x'});
    if (::geteuid() == 0) return;  // root writes into read-only folders
    fs::permissions(file("sub"), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(lv::validatePrefix(here + "sub/", "Test"));
}

TEST_F(Folder, ResetDeletesExactlyPrefixAndThreeCharactersDotLvdOrWav) {
    // "é" is one character; S005.lvd is a link, which goes without what it points to.
    const std::vector<std::string> gone = {"S001.lvd", "S999.wav",      "Sabc.lvd",
                                           "S 1 .wav", "S\u00e901.lvd", "S005.lvd"};
    // save/S003.lvd is a folder. From x001.lvd on: what a shell pattern or a path built from the
    // hostile prefixes below would reach, and what a reset without a save folder might.
    const std::vector<std::string> kept = {
        "save/S0001.lvd",  "save/S01.lvd",      "save/S001.mp3",        "save/S001.LVD",
        "save/s001.lvd",   "save/T001.lvd",     "save/S001.lvd.bak",    "save/xS001.lvd",
        "save/S001lvd",    "save/sub/S002.lvd", "save/S003.lvd/in.txt", "S004.lvd",
        "x001.lvd",        "save/A001.lvd",     "save/AB001.lvd",       "save/001.lvd",
        "save/a/b001.lvd", "save/ab001.lvd",    "save/..x001.wav.keep", "other/x002.wav",
        "Prefix_001.lvd"};
    for (const auto& f : gone) touch("save/" + f);
    for (const auto& f : kept) touch(f);
    fs::remove(file("save/S005.lvd"));
    fs::create_symlink(file("S004.lvd"), file("save/S005.lvd"));

    const lv::ResetOutcome outcome = reset("S", save());
    EXPECT_EQ(outcome.deleted.size(), gone.size());
    EXPECT_TRUE(outcome.notDeleted.empty());
    for (const char* prefix : {"../x", "*", "?", "a/b", "../other/x", "/", "..", "*/"})
        EXPECT_TRUE(reset(prefix, save()).deleted.empty()) << prefix;
    const fs::path before = fs::current_path();
    fs::current_path(dir);
    EXPECT_TRUE(reset("Prefix_", "").deleted.empty());
    fs::current_path(before);
    EXPECT_EQ(files(), std::set<std::string>(kept.begin(), kept.end()));
}

}  // namespace
