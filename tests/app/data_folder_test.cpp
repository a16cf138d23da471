#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/data_folder.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

// In the tables "@" stands for the test's temporary folder.
class Tree {
public:
    std::string at(std::string p) const {
        for (auto i = p.find('@'); i != std::string::npos; i = p.find('@', i + 1))
            p.replace(i, 1, m_temp.path().string());
        return p;
    }
    void file(const std::string& p) const {
        fs::create_directories(fs::path(at(p)).parent_path());
        std::ofstream(at(p)) << "x";
    }
    void folder(const std::string& p) const { fs::create_directories(at(p)); }

private:
    test::TempDir m_temp{"lv_data_folder"};
};

// Relative --data-dir values are taken from where the program was started.
class InFolder {
public:
    explicit InFolder(const fs::path& dir) : m_old(fs::current_path()) { fs::current_path(dir); }
    ~InFolder() { fs::current_path(m_old); }

private:
    fs::path m_old;
};

struct FolderCase {
    const char* name;
    std::vector<std::string> files;  // present before the choice
    std::string dataDir, xdg, home;
    std::string folder;  // expected; empty when an error is expected
    std::string error;   // a part the error text must hold
};

TEST(DataFolder, ChoosesCreatesOrExplains) {
    const FolderCase cases[] = {
        {"option wins over a portable copy",
         {"@/exe/lv_Analog.ini"},
         "@/given/deep",
         "@/xdg",
         "@/home",
         "@/given/deep/",
         ""},
        {"relative option", {}, "rel/dir", "@/xdg", "@/home", "@/rel/dir/", ""},
        {"option tidied", {}, "@/a/../b/./", "", "@/home", "@/b/", ""},
        {"portable by settings file", {"@/exe/lv_Analog.ini"}, "", "@/xdg", "@/home", "@/exe/", ""},
        {"portable by session file", {"@/exe/lv_Analog.cfg"}, "", "@/xdg", "@/home", "@/exe/", ""},
        {"other files are not portable",
         {"@/exe/dummy.mp3"},
         "",
         "@/xdg",
         "@/home",
         "@/xdg/lv_Analog/",
         ""},
        {"relative XDG ignored", {}, "", "xdg", "@/home", "@/home/.config/lv_Analog/", ""},
        {"no XDG", {}, "", "", "@/home", "@/home/.config/lv_Analog/", ""},
        {"option is a file", {"@/taken"}, "@/taken", "", "@/home", "", "\"@/taken\" exists but"},
        {"option under a file",
         {"@/taken"},
         "@/taken/sub",
         "",
         "@/home",
         "",
         "cannot create the data folder \"@/taken/sub\""},
        {"config folder is a file",
         {"@/home/.config/lv_Analog"},
         "",
         "",
         "@/home",
         "",
         "\"@/home/.config/lv_Analog\""},
        {"nowhere to go", {}, "", "", "", "", "HOME"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Tree t;
        t.folder("@/exe");
        for (const auto& f : c.files) t.file(f);
        InFolder here(t.at("@"));
        const DataFolderResult r =
            chooseDataFolder({t.at(c.dataDir), t.at("@/exe"), t.at(c.xdg), t.at(c.home)});
        EXPECT_EQ(r.folder, t.at(c.folder));
        if (c.error.empty()) {
            EXPECT_EQ(r.error, "");
            EXPECT_TRUE(fs::is_directory(r.folder));
        } else {
            EXPECT_NE(r.error.find(t.at(c.error)), std::string::npos) << r.error;
        }
        // Only the chosen folder is made: a portable copy leaves no trace elsewhere.
        if (c.folder != "@/xdg/lv_Analog/") {
            EXPECT_FALSE(fs::exists(t.at("@/xdg/lv_Analog")));
        }
    }
}

TEST(DataFolder, ResourcesBesideTheProgramThenInShare) {
    const struct {
        const char* name;
        std::vector<std::string> files, folders;
        std::string found;  // empty: none
    } cases[] = {
        {"beside", {"@/bin/dummy.mp3"}, {}, "@/bin/dummy.mp3"},
        {"share", {"@/share/lv_Analog/dummy.mp3"}, {}, "@/share/lv_Analog/dummy.mp3"},
        {"beside first", {"@/bin/dummy.mp3", "@/share/lv_Analog/dummy.mp3"}, {}, "@/bin/dummy.mp3"},
        {"a folder is not the file",
         {"@/share/lv_Analog/dummy.mp3"},
         {"@/bin/dummy.mp3"},
         "@/share/lv_Analog/dummy.mp3"},
        {"other name only", {"@/bin/other.mp3", "@/share/other.mp3"}, {}, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Tree t;
        t.folder("@/bin");
        for (const auto& f : c.files) t.file(f);
        for (const auto& f : c.folders) t.folder(f);
        const auto found = findResource("dummy.mp3", t.at("@/bin"));
        if (c.found.empty()) {
            EXPECT_FALSE(found.has_value());
        } else {
            ASSERT_TRUE(found.has_value());
            EXPECT_EQ(found->string(), t.at(c.found));
        }
    }
    EXPECT_FALSE(findResource("dummy.mp3", "").has_value());
}

}  // namespace
}  // namespace lv
