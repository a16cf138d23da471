#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include <QColor>
#include <QImage>

#include "lvdtool/lvd_synth.h"
#include "recording/lvd_file.h"
#include "recording/lvd_report.h"
#include "support/sound_files.h"
#include "support/temp_dir.h"

namespace lv::tool {
namespace {

namespace fs = std::filesystem;

class LvdToolTest : public ::testing::Test {
protected:
    // Runs the real tool; returns its exit status, and what it printed in `out`.
    int run(const std::string& args) {
        FILE* pipe = ::popen((std::string(LVDTOOL_PATH) + " " + args + " 2>&1").c_str(), "r");
        out.clear();
        char buf[4096];
        while (std::size_t n = std::fread(buf, 1, sizeof buf, pipe)) out.append(buf, n);
        return WEXITSTATUS(::pclose(pipe));
    }
    std::string path(const std::string& name) const { return dir.file(name); }

    test::TempDir dir{"lvdtool_test"};
    std::string out;
};

// Base code 82 is (41 + 8) / 20 = 2.45, BD 1000 tenths shows "100", a
// negative reading is the meter's 0..65535 value.
TEST_F(LvdToolTest, CsvShowsWhatTheDialShows) {
    const auto record = [](std::int32_t ms, std::int16_t raw, std::int16_t bd, std::uint8_t base,
                           int lamp, bool bdFlag, std::uint8_t frame) {
        // Byte 13, the stamp and its marker as the recorder leaves them: 0.
        return lvdRecord{ms, raw, -2503, bd,   base, 36, packStatusFlags(lamp, false, bdFlag, 3),
                         0,  {},  0,     frame};
    };
    std::vector<lvdRecord> records{record(20, -1, 1000, 82, 2, true, 'O')};
    for (std::int32_t ms : {40, 40, 40, 100})
        records.push_back(record(ms, 1234, 15, 245, 0, false, 'P'));
    ASSERT_TRUE(saveLvdRecords(path("h.lvd"), records, std::nullopt).saved);
    const auto rec = loadRecording(path("h.lvd"));
    ASSERT_TRUE(rec.ok) << rec.message;
    std::ostringstream csv, json, info;
    writeRecords(rec.buffer, RecordFormat::Csv, csv);
    writeRecords(rec.buffer, RecordFormat::JsonLines, json);
    EXPECT_EQ(
        csv.str().substr(0, csv.str().find("\n3,")),
        "index,time_ms,raw,needle,bd,base_code,base,sensitivity,lamp,bd_flag,dial_type,frame\n"
        "1,20,65535,-2503,100,82,2.45,36,2,1,3,O\n2,40,1234,-2503,1.5,245,6.5,36,0,0,3,P");
    EXPECT_EQ(json.str().substr(0, json.str().find('\n')),
              "{\"index\":1,\"time_ms\":20,\"raw\":65535,\"needle\":-2503,\"bd\":100,"
              "\"base_code\":82,\"base\":2.45,\"sensitivity\":36,\"lamp\":2,\"bd_flag\":true,"
              "\"dial_type\":3,\"frame\":\"O\"}");
    writeInfo(rec, info);
    EXPECT_NE(info.str().find("start_time: none\ndate: 1999-12-31\n"), std::string::npos);
}

TEST_F(LvdToolTest, CommandLineRoundTripAndBadInput) {
    const auto records = synthRecords(30, 0, 9);
    ASSERT_EQ(records.size(), 1500u);
    EXPECT_EQ(records.front().NeedlePos, -2503) << "the first sample rests on the reference";

    ASSERT_EQ(run("synth " + path("r.lvd") +
                  " --seconds 12 --dial-type 2 --seed 4 --start '2025-01-02 03:04:05'"),
              0)
        << out;
    EXPECT_EQ(run("info " + path("r.lvd")), 0);
    EXPECT_EQ(out,
              "records: 600\ntotal_ms: 12000\nstart_time: 03:04:05\ndate: 2025-01-02\n"
              "dial_type: 2\nverdict: valid\nsound: none\n");
    EXPECT_EQ(run("csv " + path("r.lvd") + " -o " + path("r.csv")), 0);
    std::ifstream csv(path("r.csv"));
    EXPECT_EQ(std::count(std::istreambuf_iterator<char>(csv), {}, '\n'), 601);
    EXPECT_EQ(run("plot " + path("r.lvd") + " -o " + path("r.png") + " --width 1600"), 0) << out;
    // 600 records on ~1500 pixel columns: the needle's trace has no gaps.
    const QImage png(QString::fromStdString(path("r.png")));
    int firstX = -1, lastX = -1, gaps = 0;
    for (int x = 0; x < png.width(); ++x) {
        bool red = false;
        for (int y = 0; y < png.height() && !red; ++y) {
            const QColor c = png.pixelColor(x, y);
            red = c.red() - std::max(c.green(), c.blue()) > 40;  // antialiased too
        }
        if (!red) continue;
        if (firstX < 0) firstX = x;
        gaps += lastX >= 0 && x > lastX + 1;
        lastX = x;
    }
    EXPECT_GT(lastX - firstX, 1400);
    EXPECT_EQ(gaps, 0);

    std::ofstream(path("empty.lvd")).close();
    std::ifstream whole(path("r.lvd"), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(whole)), {});
    std::ofstream(path("short.lvd"), std::ios::binary) << bytes.substr(0, 99);
    std::string mixed = bytes;
    mixed[20 * 300 + lvd_offset::kStatusFlags] =
        static_cast<char>(packStatusFlags(0, false, false, 1));
    std::ofstream(path("mixed.lvd"), std::ios::binary) << mixed;
    bytes[19 + 40] = 'X';  // record 3's frame letter
    std::ofstream(path("corrupt.lvd"), std::ios::binary) << bytes;
    const struct {
        std::string args;
        int status;
        const char* says;
    } cases[] = {
        {"info " + path("empty.lvd"), 1, "Incompatible file format"},
        {"csv " + path("short.lvd"), 1,
         "This file is corrupt or needs to be converted to version 2 format."},
        {"plot " + path("corrupt.lvd") + " -o " + path("c.png"), 1, "Incompatible file format"},
        {"info " + dir.path().string(), 1, "folder"},
        // The program refuses a recording whose dial type changes, whatever dial is set.
        {"info " + path("mixed.lvd"), 1, "Wrong Dial Type"},
        {"info", 2, "Usage"},
        {"synth " + path("x.lvd") + " --seconds -5", 2, "whole number"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(run(c.args), c.status) << c.args;
        EXPECT_NE(out.find(c.says), std::string::npos) << c.args << "\n" << out;
    }
    EXPECT_FALSE(fs::exists(path("c.png")));
}

// The sound beside a recording, as the player takes it (the wave before the
// MP3), with its exact length: an MP3 adds only its encoder's delay and
// padding, also when it is VBR without a Xing/Info header.
TEST_F(LvdToolTest, InfoReportsTheSoundBesideTheRecords) {
    ASSERT_EQ(run("synth " + path("r.lvd") + " --seconds 12"), 0) << out;
    test::makeNoise(path("source.wav"), "-r 44100 -c 1 -b 16", 12.5);
    test::encodeMp3(path("source.wav"), "-V 4 -t", path("r.mp3"));
    test::makeNoise(path("r.wav"), "-r 48000 -c 2 -b 24", 11.25);
    // Then a wave that is none: the MP3 is played.
    const struct {
        const char* wave;
        const char* sound;
        std::int64_t fromMs, toMs;
    } cases[] = {{nullptr, "sound: r.wav, wav 48000 Hz 2 ch\n", 11250, 11250},
                 {"RIFF, but no wave", "sound: r.mp3, mp3 44100 Hz 1 ch\n", 12500, 12570}};
    for (const auto& c : cases) {
        if (c.wave) fs::remove(path("r.wav"));
        if (c.wave && *c.wave) std::ofstream(path("r.wav")) << c.wave;
        ASSERT_EQ(run("info " + path("r.lvd")), 0) << out;
        const auto at = out.find("sound: ");
        ASSERT_NE(at, std::string::npos) << out;
        std::istringstream lines(out.substr(at));
        std::string sound, key;
        std::int64_t ms = 0, difference = 0;
        std::getline(lines, sound);
        lines >> key >> ms;
        EXPECT_EQ(key, "sound_ms:");
        lines >> key >> difference;
        EXPECT_EQ(key, "sound_minus_records_ms:");
        EXPECT_EQ(sound + "\n", c.sound);
        EXPECT_GE(ms, c.fromMs);
        EXPECT_LE(ms, c.toMs);
        EXPECT_EQ(difference, ms - 12000);
    }
}

}  // namespace
}  // namespace lv::tool
