#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <filesystem>
#include <fstream>
#include <set>

#include "recording/qt_rec_dialog.h"
#include "support/indexed_control.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using Question = test::ScriptedPrompter::Question;
using test::indexed;

// The names in a folder; none when it is not there.
std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec))
        names.insert(it->path().filename().string());
    return names;
}

class RecDialogTest : public ::testing::Test {
protected:
    RecDialogTest() {
        std::tie(cfg.SavePath, cfg.SavePrefix, cfg.RecordingMode, cfg.SuffixType, cfg.SuffixNum) =
            std::tuple(folder(), "Prefix_", 2, 1, 7);
    }
    std::string folder() const { return dir.path().string() + "/"; }
    std::unique_ptr<RecDialog> open() {
        return std::make_unique<RecDialog>(cfg, prompter, [this](const std::string& start) {
            browseStarts.push_back(start);
            return browseTo;
        });
    }
    static void click(const RecDialog& d, const char* name) {
        d.findChild<QAbstractButton*>(name)->click();
    }
    static void typePrefix(const RecDialog& d, const QString& text) {
        d.findChild<QLineEdit*>("txtPrefix")->setText(text);
    }
    static auto owned(const Settings& s) {
        return std::tuple(s.RecordingMode, s.SavePath, s.SavePrefix, s.SuffixType, s.SuffixNum,
                          s.AudioEnable, s.TimeDateEnable, s.RecPromptEnable);
    }
    std::set<std::string> files() const { return namesIn(dir.path()); }

    test::TempDir dir{"rec_dialog"};
    Settings cfg;
    test::ScriptedPrompter prompter;
    std::optional<std::string> browseTo;
    std::vector<std::string> browseStarts;
};

// A bad prefix or a folder gone since keeps the dialog open and the settings;
// put right, the dialog takes it and leaves no probe file behind.
TEST_F(RecDialogTest, BadPrefixKeepsTheDialogOpenAndTheSettings) {
    const std::tuple<std::string, QString, bool> cases[] = {
        {"", "sub/x", false}, {"gone/", "Good_", false}, {"", "Good_", true}};
    for (const auto& [subfolder, prefix, taken] : cases) {
        cfg.SavePath = folder() + subfolder;
        Settings want = cfg;
        want.SavePrefix = taken ? prefix.toStdString() : cfg.SavePrefix;
        const auto d = open();
        d->show();
        typePrefix(*d, prefix);
        prompter.asked.clear();
        prompter.answers = {Answer::Ok};
        click(*d, "cmdOK");
        EXPECT_EQ(prompter.asked,
                  std::vector<Question>(taken ? 0 : 1,
                                        {"Validate Filename", "Error: Invalid Prefix name ",
                                         Buttons::Ok, Icon::Critical}))
            << prefix.left(10).toStdString();
        EXPECT_EQ(d->isVisible(), !taken);
        EXPECT_EQ(owned(cfg), owned(want));
    }
    EXPECT_TRUE(files().empty());
}

TEST_F(RecDialogTest, CancelChangesNothingAndOkWritesEveryChoice) {
    fs::create_directory(dir.path() / "other");
    for (const char* button : {"cmdCancel", "cmdOK"}) {
        const Settings before = cfg;
        const auto d = open();
        EXPECT_TRUE(indexed(*d, "optMode", 2)->isChecked() &&
                    indexed(*d, "optSuffix", 1)->isChecked() &&
                    d->findChild<QLineEdit*>("txtPrefix")->text() == "Prefix_");
        browseTo = dir.file("other");
        click(*d, "cmdBrowse");
        indexed(*d, "optMode", 3)->click();
        indexed(*d, "optSuffix", 0)->click();
        typePrefix(*d, "Run_");
        for (const char* box : {"chkAudio", "chkTimeDate", "chkRecPrompt"}) click(*d, box);

        Settings want = before;
        std::tie(want.SavePath, want.RecordingMode, want.SuffixType, want.SavePrefix) =
            std::tuple(dir.file("other") + "/", 3, 0, "Run_");
        for (bool Settings::*b :
             {&Settings::AudioEnable, &Settings::TimeDateEnable, &Settings::RecPromptEnable})
            want.*b = !(before.*b);
        click(*d, button);
        EXPECT_EQ(owned(cfg), owned(button == std::string("cmdOK") ? want : before)) << button;
        EXPECT_TRUE(prompter.asked.empty());
    }
}

TEST_F(RecDialogTest, ResetTrashesTheSavedPrefixsSeriesAndRefusesWithoutAPrefix) {
    // Home and its data on the same file system as the recordings, so the
    // files go to the home trash there.
    test::TempDir home{"rec_dialog_home"};
    const QByteArray oldHome = qgetenv("HOME"), oldData = qgetenv("XDG_DATA_HOME");
    qputenv("HOME", QByteArray::fromStdString(home.path().string()));
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(home.file("data")));
    // Which names a prefix's series takes is the numbering's own rule.
    const std::set<std::string> all{"S001.lvd", "S999.wav", "T001.lvd"},
        series{"S001.lvd", "S999.wav"};
    // The saved prefix, the answer to the warning; "T" is typed but never confirmed.
    const std::tuple<std::string, Answer, std::set<std::string>, std::int16_t> cases[] = {
        {"S", Answer::No, all, 7}, {"S", Answer::Yes, {"T001.lvd"}, 1}, {"", Answer::Yes, all, 7}};
    for (const auto& [saved, answer, left, suffixNum] : cases) {
        cfg.SuffixNum = 7;
        for (const std::string& name : all) std::ofstream(dir.file(name)) << 'x';
        fs::create_directories(home.file("data"));
        cfg.SavePrefix = saved;
        const auto d = open();
        typePrefix(*d, "T");
        prompter.asked.clear();
        prompter.answers = {answer};
        click(*d, "cmdReset");
        ASSERT_EQ(prompter.asked.size(), 1u);
        EXPECT_EQ(prompter.asked[0].title, saved.empty() ? "Reset" : "Warning")
            << "refused before any warning";
        EXPECT_EQ(files(), left) << saved;
        const bool went = left != all;
        EXPECT_EQ(namesIn(home.path() / "data/Trash/files"),
                  went ? series : std::set<std::string>{});
        EXPECT_EQ(d->trashedCount(), went ? 2 : 0);
        EXPECT_EQ(d->edited().SuffixNum, suffixNum);
        click(*d, "cmdCancel");
        EXPECT_EQ(cfg.SuffixNum, suffixNum) << "Cancel cannot bring the series back";
        fs::remove_all(home.file("data"));
    }
    qputenv("HOME", oldHome);
    qputenv("XDG_DATA_HOME", oldData);
}

}  // namespace
}  // namespace lv
