#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "common/vb_date.h"
#include "recording/lvd_file.h"
#include "recording/naming.h"
#include "recording/rec_setup.h"
#include "recording/recent_files.h"
#include "support/lvd_files.h"
#include "support/temp_dir.h"

namespace {

using namespace std::chrono;
namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using lv::test::frame;
// Records 1..n as a file holds them: TimeMs i * 20 at byte 0, dial type 1 at 12, 'P' at 19.
const auto steady = lv::test::steadyBytes;

// A buffer that already holds something, to see what a load replaces.
lv::RecBuffer usedBuffer() {
    lv::RecBuffer buffer;
    buffer.append(frame(5));
    buffer.append(frame(6));
    buffer.StartTimeSecs = 77;
    return buffer;
}

void writeBytes(const fs::path& path, const Bytes& bytes) {
    lv::test::writeFile(path, std::string(bytes.begin(), bytes.end()));
}

Bytes readBytes(const fs::path& path) {
    const std::string s = lv::test::readFile(path);
    return {s.begin(), s.end()};
}

struct Folder : ::testing::Test {
    lv::test::TempDir temp{"lv_rec"};
    fs::path file(const std::string& name) const { return temp.path() / name; }
    void touch(const std::string& relative) const {
        fs::create_directories(file(relative).parent_path());
        writeBytes(file(relative), {'x'});
    }
    std::set<std::string> files() const {
        std::set<std::string> out;
        for (const auto& e : fs::recursive_directory_iterator(temp.path()))
            if (!e.is_directory()) out.insert(fs::relative(e.path(), temp.path()).string());
        return out;
    }
};

TEST(LvdRecord, TwentyBytesLittleEndianAndStatusFlags) {
    const lv::lvdRecord r{
        -0x01020305, -2, -2503, 1234, 0x7B, 0x40, 0xAB, 0x11, {0x21, 0x22, 0x23, 0x24}, 'C', 'P'};
    const std::array<std::uint8_t, 20> bytes = {0xFB, 0xFC, 0xFD, 0xFE, 0xFE, 0xFF, 0x39,
                                                0xF6, 0xD2, 0x04, 0x7B, 0x40, 0xAB, 0x11,
                                                0x21, 0x22, 0x23, 0x24, 'C',  'P'};
    std::array<std::uint8_t, 20> out{};
    lv::encodeRecord(r, out.data());
    EXPECT_EQ(out, bytes);
    EXPECT_EQ(lv::decodeRecord(bytes.data()), r);
    // lamp, state, BD, dial; the last is out of range: only the bits that fit.
    EXPECT_EQ(lv::packStatusFlags(2, false, true, 1), 0x2A);
    EXPECT_EQ(lv::packStatusFlags(7, false, false, 9), 0x23);
    const std::uint8_t read = 0xFF;  // bit 4 is ignored
    EXPECT_EQ(std::tuple(lv::lampCodeOf(read), lv::stateFlagOf(read), lv::bdFlagOf(read),
                         lv::dialTypeOf(read)),
              std::tuple(3, true, true, 7));
    // Base ((67 >> 1) + 8) / 20; the BD in whole units from 100.0 on; RawData unsigned.
    const lv::RecordReadout o = lv::readoutOf({0, -1, 0, 1234, 67, 0, 0x61});
    EXPECT_EQ(o.base + " " + o.bd + " " + std::to_string(o.rawReading), "2.05 123 65535");
}

TEST(LoadLvdBytes, FirstFiveRecordsMustBeFramesElseTheBufferIsUntouched) {
    const std::tuple<std::size_t, std::uint8_t, bool> cases[] = {
        {3, 'X', false}, {5, 'p', false}, {1, 0, false}, {6, 0, true}, {2, 'T', true}};
    for (const auto& [record, letter, valid] : cases) {
        Bytes bytes = steady(6);
        bytes[(record - 1) * 20 + 19] = letter;
        lv::RecBuffer buffer = usedBuffer();
        const lv::LoadResult r = lv::loadLvdBytes(bytes, 1, buffer);
        EXPECT_EQ(r.ok(), valid) << record;
        if (valid) continue;
        EXPECT_EQ(r.title + "|" + r.text,
                  "Incompatible file format|This file is corrupt or needs to be converted to "
                  "version 2 format.");
        EXPECT_EQ(std::tuple(buffer.RecCount, buffer.StartTimeSecs), std::tuple(2, 77));
    }
}

TEST(LoadLvdBytes, WrongDialTypeKeepsTheRecordsReadUpToTheFirstOther) {
    // Records of dial type 7 in a file of type 1; no dial type to check loads all.
    const std::tuple<std::optional<int>, std::size_t, std::int32_t> cases[] = {
        {1, 7, 7}, {1, 1, 1}, {std::nullopt, 4, 10}};
    for (const auto& [dial, other, read] : cases) {
        Bytes bytes = steady(10);
        bytes[(other - 1) * 20 + 12] = 0xE0;
        lv::RecBuffer buffer = usedBuffer();
        const lv::LoadResult r = lv::loadLvdBytes(bytes, dial, buffer);
        EXPECT_EQ(r.title + "|" + r.text,
                  dial ? "Wrong Dial Type|This file is incompatible." : "|");
        EXPECT_EQ(r.detail, dial ? "It was recorded with the dial type \"number 7\"; the dial "
                                   "type set now is \"Traditional\". Choose \"number 7\" in "
                                   "Settings → Meter Setup... to play it."
                                 : "");
        EXPECT_EQ(r.recordsRead, read);
        for (std::int32_t i = 1; i <= 10; ++i)
            EXPECT_EQ(buffer(i).TimeMs, i <= read ? i * 20 : 0) << i;
        EXPECT_EQ(buffer.StartTimeSecs, dial ? 77 : 0);  // only a whole load takes stamps
    }
    std::vector<int> seen;  // progress in fiftieths, at least a record a step
    lv::RecBuffer buffer;
    lv::loadLvdBytes(steady(149), 1, buffer, [&seen](int f) { seen.push_back(f); });
    ASSERT_EQ(seen.size(), 74u);
    EXPECT_EQ(std::pair(seen.front(), seen.back()), std::pair(1, 50));
}

TEST(LoadLvdBytes, RecordCountRoundsHalvesToEvenAndShortFilesFail) {
    // 110 bytes: ten over and 6 is even; 130: ten over, but 7 would be odd.
    const std::tuple<std::size_t, std::int32_t, std::int32_t> cases[] = {
        {99, 5, 0}, {100, 5, 100}, {110, 6, 120}, {119, 6, 120}, {130, 6, 120}, {131, 7, 140}};
    for (const auto& [length, count, total] : cases) {
        Bytes bytes = steady(7);
        bytes.resize(length);
        lv::RecBuffer buffer;
        const bool read = lv::loadLvdBytes(bytes, 1, buffer).status != lv::LoadStatus::Incompatible;
        EXPECT_EQ(lv::lvdRecordCount(length), count) << length;
        EXPECT_EQ(std::tuple(read, buffer.RecCount, buffer.TotalTimeMs),
                  std::tuple(length >= 100, read ? count : 0, total))
            << length;
    }
}

TEST_F(Folder, LoadAndSaveFailuresSayWhichFile) {
    fs::create_directory(file("folder.lvd"));
    writeBytes(file("empty.lvd"), {});
    using enum lv::LoadStatus;
    const std::tuple<std::string, lv::LoadStatus, std::string> cases[] = {
        {"none.lvd", NotFound, "File Not Found"},
        {"folder.lvd", Unreadable, "Cannot Open File"},
        {"empty.lvd", Incompatible, "Incompatible file format"}};
    for (const auto& [name, status, title] : cases) {
        lv::RecBuffer buffer;
        const lv::LoadResult r = lv::loadLvdFile(file(name), 1, buffer);
        EXPECT_EQ(std::tuple(r.status, r.title), std::tuple(status, title)) << name;
        const std::string path = file(name).string();
        EXPECT_EQ((status == Incompatible ? r.detail : r.text).substr(0, path.size()), path);
        EXPECT_EQ(buffer.RecCount, 0);
    }
    const lv::SaveResult r = lv::saveLvdRecords(file("missing/x.lvd"), {}, std::nullopt);
    EXPECT_EQ(std::tuple(r.saved, r.title), std::tuple(false, "File Not Saved"));
    EXPECT_EQ(r.text.rfind(file("missing/x.lvd").string(), 0), 0u);
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
    EXPECT_EQ(loaded.RecordingDate, 2089y / September / 17);  // past 16 signed bits

    // Saved over a longer file, a loaded file comes back as it was and the tail stays.
    const Bytes longer = steady(12);
    writeBytes(file("out.lvd"), longer);
    ASSERT_TRUE(lv::saveLvdFile(file("out.lvd"), loaded, std::nullopt).saved);
    Bytes expected = bytes;
    expected.insert(expected.end(), longer.begin() + 120, longer.end());
    EXPECT_EQ(readBytes(file("out.lvd")), expected);
}

TEST(RecBuffer, GrowsByThreeThousandKeepingEveryRecordAndFinds) {
    lv::RecBuffer buffer;
    EXPECT_THROW(buffer(3001), std::out_of_range);
    buffer.append(frame(-10));
    EXPECT_EQ(buffer(1).TimeMs, 0);  // a negative time is stored as 0
    for (std::int32_t i = 2; i <= 6500; ++i) {
        buffer.append(frame(i * 20));
        const std::int32_t room = i <= 3000 ? 3000 : i <= 6001 ? 6001 : 9002;
        ASSERT_EQ(std::tuple(buffer.upperBound(), buffer.RecCount, buffer.RecIndex),
                  std::tuple(room, i, i + 1))
            << i;
    }
    for (std::int32_t i = 2; i <= 6500; ++i) ASSERT_EQ(buffer(i).TimeMs, i * 20) << i;
    buffer.clear();
    EXPECT_EQ(std::tuple(buffer.upperBound(), buffer.RecCount, buffer.RecIndex, buffer.TotalTimeMs),
              std::tuple(3000, 0, 1, 0));
    EXPECT_EQ(buffer.FindlvdRecord(5000), 0);

    // The first record at or after the time; the last past the end.
    for (std::int32_t t : {0, 20, 40, 70, 80, 150, 160, 160, 160, 300}) buffer.append(frame(t));
    const std::pair<std::int32_t, std::int32_t> cases[] = {{-50, 1}, {30, 3},   {155, 7},
                                                           {160, 7}, {161, 10}, {100000, 10}};
    for (const auto& [timeMs, position] : cases) {
        EXPECT_EQ(buffer.FindlvdRecord(timeMs), position) << timeMs;
        EXPECT_EQ(buffer.CurRecord, buffer(position)) << timeMs;
    }
}

TEST(Naming, NamesDatesAndClockText) {
    // Any suffix type but 0 names by date and time.
    const std::tuple<std::int32_t, std::int16_t, std::string, std::string> cases[] = {
        {0, 7, "Test007", "Testnnn"},
        {0, 1234, "Test1234", "Testnnn"},
        {7, 7, "Test24-03-05__14.07.09", "TestDate__Time"}};
    for (const auto& [suffixType, num, name, pattern] : cases) {
        lv::Settings s;
        s.SavePrefix = "Test";
        s.SuffixNum = num;
        s.SuffixType = suffixType;
        EXPECT_EQ(lv::autoName(s, {2024y / March / 5, 14, 7, 9}), name);
        EXPECT_EQ(lv::namingPatternText(s), pattern);
        // The setup dialog's next name: the number, or the date pattern.
        EXPECT_EQ(lv::nextNameText(s), (suffixType ? "Testyy-mm-dd__Hh.Nn.Ss" : name) + ".lvd");
    }
    EXPECT_EQ(lv::recordingModeCaption(3), "Auto Save");
    EXPECT_EQ(lv::formatNameStamp({2105y / November / 20, 9, 30, 0}), "05-11-20__09.30.00");
    EXPECT_EQ(lv::clockText(90000), "01:00:00");
    EXPECT_EQ(lv::clockText(-1), "23:59:59");
    // 2000 is a leap year; 32767 days is the last a 16-bit count holds.
    const std::pair<year_month_day, std::int32_t> days[] = {
        {2000y / March / 1, 61}, {1999y / December / 30, -1}, {2089y / September / 16, 32767}};
    for (const auto& [date, n] : days) {
        EXPECT_EQ(lv::daysSince1999(date), n);
        EXPECT_EQ(lv::dateFromDays(n), date) << n;
    }
}

TEST_F(Folder, ResetDeletesExactlyPrefixAndThreeCharactersDotLvdOrWav) {
    // "é" is one character; S005.lvd is a link, which goes without what it points to.
    const std::vector<std::string> gone = {"S001.lvd", "S999.wav", "S 1 .wav", "S\u00e901.lvd",
                                           "S005.lvd"};
    // save/S003.lvd is a folder; from x001.lvd on: what a hostile prefix or no folder would reach.
    const std::vector<std::string> kept = {
        "save/S0001.lvd", "save/S01.lvd",      "save/S001.LVD",     "save/s001.lvd",
        "save/xS001.lvd", "save/S001.lvd.bak", "save/sub/S002.lvd", "save/S003.lvd/in.txt",
        "S004.lvd",       "x001.lvd",          "save/a/b001.lvd",   "other/x002.wav",
        "Prefix_001.lvd"};
    for (const auto& f : gone) touch("save/" + f);
    for (const auto& f : kept) touch(f);
    fs::remove(file("save/S005.lvd"));
    fs::create_symlink(file("S004.lvd"), file("save/S005.lvd"));

    const auto reset = [&](const std::string& prefix, const std::string& savePath) {
        lv::Settings s;
        s.SavePath = savePath;
        s.SavePrefix = prefix;
        s.SuffixNum = 57;
        const lv::ResetOutcome outcome = lv::resetNumbering(s);
        EXPECT_EQ(s.SuffixNum, outcome.refused.empty() ? 1 : 57) << prefix;
        return outcome;
    };
    const std::string save = file("save").string() + "/";
    const lv::ResetOutcome outcome = reset("S", save);
    EXPECT_EQ(outcome.deleted.size(), gone.size());
    EXPECT_TRUE(outcome.notDeleted.empty());
    for (const char* prefix : {"../x", "*", "?", "a/b", "../other/x", "..", ""})
        EXPECT_TRUE(reset(prefix, save).deleted.empty()) << prefix;
    EXPECT_FALSE(reset("", save).refused.empty()) << "no prefix would be every 3-character name";
    const fs::path before = fs::current_path();  // no save folder: nothing, not the current one
    fs::current_path(temp.path());
    EXPECT_TRUE(reset("Prefix_", "").deleted.empty());
    fs::current_path(before);
    EXPECT_EQ(files(), std::set<std::string>(kept.begin(), kept.end()));
}

// The recording setup dialog: the automatic modes need a save folder, and the
// prefix must name a file that can be made in it.
TEST_F(Folder, RecSetupModesNeedASaveFolderAndPrefixesAFileThatCanBeMadeThere) {
    // mode, folder, selectable, the mode the dialog starts from
    const std::tuple<std::int32_t, const char*, bool, std::int32_t> modes[] = {
        {2, "", false, 1}, {3, "", false, 1}, {4, "", true, 4}, {3, "/r/", true, 3}};
    for (const auto& [mode, folder, selectable, start] : modes)
        EXPECT_EQ(std::pair(lv::modeSelectable(mode, folder), lv::selectableMode(mode, folder)),
                  std::pair(selectable, start))
            << mode << " '" << folder << "'";
    lv::Settings s;
    s.RecordingMode = 2;
    s.SavePath = "/rec/";
    EXPECT_EQ(lv::recordingModeTooltip(s), "Auto name and manually save in /rec/");
    s.RecordingMode = 1;
    EXPECT_EQ(lv::recordingModeTooltip(s), "Manual");
    EXPECT_EQ(lv::saveFolderText("/home/op/rec") + lv::saveFolderText("/"), "/home/op/rec//");

    touch("Keep000.lvd");  // already there: usable, left as it is
    const std::string here = temp.path().string() + "/";
    // Without a folder only the no-subfolder rule applies; "/proc/" takes no new file.
    const std::tuple<std::string, std::string, bool> prefixes[] = {
        {here, "Keep", true},
        {here, std::string(300, 'a'), false},
        {"/proc/", "Test_", false},
        {"", std::string(300, 'a'), true},
        {"", "a/b", false}};
    for (const auto& [folder, prefix, valid] : prefixes) {
        const auto problem = lv::checkPrefix(folder, prefix);
        EXPECT_EQ(problem ? problem->title + "|" + problem->text : "",
                  valid ? "" : "Validate Filename|Error: Invalid Prefix name ")
            << "'" << folder << "' '" << prefix.substr(0, 10) << "'";
    }
    EXPECT_EQ(files(), std::set<std::string>{"Keep000.lvd"});
    EXPECT_EQ(readBytes(file("Keep000.lvd")), Bytes{'x'});

    // OK copies the dialog's settings, and no others.
    lv::Settings edited, inForce;
    edited.RecordingMode = 3;
    edited.SuffixNum = 42;
    edited.RecPromptEnable = false;
    edited.LoadPath = "/elsewhere/";
    edited.PlayLoopEnable = true;
    edited.DialType = 3;
    lv::copyRecordingSetup(edited, inForce);
    const lv::Settings defaults;
    EXPECT_EQ(
        std::tuple(inForce.RecordingMode, inForce.SuffixNum, inForce.RecPromptEnable,
                   inForce.LoadPath, inForce.PlayLoopEnable, inForce.DialType),
        std::tuple(3, 42, false, defaults.LoadPath, defaults.PlayLoopEnable, defaults.DialType));
}

// Newest first, each once, ten at most, and the same list in the next run.
TEST_F(Folder, RecentFilesKeepTheLastTenAcrossRuns) {
    const fs::path list = file("lv_Analog.recent");
    {
        std::ofstream(list) << "/a.lvd\r\n\n/b.lvd\n/a.lvd\n";  // by hand, with a repeat
    }
    lv::RecentFiles recent(list);
    recent.load();
    EXPECT_EQ(recent.paths(), (std::vector<std::string>{"/a.lvd", "/b.lvd"}));
    for (int i = 0; i < 12; ++i) ASSERT_TRUE(recent.add("/r" + std::to_string(i) + ".lvd"));
    ASSERT_TRUE(recent.add("/r5.lvd"));
    EXPECT_FALSE(recent.add("/two\nlines.lvd"));
    const std::vector<std::string> expected{"/r5.lvd", "/r11.lvd", "/r10.lvd", "/r9.lvd",
                                            "/r8.lvd", "/r7.lvd",  "/r6.lvd",  "/r4.lvd",
                                            "/r3.lvd", "/r2.lvd"};
    EXPECT_EQ(recent.paths(), expected);
    lv::RecentFiles nextRun(list);
    nextRun.load();
    EXPECT_EQ(nextRun.paths(), expected);
    EXPECT_FALSE(fs::exists(list.string() + ".new")) << "nothing left aside";
}

}  // namespace