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

// The guide as the build leaves it beside the executables, where the program
// looks for it first.
TEST(GuidePdf, BuiltBesideTheProgramAsAManyPagePdf) {
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
    // Rebuilt whenever the guide's text changes.
    EXPECT_GE(fs::last_write_time(pdf), fs::last_write_time(LV_GUIDE_SOURCE));
}

// A page's text as pdftotext reads it, one trimmed line per entry; nothing
// when the tool is missing.
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

// A line that a page break cuts through would be written into both pages,
// clipped away on one but found there by search and copy.
TEST(GuidePdf, NoLineIsOnTwoPages) {
    if (std::system("command -v pdftotext >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
    const fs::path pdf = fs::path(LV_BIN_DIR) / kUserGuideFileName;
    std::vector<std::vector<std::string>> pages;
    for (int page = 1;; ++page) {
        std::vector<std::string> lines = pageLines(pdf, page);
        if (lines.empty()) break;
        pages.push_back(std::move(lines));
    }
    ASSERT_GE(pages.size(), 12u);
    int repeated = 0;
    for (std::size_t p = 1; p < pages.size(); ++p)
        for (const std::string& line : pages[p])
            // The footer is on every page; short cells ("Record") may well recur.
            if (line.size() >= 30 && line.rfind("Page ", 0) != 0 &&
                std::find(pages[p - 1].begin(), pages[p - 1].end(), line) != pages[p - 1].end()) {
                ADD_FAILURE() << "pages " << p << " and " << p + 1 << ": " << line;
                ++repeated;
            }
    EXPECT_EQ(repeated, 0);
}

}  // namespace
}  // namespace lv
