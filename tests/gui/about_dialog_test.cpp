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

TEST(AboutDialog, CaptionsAndValues) {
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter);
    EXPECT_EQ(d.objectName(), "frmAbout");
    EXPECT_EQ(d.windowTitle(), "About lv_Analog");
    const struct {
        const char* captionName;
        const char* caption;
        const char* valueName;
        const char* value;
    } rows[] = {
        {"lblSoftCaption", "Software Version:", "lblSoft", "1.0.0"},
        {"lblFirmCaption", "Firmware Version:", "lblFirm", "2.10"},
        {"lblBootCaption", "Boot Loader Version:", "lblBoot", "1.02"},
        {"lblhardCaption", "Hardware Serial Number:", "lblhard", "LV3A"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(text(d, r.captionName), r.caption);
        EXPECT_EQ(text(d, r.valueName), r.value);
    }
    EXPECT_EQ(text(d, "lblDisclaimer").toStdString(), disclaimerText());
    EXPECT_TRUE(text(d, "lblDisclaimer")
                    .endsWith("  This software is licensed to the user, to assist in operating the "
                              "associated hardware. It is accepted as-is and no warranties, or "
                              "suggestions of suitability for any purpose are implied."));
    ASSERT_TRUE(button(d, "cmdOK") && button(d, "cmdSysInfo"));
    EXPECT_EQ(button(d, "cmdOK")->text(), "OK");
    EXPECT_EQ(button(d, "cmdSysInfo")->text(), "&System Info...");
    EXPECT_EQ(d.findChild<QLabel*>("lblNoMeter"), nullptr);
}

TEST(AboutDialog, WithoutAMeterTheMeterTextsAreEmpty) {
    ScriptedPrompter prompter;
    AboutDialog d(aboutInfoFrom("1.0", {}), prompter);
    EXPECT_EQ(text(d, "lblSoft"), "1.0.0");
    for (const char* name : {"lblFirm", "lblBoot", "lblhard"}) EXPECT_EQ(text(d, name), "");
    EXPECT_EQ(text(d, "lblNoMeter"), "No meter has answered yet.");
}

TEST(AboutDialog, OkCloses) {
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter);
    d.show();
    button(d, "cmdOK")->click();
    EXPECT_FALSE(d.isVisible());
    EXPECT_EQ(d.result(), QDialog::Accepted);
}

TEST(AboutDialog, SystemInfoThatCannotBeShownSaysSo) {
    const struct {
        const char* what;
        AboutDialog::SystemInfoShower shower;
        bool shown;
    } cases[] = {
        {"shown", [](QWidget*) { return true; }, true},
        {"refused", [](QWidget*) { return false; }, false},
        {"failed", [](QWidget*) -> bool { throw std::runtime_error("no"); }, false},
    };
    for (const auto& c : cases) {
        ScriptedPrompter prompter;
        prompter.answers = {Answer::Ok};
        AboutDialog d(kMeter, prompter);
        d.setSystemInfoShower(c.shower);
        button(d, "cmdSysInfo")->click();
        if (c.shown) {
            EXPECT_TRUE(prompter.asked.empty()) << c.what;
        } else {
            EXPECT_EQ(prompter.asked,
                      (std::vector<ScriptedPrompter::Question>{
                          {"System Information", "System Information Is Unavailable At This Time",
                           Buttons::Ok, Icon::None}}))
                << c.what;
        }
    }
}

// The button opens our own dialog over the about box, listing what the
// sources gave it.
TEST(AboutDialog, SystemInfoButtonOpensTheSystemInformation) {
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter, fakeSources());
    QStringList seen;
    QWidget* parent = nullptr;
    // Whatever box comes up is closed, so a wrong one fails rather than hangs.
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
    const struct {
        const char* section;
        QStringList firstRow;
    } expected[] = {
        {"Program", {"lv_Analog", "1.0.0"}},
        {"Operating system", {"System", QSysInfo::prettyProductName()}},
        {"Serial ports", {"/dev/ttyUSB0", "FT232R USB UART"}},
        {"Sound inputs", {"None found (is a sound server running?)", ""}},
        {"Sound outputs", {"Speakers", "default"}},
    };
    for (int i = 0; i < 5; ++i) {
        const QTreeWidgetItem* top = tree->topLevelItem(i);
        EXPECT_EQ(top->text(0), expected[i].section);
        ASSERT_GE(top->childCount(), 1) << expected[i].section;
        EXPECT_EQ(QStringList({top->child(0)->text(0), top->child(0)->text(1)}),
                  expected[i].firstRow);
    }
    EXPECT_EQ(d.plainText().toStdString(),
              systemInfoText(gatherSystemInfo("1.0.0", fakeSources())));
}

// Help → User Guide, against a temporary program folder.
class UserGuideTest : public ::testing::Test {
protected:
    UserGuideTest() { fs::create_directories(exeDir); }
    fs::path putGuide(const fs::path& dir) {
        fs::create_directories(dir);
        const fs::path guide = (dir / kUserGuideFileName).lexically_normal();
        std::ofstream(guide) << "%PDF-1.4";
        return guide;
    }
    UrlOpener opener(bool works) {
        return [this, works](const QUrl& url) {
            opened.push_back(url);
            return works;
        };
    }
    test::TempDir root{"lv_user_guide"};
    fs::path exeDir = root.path() / "bin";
    ScriptedPrompter prompter;
    std::vector<QUrl> opened;
};

TEST_F(UserGuideTest, MissingGuideNamesWhereItWasLookedFor) {
    prompter.answers = {Answer::Ok};
    EXPECT_FALSE(openUserGuide(exeDir, prompter, opener(true)));
    EXPECT_TRUE(opened.empty());
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, "User Guide");
    EXPECT_EQ(prompter.asked[0].icon, Icon::Exclamation);
    const std::string& message = prompter.asked[0].text;
    EXPECT_NE(message.find((exeDir / kUserGuideFileName).string()), std::string::npos) << message;
    EXPECT_NE(message.find((root.path() / "share/lv_Analog" / kUserGuideFileName).string()),
              std::string::npos)
        << message;
}

TEST_F(UserGuideTest, FoundGuideIsOpened) {
    for (const fs::path& dir : {exeDir / ".." / "share" / "lv_Analog", exeDir}) {
        const fs::path guide = putGuide(dir);  // beside the program wins once it is there
        opened.clear();
        EXPECT_TRUE(openUserGuide(exeDir, prompter, opener(true)));
        ASSERT_EQ(opened.size(), 1u);
        EXPECT_EQ(opened[0], QUrl::fromLocalFile(QString::fromStdString(guide.string())));
    }
    EXPECT_TRUE(prompter.asked.empty());
}

TEST_F(UserGuideTest, GuideTheDesktopCannotOpenIsReported) {
    const fs::path guide = putGuide(exeDir);
    prompter.answers = {Answer::Ok};
    EXPECT_FALSE(openUserGuide(exeDir, prompter, opener(false)));
    EXPECT_EQ(prompter.asked,
              (std::vector<ScriptedPrompter::Question>{
                  {"User Guide", userGuideOpenFailedText(guide), Buttons::Ok, Icon::Exclamation}}));
}

}  // namespace
}  // namespace lv
