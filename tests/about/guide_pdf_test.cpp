#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

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

}  // namespace
}  // namespace lv
