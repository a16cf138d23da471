#include "lv3sim/line_splitter.h"

#include <gtest/gtest.h>

#include "lv3sim/rx_log.h"

namespace lv::sim {
namespace {

TEST(LineSplitter, CutsCommandsHoweverTheyArrive) {
    using Lines = std::vector<std::string>;
    const struct {
        std::vector<std::string> chunks;
        Lines lines;
        std::string pending;
    } cases[] = {
        {{"V\r"}, {"V"}, ""},
        {{"V", "\r"}, {"V"}, ""},
        {{"S", "L\rU"}, {"SL"}, "U"},
        {{"U\r\nQ\r"}, {"U", "Q"}, ""},
        {{"U\r", "\nQ\r"}, {"U", "Q"}, ""},
        {{"U\nQ\n"}, {"U", "Q"}, ""},
        {{"\r"}, {""}, ""},
        {{"\r\r"}, {"", ""}, ""},
        {{"\n\n"}, {"", ""}, ""},
        {{"\xC2\xD4\r"}, {"\xC2\xD4"}, ""},
        {{std::string("A\0B\r", 4)}, {std::string("A\0B", 3)}, ""},
        {{":10E0", "000000", "\r"}, {":10E0000000"}, ""},
        {{std::string(LineSplitter::kMaxLine + 3, 'x')},
         {std::string(LineSplitter::kMaxLine, 'x')},
         "xxx"},
    };
    for (const auto& c : cases) {
        LineSplitter splitter;
        Lines lines;
        for (const std::string& chunk : c.chunks)
            for (std::string& line : splitter.feed(chunk)) lines.push_back(std::move(line));
        EXPECT_EQ(lines, c.lines) << "first chunk: " << escapeBytes(c.chunks.front());
        EXPECT_EQ(splitter.pending(), c.pending);
    }
}

TEST(LineSplitter, ResetDropsAHalfLine) {
    LineSplitter splitter;
    splitter.feed("Q\rU");
    splitter.reset();
    EXPECT_EQ(splitter.feed("V\r"), std::vector<std::string>{"V"});
}

TEST(RxLog, ShowsControlBytesAsEscapes) {
    const struct {
        std::string bytes;
        const char* shown;
    } cases[] = {
        {"V", "V"},
        {"\xC2\xD4", "\\xC2\\xD4"},
        {std::string("\0\t\x1F\x7F", 4), "\\x00\\x09\\x1F\\x7F"},
        {"a\\b", "a\\x5Cb"},
        {" P800   2051 ", " P800   2051 "},
    };
    for (const auto& c : cases) EXPECT_EQ(escapeBytes(c.bytes), c.shown);
    EXPECT_EQ(formatSeconds(std::chrono::microseconds(12345678)), "12.345678");
    EXPECT_EQ(formatSeconds(Nanos(999)), "0.000000");
}

}  // namespace
}  // namespace lv::sim
