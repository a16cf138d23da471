#include "settings/profile_file.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "settings/temp_folder.h"

namespace lv {
namespace {

struct ReadCase {
    const char* name;
    std::string file;
    const char* section;
    const char* key;
    const char* defaultValue;
    std::string expected;
};
void PrintTo(const ReadCase& c, std::ostream* os) {
    *os << c.name;
}

class ProfileReadTest : public ::testing::TestWithParam<ReadCase> {};

TEST_P(ProfileReadTest, ReadsAsThePlatformDid) {
    const ReadCase& c = GetParam();
    EXPECT_EQ(ProfileFile(c.file).read(c.section, c.key, c.defaultValue), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lookup, ProfileReadTest,
    ::testing::Values(
        ReadCase{"AnyLetterCase", "[Colors]\r\nDial_Color=255\r\n", "colors", "DIAL_COLOR", "d",
                 "255"},
        ReadCase{"BlanksAroundNamesAndValue", "  [ A ]  \r\n  k   =   v  w  \r\n", "A", "k", "d",
                 "v  w"},
        ReadCase{"EmptyValueIsNotMissing", "[A]\r\nk=\r\n", "A", "k", "d", ""},
        ReadCase{"MissingKey", "[A]\r\nx=1\r\n", "A", "k", "d", "d"},
        ReadCase{"DefaultLosesTrailingBlanks", "", "A", "k", " d  ", " d"},
        ReadCase{"KeyOfAnotherSection", "[A]\r\nx=1\r\n[B]\r\nk=2\r\n", "A", "k", "d", "d"},
        ReadCase{"SectionSeenTwice", "[A]\r\nx=1\r\n[B]\r\n[a]\r\nk=2\r\n", "A", "k", "d", "2"},
        ReadCase{"FirstOfTwoKeys", "[A]\r\nk=1\r\nK=2\r\n", "A", "k", "d", "1"},
        ReadCase{"KeyBeforeAnySection", "k=1\r\n[A]\r\n", "A", "k", "d", "d"},
        ReadCase{"LineWithoutEquals", "[A]\r\nk\r\n", "A", "k", "d", "d"},
        ReadCase{"Comment", "[A]\r\n;k=1\r\n", "A", ";k", "d", "d"},
        ReadCase{"EqualsInValue", "[A]\r\nk=a=b\r\n", "A", "k", "d", "a=b"},
        ReadCase{"ByteOrderMark", "\xEF\xBB\xBF[A]\r\nk=1", "A", "k", "d", "1"},
        ReadCase{"LineFeeds", "[A]\nx=1\nk=2\n", "A", "k", "d", "2"},
        ReadCase{"CarriageReturns", "[A]\rx=1\rk=2", "A", "k", "d", "2"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Quotes, ProfileReadTest,
    ::testing::Values(ReadCase{"Double", "[A]\nk=\"a b\"\n", "A", "k", "d", "a b"},
                      ReadCase{"Single", "[A]\nk='a b'\n", "A", "k", "d", "a b"},
                      ReadCase{"BlanksInsideKept", "[A]\nk=\" a \"\n", "A", "k", "d", " a "},
                      ReadCase{"Empty", "[A]\nk=\"\"\n", "A", "k", "d", ""},
                      ReadCase{"Mismatched", "[A]\nk=\"a'\n", "A", "k", "d", "\"a'"},
                      ReadCase{"OpeningOnly", "[A]\nk=\"a\n", "A", "k", "d", "\"a"},
                      ReadCase{"LoneQuote", "[A]\nk=\"\n", "A", "k", "d", "\""},
                      ReadCase{"NotAtBothEnds", "[A]\nk=a\"b\"\n", "A", "k", "d", "a\"b\""}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ProfileRead, ValuesAreCutTo254Characters) {
    const std::string longText(300, 'x');
    const std::string expected(254, 'x');
    EXPECT_EQ(ProfileFile("[A]\nk=" + longText + "\n").read("A", "k", "d"), expected);
    // The quotes go first, so the cut counts only what was inside them.
    EXPECT_EQ(ProfileFile("[A]\nk=\"" + longText + "\"\n").read("A", "k", "d"), expected);
    EXPECT_EQ(ProfileFile("[A]\nk=\"" + std::string(254, 'y') + "\"\n").read("A", "k", "d"),
              std::string(254, 'y'));
    EXPECT_EQ(ProfileFile("").read("A", "k", longText), expected);
}

struct WriteCase {
    const char* name;
    std::string before;
    const char* section;
    const char* key;
    std::string value;
    std::string after;
};
void PrintTo(const WriteCase& c, std::ostream* os) {
    *os << c.name;
}

class ProfileWriteTest : public ::testing::TestWithParam<WriteCase> {};

TEST_P(ProfileWriteTest, ChangesOnlyWhatItMust) {
    const WriteCase& c = GetParam();
    ProfileFile profile(c.before);
    profile.write(c.section, c.key, c.value);
    EXPECT_EQ(profile.text(), c.after);
}

INSTANTIATE_TEST_SUITE_P(
    Edits, ProfileWriteTest,
    ::testing::Values(
        WriteCase{"RewrittenInPlace", "; mine\r\n[A]\r\nx=1\r\n  K = old  \r\n\r\n[B]\r\ny=2\r\n",
                  "a", "k", "new", "; mine\r\n[A]\r\nx=1\r\nK=new\r\n\r\n[B]\r\ny=2\r\n"},
        WriteCase{"AppendedToAnEarlierSection", "[A]\r\nx=1\r\n\r\n; about B\r\n[B]\r\ny=2\r\n",
                  "a", "z", "3", "[A]\r\nx=1\r\nz=3\r\n\r\n; about B\r\n[B]\r\ny=2\r\n"},
        WriteCase{"AfterUnknownLinesOfTheSection", "[A]\nnoequals\nother=1\n[B]\n", "A", "x", "5",
                  "[A]\nnoequals\nother=1\nx=5\n[B]\n"},
        WriteCase{"IntoAnEmptySection", "[A]\n[B]\ny=2\n", "A", "x", "1", "[A]\nx=1\n[B]\ny=2\n"},
        WriteCase{"NewSectionAtTheEnd", "[A]\r\nx=1\r\n", "B", "y", "2",
                  "[A]\r\nx=1\r\n[B]\r\ny=2\r\n"},
        WriteCase{"NewFile", "", "A", "x", "1", "[A]\r\nx=1\r\n"},
        WriteCase{"KeepsLineFeedFiles", "[A]\nx=1\n", "A", "y", "2", "[A]\nx=1\ny=2\n"},
        WriteCase{"MixedLineEndings", "[A]\rx\n\n[B]\n", "A", "k", "1", "[A]\rx\nk=1\n\n[B]\n"},
        WriteCase{"EndsAnUnterminatedLastLine", "[A]\nx=1", "B", "y", "2", "[A]\nx=1\n[B]\ny=2\n"},
        WriteCase{"UnterminatedHeader", "[A]", "A", "x", "1", "[A]\r\nx=1\r\n"},
        WriteCase{"LineBreakEndsTheValue", "", "A", "x", "a\r\nb=c", "[A]\r\nx=a\r\n"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ProfileFileOnDisk, ReadingAMissingFileGivesTheDefaultAndCreatesNothing) {
    test::TempFolder dir;
    const std::string file = dir.file("none.ini");
    EXPECT_EQ(ReadProfileValue("A", "k", "dflt", file), "dflt");
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(ProfileFileOnDisk, TheFirstWriteCreatesTheFileAndLaterOnesEditIt) {
    test::TempFolder dir;
    const std::string file = dir.file("new.ini");
    ASSERT_TRUE(WriteProfileValue("Colors", "Dial_Color", "255", file));
    ASSERT_TRUE(WriteProfileValue("Format", "DialType", "2", file));
    ASSERT_TRUE(WriteProfileValue("colors", "dial_color", "0", file));
    EXPECT_EQ(test::readAll(file), "[Colors]\r\nDial_Color=0\r\n[Format]\r\nDialType=2\r\n");
    EXPECT_EQ(ReadProfileValue("COLORS", "Dial_Color", "d", file), "0");
}

TEST(ProfileFileOnDisk, AFailedWriteLeavesEverythingAlone) {
    test::TempFolder dir;
    test::writeAll(dir.file("plain"), "x");
    // Inside a "folder" that is a file, and onto a folder: neither can be written.
    EXPECT_FALSE(WriteProfileValue("A", "k", "1", dir.file("plain") + "/s.ini"));
    std::filesystem::create_directory(dir.file("sub"));
    EXPECT_FALSE(WriteProfileValue("A", "k", "1", dir.file("sub")));
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("sub")));
    EXPECT_EQ(test::readAll(dir.file("plain")), "x");
}

TEST(ProfileFileOnDisk, OtherProgramsLinesSurviveASeriesOfWrites) {
    test::TempFolder dir;
    const std::string file = dir.file("shared.ini");
    const std::string foreign =
        "; kept by hand\n[Other]\nkey=value with ; semicolon\n\n[Colors]\nDial_Color=1\n";
    test::writeAll(file, foreign);
    WriteProfileValue("Colors", "Dial_Color", "2", file);
    WriteProfileValue("Colors", "Text_Color", "3", file);
    WriteProfileValue("Format", "DialType", "4", file);
    EXPECT_EQ(test::readAll(file),
              "; kept by hand\n[Other]\nkey=value with ; semicolon\n\n[Colors]\nDial_Color=2\n"
              "Text_Color=3\n[Format]\nDialType=4\n");
    const auto keys = ProfileFile::load(file).entries();
    ASSERT_EQ(keys.size(), 4u);
    EXPECT_EQ(keys[0], (std::pair<std::string, std::string>{"Other", "key"}));
    EXPECT_EQ(keys[3], (std::pair<std::string, std::string>{"Format", "DialType"}));
}

}  // namespace
}  // namespace lv
