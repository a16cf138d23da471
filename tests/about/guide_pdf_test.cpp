#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "about/about_text.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

// A page's text as pdftotext reads it, one trimmed line per entry.
std::vector<std::string> pageLines(const fs::path& pdf, int page) {
    const std::string command = "pdftotext -q -f " + std::to_string(page) + " -l " +
                                std::to_string(page) + " '" + pdf.string() + "' - 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return {};
    std::string text;
    char buf[4096];
    while (const std::size_t n = std::fread(buf, 1, sizeof buf, pipe)) text.append(buf, n);
    ::pclose(pipe);
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        const auto from = line.find_first_not_of(" \f");
        if (from != std::string::npos) lines.push_back(line.substr(from));
    }
    return lines;
}

// The guide as the build leaves it beside the executables, where the program
// looks for it first: whole, many pages, rebuilt when its text changes. A line
// that a page break cuts through would be written into both pages, clipped
// away on one but found there by search and copy.
TEST(GuidePdf, BuiltBesideTheProgramWithNoLineOnTwoPages) {
    const fs::path pdf = fs::path(LV_BIN_DIR) / kUserGuideFileName;
    ASSERT_TRUE(fs::is_regular_file(pdf)) << pdf;
    std::ifstream in(pdf, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    const std::string data = bytes.str();
    ASSERT_GT(data.size(), 1000u);
    EXPECT_EQ(data.substr(0, 5), "%PDF-");
    EXPECT_NE(data.find("%%EOF", data.size() - 16), std::string::npos) << "truncated";
    const std::regex page(R"(/Type\s*/Page[^s])");
    const auto pages =
        std::distance(std::sregex_iterator(data.begin(), data.end(), page), std::sregex_iterator());
    EXPECT_GE(pages, 12) << "a title page, contents and the guide";
    EXPECT_GE(fs::last_write_time(pdf), fs::last_write_time(LV_GUIDE_SOURCE));

    if (std::system("command -v pdftotext >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
    std::vector<std::string> previous = pageLines(pdf, 1);
    for (int p = 2; p <= pages; ++p) {
        const std::vector<std::string> lines = pageLines(pdf, p);
        // The footer is on every page; short cells ("Record") may well recur.
        for (const std::string& line : lines)
            EXPECT_FALSE(line.size() >= 30 && line.rfind("Page ", 0) != 0 &&
                         std::find(previous.begin(), previous.end(), line) != previous.end())
                << "pages " << p - 1 << " and " << p << ": " << line;
        previous = lines;
    }
}

}  // namespace
}  // namespace lv
