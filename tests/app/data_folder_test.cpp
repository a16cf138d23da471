#include "app/data_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

// In the tables "@" stands for the test's temporary folder; a file is made
// with its folders, a name ending in "/" is made as a folder.
struct Tree {
    std::string at(std::string p) const {
        for (auto i = p.find('@'); i != std::string::npos; i = p.find('@', i + 1))
            p.replace(i, 1, temp.path().string());
        return p;
    }
    void make(const std::string& p) const {
        fs::create_directories(fs::path(at(p)).parent_path());
        if (!p.ends_with("/")) std::ofstream(at(p)) << "x";
    }
    test::TempDir temp{"lv_data_folder"};
};

TEST(DataFolder, ChoosesCreatesOrExplains) {
    const struct {
        std::string file, dataDir, xdg, home;
        std::string expected;  // the folder, or after "!" a part of the error
        std::string recordings;
    } cases[] = {
        {"@/exe/lv_Analog.ini", "@/given/deep", "@/xdg", "@/home", "@/given/deep/",
         "@/given/deep/recordings/"},
        {"", "@/a/../b/./", "", "@/home", "@/b/", "@/b/recordings/"},
        {"@/exe/lv_Analog.ini", "", "@/xdg", "@/home", "@/exe/",  // portable copies
         "@/exe/recordings/"},
        {"@/exe/dummy.mp3", "", "@/xdg", "@/home", "@/xdg/lv_Analog/", "@/docs/lv_Analog/"},
        {"", "", "xdg", "@/home", "@/home/.config/lv_Analog/",  // a relative XDG is ignored
         "@/docs/lv_Analog/"},
        {"@/taken", "@/taken", "", "@/home", "!\"@/taken\" exists but", ""},
        {"@/taken", "@/taken/sub", "", "@/home", "!cannot create the data folder \"@/taken/sub\"",
         ""},
        {"", "", "", "", "!HOME", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        Tree t;
        t.make("@/exe/");
        if (!c.file.empty()) t.make(c.file);
        const fs::path start = fs::current_path();
        fs::current_path(t.at("@"));
        const DataFolderResult r = chooseDataFolder(
            {t.at(c.dataDir), t.at("@/exe"), t.at(c.xdg), t.at(c.home), t.at("@/docs")});
        fs::current_path(start);
        if (c.expected.starts_with("!")) {
            EXPECT_EQ(r.folder, "");
            EXPECT_NE(r.error.find(t.at(c.expected.substr(1))), std::string::npos) << r.error;
        } else {
            EXPECT_EQ(r.folder, t.at(c.expected));
            EXPECT_EQ(r.error, "");
            EXPECT_TRUE(fs::is_directory(r.folder));
            // Made by the first recording, not by starting the program.
            EXPECT_EQ(r.recordings, t.at(c.recordings));
            EXPECT_FALSE(fs::exists(r.recordings));
        }
        // Only the chosen folder is made: a portable copy leaves no trace elsewhere.
        EXPECT_EQ(fs::exists(t.at("@/xdg/lv_Analog")), c.expected == "@/xdg/lv_Analog/");
    }
}

TEST(DataFolder, ResourcesBesideTheProgramThenInShare) {
    const struct {
        std::vector<std::string> made;
        std::string found;  // empty: none
    } cases[] = {
        {{"@/bin/dummy.mp3", "@/share/lv_Analog/dummy.mp3"}, "@/bin/dummy.mp3"},
        {{"@/share/lv_Analog/dummy.mp3", "@/bin/dummy.mp3/"}, "@/share/lv_Analog/dummy.mp3"},
    };
    for (const auto& c : cases) {
        Tree t;
        for (const auto& f : c.made) t.make(f);
        const auto found = findResource("dummy.mp3", t.at("@/bin"));
        EXPECT_EQ(found.value_or("").string(), t.at(c.found));
    }
}

}  // namespace
}  // namespace lv
