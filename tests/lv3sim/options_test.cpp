#include "lv3sim/options.h"

#include <gtest/gtest.h>

namespace lv::sim {
namespace {

ParsedOptions parse(std::vector<std::string_view> args) {
    return parseOptions(args);
}

TEST(SimOptions, ReadsValuesInBothSpellings) {
    const ParsedOptions p =
        parse({"--link", "/tmp/m", "--code=3A", "--seed=42", "--pace", "byte", "--script", "s",
               "--once", "--burst=3", "--stall-after", "1.5", "--stall-for=0.25", "--mute"});
    ASSERT_EQ(p.error, "");
    const Options& o = p.options;
    EXPECT_EQ(o.link + o.code + o.boot + o.firmware + o.scriptPath, "/tmp/m3A1.022.10s");
    EXPECT_EQ(o.seed, 42u);
    EXPECT_EQ(o.pace, Pace::Byte);
    EXPECT_FALSE(o.repeat);
    EXPECT_EQ(o.burst, 3);
    EXPECT_EQ(o.stallAfter, 1.5);
    EXPECT_EQ(o.stallFor, 0.25);
    EXPECT_TRUE(o.mute && !o.ackSplit && !o.exitAfter);
}

TEST(SimOptions, RefusesBadCommandLinesNamingTheOption) {
    const struct {
        std::vector<std::string_view> args;
        const char* mentions;
    } cases[] = {
        {{}, "--link"},
        {{"--link"}, "--link needs a value"},
        {{"--link", "m", "--bogus"}, "--bogus"},
        {{"--link", "m", "--pace", "fast"}, "--pace"},
        {{"--link", "m", "--burst", "0"}, "--burst"},
        {{"--link", "m", "--bad-every", "2x"}, "--bad-every"},
        {{"--link", "m", "--stall-after", "-1"}, "--stall-after"},
        {{"--link", "m", "--stall-for", "1"}, "--stall-for needs --stall-after"},
        {{"--link", "m", "--once"}, "--once needs --script"},
        {{"--link", "m", "--exit-after", "0"}, "--exit-after"},
        {{"--link", "m", "--code", ""}, "--code"},
        {{"--link", "m", "--firmware", "1\r2"}, "--firmware"},
        {{"--link", "m", "--mute=yes"}, "--mute takes no value"},
        {{"--link", "m", "--seed", "-3"}, "--seed"},
    };
    for (const auto& c : cases) {
        const ParsedOptions p = parseOptions(c.args);
        EXPECT_NE(p.error.find(c.mentions), std::string::npos) << "error was: " << p.error;
    }
}

TEST(SimOptions, HelpNeedsNothingElseAndListsEveryOption) {
    const ParsedOptions p = parse({"--help"});
    EXPECT_TRUE(p.options.help);
    EXPECT_EQ(p.error, "");
    for (const char* name :
         {"--link",      "--code",        "--boot",       "--firmware",   "--seed",
          "--pace",      "--script",      "--repeat",     "--once",       "--table-out",
          "--ack-split", "--reply-delay", "--fail-every", "--burst",      "--bad-every",
          "--garbage",   "--stall-after", "--stall-for",  "--exit-after", "--mute",
          "--log",       "--help"})
        EXPECT_NE(helpText().find(name), std::string::npos) << name;
}

}  // namespace
}  // namespace lv::sim
