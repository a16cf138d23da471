// The real lv3sim on a real pseudo-terminal, talked to as the program does.
#include <signal.h>
#include <stdlib.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "calibration/intel_hex.h"
#include "device/protocol.h"
#include "lv3sim/pty_client.h"
#include "lv3sim/sim_process.h"

namespace lv::sim::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

double msBetween(Clock::time_point a, Clock::time_point b) {
    return std::chrono::duration<double, std::milli>(b - a).count();
}

// A temporary folder with a meter published in it as "meter", and any files
// it is to read written there first.
struct Meter {
    explicit Meter(std::vector<std::string> args = {},
                   const std::vector<std::pair<std::string, std::string>>& files = {}) {
        std::string pattern = (fs::temp_directory_path() / "lv3sim_XXXXXX").string();
        dir = ::mkdtemp(pattern.data());
        link = path("meter");
        for (const auto& [name, text] : files) std::ofstream(path(name)) << text;
        args.insert(args.begin(), {"--link", link});
        for (std::string& a : args)
            if (a.starts_with("@")) a = path(a.substr(1));  // "@name": a file in the folder
        process = std::make_unique<SimProcess>(args);
    }
    ~Meter() {
        process.reset();
        fs::remove_all(dir);
    }
    std::string path(const std::string& name) const { return (dir / name).string(); }
    bool ready() const { return process->firstLine() == "READY " + link; }

    fs::path dir;
    std::string link;
    std::unique_ptr<SimProcess> process;
};

TEST(Lv3simProcess, AnswersVersionQuickly) {
    Meter m({"--code", "31", "--boot", "B7", "--firmware", "3.4"});
    ASSERT_TRUE(m.ready()) << m.process->firstLine();
    PtyClient port(m.link);
    for (const char* which : {"first", "second"}) {
        const auto sent = port.send("V\r");
        const auto pieces = port.readPieces(1s, true);
        ASSERT_EQ(joined(pieces), "V,LV31,B7,3.4\r");
        const double ms = msBetween(sent, pieces.back().at);
        std::printf("%s V reply after %.2f ms\n", which, ms);
        EXPECT_LT(ms, 250);
    }
}

TEST(Lv3simProcess, StreamsFiftyFramesASecondAndFallsQuietOnQ) {
    Meter m;
    ASSERT_TRUE(m.ready());
    PtyClient port(m.link);
    port.send("U\r");
    port.read(1s, true);  // up to the first frame: the count starts there
    const std::string stream = port.read(2000ms);
    std::size_t frames = 0, start = 0;
    for (std::size_t cr; (cr = stream.find('\r', start)) != std::string::npos; start = cr + 1) {
        ASSERT_TRUE(protocol::splitFrame(stream.substr(start, cr - start))) << start;
        ++frames;
    }
    std::printf("%zu frames in 2 s\n", frames);
    EXPECT_GE(frames, 95u);
    EXPECT_LE(frames, 105u);

    // The program's probe: Q, Q, drain 0.1 s, then V must find a quiet line.
    port.send("Q\r");
    port.send("Q\r");
    port.read(100ms);
    EXPECT_EQ(port.read(300ms), "");
    port.send("V\r");
    EXPECT_EQ(port.read(1s, true), "V,LV40,1.02,2.10\r");
}

TEST(Lv3simProcess, NextProgramFindsNothingLeftOver) {
    Meter m;
    ASSERT_TRUE(m.ready());
    {
        PtyClient first(m.link);
        first.send("U\r");
        std::this_thread::sleep_for(300ms);  // frames pile up unread
        first.send("Q\r");
    }
    std::this_thread::sleep_for(100ms);
    PtyClient second(m.link);
    EXPECT_EQ(second.read(300ms), "");
    second.send("V\r");
    EXPECT_EQ(second.read(1s, true), "V,LV40,1.02,2.10\r");
}

TEST(Lv3simProcess, ScriptOnceSendsExactlyTheScript) {
    Meter m({"--script", "@frames.txt", "--once"},
            {{"frames.txt", "# three frames, one bad\nP12342A5000F\n\nO00000000000\nP12 bad\n"}});
    ASSERT_TRUE(m.ready());
    PtyClient port(m.link);
    port.send("U\r");
    EXPECT_EQ(port.read(500ms), "P12342A5000F\rO00000000000\rP12 bad\r");
}

TEST(Lv3simProcess, LoaderTakesAnUploadAndLogsEveryLine) {
    Meter m({"--ack-split", "--table-out", "@table.txt", "--log", "@log.txt"});
    ASSERT_TRUE(m.ready());
    PtyClient port(m.link);
    std::vector<std::uint8_t> first(16, 0x0A), last(16, 0xFF);
    for (int i = 0; i < 16; i += 2) first[i] = static_cast<std::uint8_t>(i);
    const std::pair<std::string, std::string> dialogue[] = {
        {"\xC2\xD4", "PASS\r"},
        {formatExtendedLinearAddress(0), "PASS\r"},
        {formatDataRecord(0xE000, first), "PASS\r"},
        {":10E01000000000000000000000000000000000FF", "FAIL\r"},
        {formatDataRecord(0xFFF0, last), "PASS\r"},
        {formatEndOfFile(), "PASS\r"},
    };
    port.send("H\r");
    EXPECT_EQ(port.read(200ms), "");  // the program drains for 0.2 s
    int split = 0;
    for (const auto& [line, answer] : dialogue) {
        const auto sent = port.send(line + "\r");
        const auto pieces = port.readPieces(300ms, true);
        ASSERT_EQ(joined(pieces), answer) << line;
        EXPECT_LT(msBetween(sent, pieces.back().at), 300);
        split += pieces.size() == 2 && pieces[0].bytes.size() == 4;
    }
    EXPECT_GE(split, 4) << "acknowledgements that came as two writes";

    std::ifstream table(m.path("table.txt"));
    std::vector<long> entries;
    for (long v; table >> v;) entries.push_back(v);
    ASSERT_EQ(entries.size(), 4096u);
    for (int k = 0; k < 4096; ++k) {
        const long expected = k < 8 ? 0x0A00 + 2 * k : k < 4088 ? k : 0xFFFF;
        ASSERT_EQ(entries[k], expected) << "entry " << k;
    }

    std::ifstream log(m.path("log.txt"));
    std::vector<std::string> received;
    for (std::string line; std::getline(log, line);)
        if (!line.starts_with("#")) received.push_back(line.substr(line.find(' ') + 1));
    std::vector<std::string> expected = {"H", "\\xC2\\xD4"};
    for (std::size_t i = 1; i < std::size(dialogue); ++i) expected.push_back(dialogue[i].first);
    EXPECT_EQ(received, expected);
}

TEST(Lv3simProcess, MuteMeterReadsButNeverAnswers) {
    Meter m({"--mute", "--log", "@log.txt"});
    ASSERT_TRUE(m.ready());
    PtyClient port(m.link);
    port.send("V\rU\r");
    EXPECT_EQ(port.read(400ms), "");
    std::ifstream log(m.path("log.txt"));
    const std::string text(std::istreambuf_iterator<char>(log), {});
    EXPECT_NE(text.find(" V\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" U\n"), std::string::npos) << text;
}

TEST(Lv3simProcess, EndsCleanlyAndRemovesItsLink) {
    const std::pair<int, std::vector<std::string>> cases[] = {
        {SIGTERM, {}}, {SIGINT, {}}, {0, {"--exit-after", "0.3"}}};
    for (const auto& [sig, args] : cases) {
        Meter m(args);
        ASSERT_TRUE(m.ready());
        ASSERT_TRUE(fs::is_symlink(m.link));
        if (sig) m.process->signal(sig);
        EXPECT_EQ(m.process->waitExit(3s), 0) << "signal " << sig;
        EXPECT_FALSE(fs::is_symlink(m.link)) << "signal " << sig;
    }
}

TEST(Lv3simProcess, ExitCodesForHelpAndBadOptions) {
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{"--help"}, 0},
        {{"--link", "x", "--burst", "0"}, 2},
        {{"--link", "x", "--nonsense"}, 2},
        {{"--link", "x", "--script", "/nonexistent/frames"}, 2},
    };
    for (const auto& [args, code] : cases) {
        SimProcess p(args);
        EXPECT_EQ(p.waitExit(3s), code) << args.back();
    }
}

}  // namespace
}  // namespace lv::sim::test
