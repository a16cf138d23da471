#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSysInfo>
#include <QTimer>
#include <QTreeWidget>
#include <fstream>
#include <stdexcept>

#include "about/qt_about_dialog.h"
#include "about/qt_help.h"
#include "about/qt_system_info.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using test::ScriptedPrompter;

const AboutInfo kMeter{"1.0.0", "2.10", "1.02", "LV3A"};

QString text(const QWidget& parent, const char* name) {
    const auto* label = parent.findChild<QLabel*>(name);
    return label ? label->text() : QString("<no %1>").arg(name);
}

QPushButton* button(const QWidget& parent, const char* name) {
    return parent.findChild<QPushButton*>(name);
}

SystemInfoSources fakeSources() {
    return {[] {
                return std::vector<InfoRow>{{"/dev/ttyUSB0", "FT232R USB UART"}};
            },
            [] { return std::vector<InfoRow>{}; },
            [] {
                return std::vector<InfoRow>{{"Speakers", "default"}};
            }};
}

TEST(AboutDialog, CaptionsValuesAndOk) {
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter);
    EXPECT_EQ(d.objectName(), "frmAbout");
    EXPECT_EQ(d.windowTitle(), "About lv_Analog");
    QStringList shown;
    for (const char* name : {"lblSoftCaption", "lblSoft", "lblFirmCaption", "lblFirm",
                             "lblBootCaption", "lblBoot", "lblhardCaption", "lblhard"})
        shown << text(d, name);
    EXPECT_EQ(shown.join('|'),
              "Software Version:|1.0.0|Firmware Version:|2.10|Boot Loader Version:|1.02|"
              "Hardware Serial Number:|LV3A");
    EXPECT_EQ(text(d, "lblDisclaimer").toStdString(), disclaimerText());
    EXPECT_EQ(button(d, "cmdSysInfo")->text(), "&System Info...");
    EXPECT_EQ(d.findChild<QLabel*>("lblNoMeter"), nullptr);
    d.show();
    button(d, "cmdOK")->click();
    EXPECT_FALSE(d.isVisible());
    EXPECT_EQ(d.result(), QDialog::Accepted);

    AboutDialog none(aboutInfoFrom("1.0", {}), prompter);
    EXPECT_EQ(text(none, "lblSoft"), "1.0.0");
    EXPECT_EQ(text(none, "lblFirm") + text(none, "lblBoot") + text(none, "lblhard"), "");
    EXPECT_EQ(text(none, "lblNoMeter"), "No meter has answered yet.");
}

TEST(AboutDialog, SystemInfoThatCannotBeShownSaysSo) {
    const std::pair<const char*, AboutDialog::SystemInfoShower> cases[] = {
        {"shown", [](QWidget*) { return true; }},
        {"refused", [](QWidget*) { return false; }},
        {"failed", [](QWidget*) -> bool { throw std::runtime_error("no"); }},
    };
    for (const auto& [what, shower] : cases) {
        ScriptedPrompter prompter;
        prompter.answers = {Answer::Ok};
        AboutDialog d(kMeter, prompter);
        d.setSystemInfoShower(shower);
        button(d, "cmdSysInfo")->click();
        const std::vector<ScriptedPrompter::Question> unavailable{
            {"System Information", "System Information Is Unavailable At This Time", Buttons::Ok,
             Icon::None}};
        EXPECT_EQ(prompter.asked,
                  what == std::string("shown") ? decltype(unavailable){} : unavailable)
            << what;
    }
}

TEST(AboutDialog, SystemInfoButtonOpensTheSystemInformation) {
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter, fakeSources());
    QStringList seen;
    QWidget* parent = nullptr;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        QWidget* box = QApplication::activeModalWidget();
        if (!box) return;
        if (auto* info = qobject_cast<SystemInfoDialog*>(box)) {
            parent = info->parentWidget();
            seen = info->plainText().split('\n');
        }
        box->close();
    });
    closer.start(10);
    EXPECT_TRUE(d.StartSysInfo());
    EXPECT_EQ(parent, &d);
    EXPECT_TRUE(seen.contains("    lv_Analog: 1.0.0")) << seen.join("|").toStdString();
    EXPECT_TRUE(seen.contains("    /dev/ttyUSB0: FT232R USB UART"));
    EXPECT_TRUE(prompter.asked.empty());
}

TEST(SystemInfoDialog, SectionsRowsAndEmptyLists) {
    SystemInfoDialog d(gatherSystemInfo("1.0.0", fakeSources()));
    QTreeWidget* tree = d.tree();
    ASSERT_EQ(tree->topLevelItemCount(), 5);
    const std::tuple<const char*, QString, QString> expected[] = {
        {"Program", "lv_Analog", "1.0.0"},
        {"Operating system", "System", QSysInfo::prettyProductName()},
        {"Serial ports", "/dev/ttyUSB0", "FT232R USB UART"},
        {"Sound inputs", "None found (is a sound server running?)", ""},
        {"Sound outputs", "Speakers", "default"},
    };
    for (int i = 0; i < 5; ++i) {
        const QTreeWidgetItem* top = tree->topLevelItem(i);
        const auto& [section, name, value] = expected[i];
        EXPECT_EQ(top->text(0), section);
        ASSERT_GE(top->childCount(), 1) << section;
        EXPECT_EQ(top->child(0)->text(0), name);
        EXPECT_EQ(top->child(0)->text(1), value);
    }
}

// Help → User Guide, against a temporary program folder.
TEST(UserGuide, MissingFoundAndUnopenableGuide) {
    test::TempDir root{"lv_user_guide"};
    const fs::path exeDir = root.path() / "bin";
    fs::create_directories(exeDir);
    ScriptedPrompter prompter;
    prompter.answers = {Answer::Ok, Answer::Ok};
    std::vector<QUrl> opened;
    const auto opener = [&](bool works) {
        return [&opened, works](const QUrl& url) { return opened.push_back(url), works; };
    };
    const auto question = [](const std::string& text) {
        return ScriptedPrompter::Question{"User Guide", text, Buttons::Ok, Icon::Exclamation};
    };
    EXPECT_FALSE(openUserGuide(exeDir, prompter, opener(true)));
    EXPECT_TRUE(opened.empty());
    EXPECT_EQ(
        prompter.asked,
        std::vector{question(userGuideMissingText(
            {exeDir / kUserGuideFileName, root.path() / "share/lv_Analog" / kUserGuideFileName}))});

    for (const fs::path& dir : {root.path() / "share/lv_Analog", exeDir}) {
        fs::create_directories(dir);  // beside the program wins once it is there
        std::ofstream(dir / kUserGuideFileName) << "%PDF-1.4";
        opened.clear();
        EXPECT_TRUE(openUserGuide(exeDir, prompter, opener(true)));
        EXPECT_EQ(opened, std::vector{QUrl::fromLocalFile(
                              QString::fromStdString((dir / kUserGuideFileName).string()))});
    }
    EXPECT_EQ(prompter.asked.size(), 1u);
    EXPECT_FALSE(openUserGuide(exeDir, prompter, opener(false)));
    EXPECT_EQ(prompter.asked.back(),
              question(userGuideOpenFailedText(exeDir / kUserGuideFileName)));
}

}  // namespace
}  // namespace lv
