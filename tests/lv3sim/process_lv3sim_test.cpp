// The real lv3sim on a real pseudo-terminal, talked to as the program does.
#include "device/protocol.h"
#include "support/pty_meter.h"

namespace lv::sim {
namespace {

using namespace std::chrono_literals;
using test::Port;
using test::Sim;
namespace fs = std::filesystem;

// One program's session (probe, stream, stop, leave with frames unread),
// then the next program, which must find a quiet line.
TEST(Lv3simProcess, AnswersStreamsStopsAndLeavesNothingForTheNextProgram) {
    Sim m({"--code=31", "--boot", "B7", "--firmware", "3.4"});
    ASSERT_TRUE(m.ready()) << m.firstLine;
    {
        Port port(m.link);
        const auto sent = port.send("V\r");
        ASSERT_EQ(port.read(1s, true), "V,LV31,B7,3.4\r");
        EXPECT_LT(port.pieces.back().first - sent, 250ms);
        port.send("U\r");
        port.read(1s, true);  // up to the first frame: the count starts there
        const std::string stream = port.read(2000ms);
        std::size_t frames = 0, start = 0;
        for (std::size_t cr; (cr = stream.find('\r', start)) != std::string::npos; ++frames) {
            ASSERT_TRUE(protocol::splitFrame(stream.substr(start, cr - start))) << frames;
            start = cr + 1;
        }
        EXPECT_GE(frames, 95u);
        EXPECT_LE(frames, 105u);
        // The program's probe: Q, Q, drain 0.1 s, then the line must be quiet.
        port.send("Q\rQ\r");
        port.read(100ms);
        EXPECT_EQ(port.read(300ms), "");
        port.send("U\r");
        std::this_thread::sleep_for(300ms);  // frames pile up unread
        port.send("Q\r");
    }
    std::this_thread::sleep_for(100ms);
    Port next(m.link);
    EXPECT_EQ(next.read(300ms), "");
    next.send("V\r");
    EXPECT_EQ(next.read(1s, true), "V,LV31,B7,3.4\r");
}

TEST(Lv3simProcess, ScriptOnceSendsExactlyTheScriptAndAMuteMeterNothing) {
    Sim m({"--script", "@frames.txt", "--once"},
          "# a bad one too\r\nP12342A5000F\n\n \t\nO00000000000\r\nP12 bad\n P0 \n");
    ASSERT_TRUE(m.ready());
    Port port(m.link);
    port.send("U\r");
    EXPECT_EQ(port.read(500ms), "P12342A5000F\rO00000000000\rP12 bad\r P0 \r");

    Sim mute({"--mute", "--log", "@log.txt"});
    ASSERT_TRUE(mute.ready());
    Port port2(mute.link);
    port2.send("V\rU\r");
    EXPECT_EQ(port2.read(400ms), "");
    EXPECT_EQ(mute.received(), (std::vector<std::string>{"V", "U"}));
}

TEST(Lv3simProcess, LoaderTakesAnUploadAndLogsEveryLine) {
    Sim m({"--ack-split", "--fail-every=3", "--table-out", "@table.txt", "--log", "@log.txt"});
    ASSERT_TRUE(m.ready());
    Port port(m.link);
    const std::string ff = "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF";
    const std::pair<std::string, std::string> dialogue[] = {
        {"\xC2\xD4", "PASS\r"},
        {":020000040000FA", "PASS\r"},
        {":10E00000000A020A040A060A080A0A0A0C0A0E0A88", "PASS\r"},
        {":10E01000000000000000000000000000000000FF", "FAIL\r"},  // bad checksum
        {":10E10000" + ff + "1F", "FAIL\r"},                      // the third HEX line: refused
        {":10FFF000" + ff + "11", "PASS\r"},
        {":00000001FF", "PASS\r"},
    };
    port.send("H\r");
    EXPECT_EQ(port.read(200ms), "");  // the program drains for 0.2 s
    int split = 0;
    for (const auto& [line, answer] : dialogue) {
        const auto sent = port.send(line + "\r");
        ASSERT_EQ(port.read(300ms, true), answer) << line;
        EXPECT_LT(port.pieces.back().first - sent, 300ms);
        split += port.pieces.size() == 2 && port.pieces[0].second == 4;
    }
    EXPECT_GE(split, 5) << "acknowledgements that came as two writes";

    std::string table;
    for (int k = 0; k < 4096; ++k)
        table += std::to_string(k < 8 ? 0x0A00 + 2 * k : k < 4088 ? k : 0xFFFF) + "\n";
    EXPECT_EQ(m.text("table.txt"), table);
    std::vector<std::string> expected = {"H", "\\xC2\\xD4"};
    for (std::size_t i = 1; i < std::size(dialogue); ++i) expected.push_back(dialogue[i].first);
    EXPECT_EQ(m.received(), expected);
}

TEST(Lv3simProcess, ExitCodesAndCleanEnds) {
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{"--help"}, 0}, {{"--version"}, 0},     {{"--burst", "0"}, 2},
        {{"--once"}, 2}, {{"--stall-for=1"}, 2}, {{"--script", "/nonexistent/frames"}, 2}};
    for (const auto& [args, code] : cases) EXPECT_EQ(Sim(args).waitExit(), code) << args[0];
    // Ended by a signal or after its time, it removes its link.
    const std::pair<int, std::vector<std::string>> ends[] = {
        {SIGTERM, {}}, {SIGINT, {}}, {0, {"--exit-after", "0.3"}}};
    for (const auto& [sig, args] : ends) {
        Sim m(args);
        ASSERT_TRUE(m.ready());
        ASSERT_TRUE(fs::is_symlink(m.link));
        if (sig) ::kill(m.pid, sig);
        EXPECT_EQ(m.waitExit(), 0) << "signal " << sig;
        EXPECT_FALSE(fs::is_symlink(m.link)) << "signal " << sig;
    }
}

}  // namespace
}  // namespace lv::sim
