#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "recording/lvd_file.h"
#include "recording/rec_setup.h"
#include "recording/recent_files.h"
#include "support/file_bytes.h"
#include "support/lvd_files.h"
#include "support/temp_dir.h"

namespace {

using namespace lv;
using namespace std::chrono;
namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using test::frame, test::readFile, test::steadyBytes;

// A buffer that already holds something, to see what a load replaces.
RecBuffer usedBuffer() {
    RecBuffer buffer;
    buffer.append(frame(5));
    buffer.append(frame(6));
    buffer.StartTimeSecs = 77;
    return buffer;
}

struct Folder : ::testing::Test {
    test::TempDir temp{"lv_rec"};
    fs::path file(const std::string& name) const { return temp.path() / name; }
    void touch(const std::string& relative) const {
        fs::create_directories(file(relative).parent_path());
        test::writeFile(file(relative), "x");
    }
    std::set<std::string> files() const {
        std::set<std::string> out;
        for (const auto& e : fs::recursive_directory_iterator(temp.path()))
            if (!e.is_directory()) out.insert(fs::relative(e.path(), temp.path()).string());
        return out;
    }
};

TEST(LvdRecord, TwentyBytesLittleEndianAndStatusFlags) {
    const lvdRecord r{
        -0x01020305, -2, -2503, 1234, 0x7B, 0x40, 0xAB, 0x11, {0x21, 0x22, 0x23, 0x24}, 'C', 'P'};
    const std::array<std::uint8_t, 20> bytes = {0xFB, 0xFC, 0xFD, 0xFE, 0xFE, 0xFF, 0x39,
                                                0xF6, 0xD2, 0x04, 0x7B, 0x40, 0xAB, 0x11,
                                                0x21, 0x22, 0x23, 0x24, 'C',  'P'};
    std::array<std::uint8_t, 20> out{};
    encodeRecord(r, out.data());
    EXPECT_EQ(out, bytes);
    EXPECT_EQ(decodeRecord(bytes.data()), r);
    // lamp, state, BD, dial; the last is out of range: only the bits that fit.
    EXPECT_EQ(std::pair(packStatusFlags(2, false, true, 1), packStatusFlags(7, false, false, 9)),
              (std::pair<std::uint8_t, std::uint8_t>(0x2A, 0x23)));
    const std::uint8_t read = 0xFF;  // bit 4 is ignored
    EXPECT_EQ(std::tuple(lampCodeOf(read), stateFlagOf(read), bdFlagOf(read), dialTypeOf(read)),
              std::tuple(3, true, true, 7));
    // Base ((67 >> 1) + 8) / 20; the BD in whole units from 100.0 on; RawData unsigned.
    const RecordReadout o = readoutOf({0, -1, 0, 1234, 67, 0, 0x61});
    EXPECT_EQ(o.base + " " + o.bd + " " + std::to_string(o.rawReading), "2.05 123 65535");
}

// The first five records must be frames, else the buffer is untouched; a
// wrong dial type keeps the records read up to the first other one.
TEST(LoadLvdBytes, OnlyFramesOfTheDialTypeLoad) {
    const std::tuple<std::size_t, std::uint8_t, bool> frames[] = {
        {5, 'p', false}, {1, 0, false}, {6, 0, true}};
    for (const auto& [record, letter, valid] : frames) {
        Bytes bytes = steadyBytes(6);
        bytes[(record - 1) * 20 + 19] = letter;
        RecBuffer buffer = usedBuffer();
        const LoadResult r = loadLvdBytes(bytes, 1, buffer);
        EXPECT_EQ(std::tuple(r.ok(), r.title, buffer.RecCount),
                  std::tuple(valid, valid ? "" : "Incompatible file format", valid ? 6 : 2))
            << record;
    }
    // Records of dial type 7 in a file of type 1; no dial type to check loads all.
    const std::tuple<std::optional<int>, std::size_t, std::int32_t> dials[] = {
        {1, 7, 7}, {1, 1, 1}, {std::nullopt, 4, 10}};
    for (const auto& [dial, other, read] : dials) {
        Bytes bytes = steadyBytes(10);
        bytes[(other - 1) * 20 + 12] = 0xE0;
        RecBuffer buffer = usedBuffer();
        const LoadResult r = loadLvdBytes(bytes, dial, buffer);
        EXPECT_EQ(std::pair(r.title, r.recordsRead),
                  std::pair(std::string(dial ? "Wrong Dial Type" : ""), read));
        for (std::int32_t i = 1; i <= 10; ++i)
            EXPECT_EQ(buffer(i).TimeMs, i <= read ? i * 20 : 0) << i;
        EXPECT_EQ(buffer.StartTimeSecs, dial ? 77 : 0);  // only a whole load takes stamps
    }
    std::vector<int> seen;  // progress in fiftieths, at least a record a step
    RecBuffer buffer;
    loadLvdBytes(steadyBytes(149), 1, buffer, [&seen](int f) { seen.push_back(f); });
    EXPECT_EQ(std::tuple(seen.size(), seen.front(), seen.back()), std::tuple(74u, 1, 50));
}

TEST(LoadLvdBytes, RecordCountRoundsHalvesToEvenAndShortFilesFail) {
    // 110 bytes: ten over and 6 is even; 130: ten over, but 7 would be odd.
    const std::tuple<std::size_t, std::int32_t, std::int32_t> cases[] = {
        {99, 5, 0}, {100, 5, 100}, {110, 6, 120}, {130, 6, 120}, {131, 7, 140}};
    for (const auto& [length, count, total] : cases) {
        Bytes bytes = steadyBytes(7);
        bytes.resize(length);
        RecBuffer buffer;
        const bool read = loadLvdBytes(bytes, 1, buffer).status != LoadStatus::Incompatible;
        EXPECT_EQ(std::tuple(lvdRecordCount(length), read, buffer.RecCount, buffer.TotalTimeMs),
                  std::tuple(count, length >= 100, read ? count : 0, total))
            << length;
    }
}

TEST_F(Folder, StartStampsGoIntoRecordsOneAndTwoOfTheFileOnly) {
    RecBuffer buffer;
    for (int i = 1; i <= 6; ++i) buffer.append(frame(i * 20, {0xA1, 0xA2, 0xA3, 0xA4}));
    const lvdRecord first = buffer(1);
    Settings s;  // only the low bytes of the two styles go in
    std::tie(s.ClockType, s.DateType) = std::tuple(0x0201, 2);
    ASSERT_TRUE(saveLvdFile(file("s.lvd"), buffer, startStampFor(s, 45296, 32768)).saved);
    const std::string bytes = readFile(file("s.lvd"));
    ASSERT_EQ(bytes.size(), 120u);
    // Bytes 14..18 of records 1 to 3: byte 15 of the "D" record keeps what
    // the record had; record 3 is as recorded.
    EXPECT_EQ(bytes.substr(14, 5) + bytes.substr(34, 5) + bytes.substr(54, 5),
              std::string("\x01\x00\xB0\xF0\x43\x02\xA2\x80\x00\x44\xA1\xA2\xA3\xA4\x00", 15));
    EXPECT_EQ(buffer(1), first);

    RecBuffer loaded;
    ASSERT_TRUE(loadLvdFile(file("s.lvd"), 1, loaded).ok());
    // The date is past 16 signed bits.
    EXPECT_EQ(std::pair(loaded.StartTimeSecs, loaded.RecordingDate),
              std::pair(45296, year_month_day(2089y / September / 17)));

    // Saved over a longer file, a loaded file comes back as it was and the tail stays.
    const Bytes longer = steadyBytes(12);
    test::writeFile(file("out.lvd"), std::string(longer.begin(), longer.end()));
    ASSERT_TRUE(saveLvdFile(file("out.lvd"), loaded, std::nullopt).saved);
    EXPECT_EQ(readFile(file("out.lvd")), bytes + std::string(longer.begin() + 120, longer.end()));
}

TEST(RecBuffer, GrowsKeepingEveryRecordAndFinds) {
    RecBuffer buffer;
    EXPECT_THROW(buffer(3001), std::out_of_range);
    buffer.append(frame(-10));  // a negative time is stored as 0
    for (std::int32_t i = 2; i <= 6500; ++i) buffer.append(frame(i * 20));
    ASSERT_EQ(std::tuple(buffer.upperBound(), buffer.RecCount), std::tuple(9002, 6500));
    for (std::int32_t i = 1; i <= 6500; ++i) ASSERT_EQ(buffer(i).TimeMs, i > 1 ? i * 20 : 0) << i;
    // The first record at or after the time; the last past the end.
    for (const auto& [timeMs, position] : {std::pair{-50, 1}, {130, 7}, {140, 7}, {130010, 6500}})
        EXPECT_EQ(std::pair(buffer.FindlvdRecord(timeMs), buffer.CurRecord),
                  std::pair(position, buffer(position)))
            << timeMs;
}

// Reset deletes exactly prefix + three characters + .lvd or .wav in the save
// folder; checking a prefix leaves a file of that name as it was.
TEST_F(Folder, ResetDeletesOnlyTheSeriesAndAPrefixCheckNothing) {
    // "é" is one character; S005.lvd is a link, which goes without what it points to.
    const std::vector<std::string> gone = {"S001.lvd", "S999.wav", "S 1 .wav", "S\u00e901.lvd",
                                           "S005.lvd"};
    // save/S003.lvd is a folder; from x001.lvd on: what a hostile prefix or no folder would reach.
    const std::vector<std::string> kept = {
        "save/S0001.lvd",    "save/S01.lvd",      "save/S001.LVD",        "save/xS001.lvd",
        "save/S001.lvd.bak", "save/sub/S002.lvd", "save/S003.lvd/in.txt", "S004.lvd",
        "x001.lvd",          "save/a/b001.lvd",   "other/x002.wav",       "Prefix_001.lvd",
        "save/Keep000.lvd"};
    for (const auto& f : gone) touch("save/" + f);
    for (const auto& f : kept) touch(f);
    fs::remove(file("save/S005.lvd"));
    fs::create_symlink(file("S004.lvd"), file("save/S005.lvd"));

    const auto reset = [&](const std::string& prefix, const std::string& savePath) {
        Settings s;
        std::tie(s.SavePath, s.SavePrefix, s.SuffixNum) = std::tuple(savePath, prefix, 57);
        const ResetOutcome outcome = resetNumbering(s);
        EXPECT_EQ(s.SuffixNum, outcome.refused.empty() ? 1 : 57) << prefix;
        return outcome;
    };
    const std::string save = file("save").string() + "/";
    const ResetOutcome outcome = reset("S", save);
    EXPECT_EQ(std::pair(outcome.deleted.size(), outcome.notDeleted.size()),
              std::pair(gone.size(), 0ul));
    for (const char* prefix : {"../x", "*", "a/b", "..", ""})
        EXPECT_TRUE(reset(prefix, save).deleted.empty()) << prefix;
    EXPECT_FALSE(reset("", save).refused.empty()) << "no prefix would be every 3-character name";
    const fs::path before = fs::current_path();  // no save folder: nothing, not the current one
    fs::current_path(temp.path());
    EXPECT_TRUE(reset("Prefix_", "").deleted.empty());
    fs::current_path(before);
    const SaveResult r = saveLvdRecords(file("missing/x.lvd"), {}, std::nullopt);
    EXPECT_EQ(std::pair(r.saved, r.title), std::pair(false, std::string("File Not Saved")));
    EXPECT_FALSE(checkPrefix(save, "Keep")) << "a file already there is usable, and stays";
    EXPECT_EQ(files(), std::set<std::string>(kept.begin(), kept.end()));
}

// Newest first, each once, ten at most, and the same list in the next run.
TEST_F(Folder, RecentFilesKeepTheLastTenAcrossRuns) {
    const fs::path list = file("lv_Analog.recent");
    test::writeFile(list, "/a.lvd\r\n\n/b.lvd\n/a.lvd\n");  // by hand, with a repeat
    RecentFiles recent(list);
    recent.load();
    EXPECT_EQ(recent.paths(), (std::vector<std::string>{"/a.lvd", "/b.lvd"}));
    for (int i = 0; i < 12; ++i) ASSERT_TRUE(recent.add("/r" + std::to_string(i) + ".lvd"));
    ASSERT_TRUE(recent.add("/r5.lvd"));
    EXPECT_FALSE(recent.add("/two\nlines.lvd"));
    const std::vector<std::string> expected{"/r5.lvd", "/r11.lvd", "/r10.lvd", "/r9.lvd",
                                            "/r8.lvd", "/r7.lvd",  "/r6.lvd",  "/r4.lvd",
                                            "/r3.lvd", "/r2.lvd"};
    EXPECT_EQ(recent.paths(), expected);
    RecentFiles nextRun(list);
    nextRun.load();
    EXPECT_EQ(nextRun.paths(), expected);
    EXPECT_FALSE(fs::exists(list.string() + ".new")) << "nothing left aside";
}

}  // namespace
