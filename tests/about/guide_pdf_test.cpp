#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "about/about_text.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

// The guide as the build leaves it beside the executables, where the program
// looks for it first: whole, many pages, rebuilt when its text changes.
TEST(GuidePdf, BuiltWholeBesideTheProgram) {
    const fs::path pdf = fs::path(LV_BIN_DIR) / kUserGuideFileName;
    std::ifstream in(pdf, std::ios::binary);
    const std::string data((std::istreambuf_iterator<char>(in)), {});
    ASSERT_GT(data.size(), 1000u) << pdf;
    EXPECT_EQ(data.substr(0, 5), "%PDF-");
    EXPECT_NE(data.find("%%EOF", data.size() - 16), std::string::npos) << "truncated";
    const std::regex page(R"(/Type\s*/Page[^s])");
    EXPECT_GE(std::distance(std::sregex_iterator(data.begin(), data.end(), page), {}), 12)
        << "a title page, contents and the guide";
    EXPECT_GE(fs::last_write_time(pdf), fs::last_write_time(LV_GUIDE_SOURCE));
}

}  // namespace
}  // namespace lv
