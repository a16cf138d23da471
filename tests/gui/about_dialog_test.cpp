#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QSysInfo>
#include <QTreeWidget>
#include <fstream>
#include <stdexcept>

#include "about/qt_about_dialog.h"
#include "about/qt_help.h"
#include "about/qt_system_info.h"
#include "support/modal_answerer.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using test::ScriptedPrompter;

const AboutInfo kMeter{"1.0.0", "2.10", "1.02", "LV3A"};

QString labels(const QWidget& parent, const QStringList& names) {
    QStringList out;
    for (const QString& name : names) {
        const auto* label = parent.findChild<QLabel*>(name);
        out << (label ? label->text() : "<no " + name + ">");
    }
    return out.join('|');
}

TEST(AboutDialog, ShowsTheMeterThatAnsweredOrSaysNoneDid) {
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter);
    EXPECT_EQ(d.windowTitle(), "About lv_Analog");
    EXPECT_EQ(labels(d, {"lblSoftCaption", "lblSoft", "lblFirmCaption", "lblFirm", "lblBootCaption",
                         "lblBoot", "lblhardCaption", "lblhard", "lblNoMeter"}),
              "Software Version:|1.0.0|Firmware Version:|2.10|Boot Loader Version:|1.02|"
              "Hardware Serial Number:|LV3A|<no lblNoMeter>");
    EXPECT_EQ(labels(d, {"lblDisclaimer"}).toStdString(), disclaimerText());
    d.show();
    d.findChild<QPushButton*>("cmdOK")->click();
    EXPECT_FALSE(d.isVisible());
    EXPECT_EQ(d.result(), QDialog::Accepted);

    AboutDialog none(aboutInfoFrom("1.0", {}), prompter);
    EXPECT_EQ(labels(none, {"lblSoft", "lblFirm", "lblBoot", "lblhard", "lblNoMeter"}),
              "1.0.0||||No meter has answered yet.");
}

// System Info opens our own dialog over the about box, one section per kind
// with its first row; a dialog that cannot be shown is reported instead.
TEST(AboutDialog, SystemInfoShowsItsSectionsOrSaysItIsUnavailable) {
    const SystemInfoSources sources{
        [] {
            return std::vector<InfoRow>{{"/dev/ttyUSB0", "FT232R USB UART"}};
        },
        [] { return std::vector<InfoRow>{}; },
        [] {
            return std::vector<InfoRow>{{"Speakers", "default"}};
        }};
    ScriptedPrompter prompter;
    AboutDialog d(kMeter, prompter, sources);
    QStringList rows;
    QWidget* parent = nullptr;
    {
        const test::ModalAnswerer closer([&](QWidget* box) {
            if (auto* info = qobject_cast<SystemInfoDialog*>(box)) {
                parent = info->parentWidget();
                for (int i = 0; i < info->tree()->topLevelItemCount(); ++i) {
                    const QTreeWidgetItem* top = info->tree()->topLevelItem(i);
                    rows << top->text(0) + "|" + top->child(0)->text(0) + "|" +
                                top->child(0)->text(1);
                }
            }
            box->close();
        });
        d.findChild<QPushButton*>("cmdSysInfo")->click();
    }
    EXPECT_EQ(parent, &d);
    EXPECT_EQ(rows, QStringList({"Program|lv_Analog|1.0.0",
                                 "Operating system|System|" + QSysInfo::prettyProductName(),
                                 "Serial ports|/dev/ttyUSB0|FT232R USB UART",
                                 "Sound inputs|None found (is a sound server running?)|",
                                 "Sound outputs|Speakers|default"}));
    EXPECT_TRUE(prompter.asked.empty());

    const AboutDialog::SystemInfoShower refusals[] = {
        [](QWidget*) { return false; }, [](QWidget*) -> bool { throw std::runtime_error("no"); }};
    for (const auto& shower : refusals) {
        prompter.answers = {Answer::Ok};
        d.setSystemInfoShower(shower);
        d.findChild<QPushButton*>("cmdSysInfo")->click();
    }
    const ScriptedPrompter::Question unavailable{"System Information",
                                                 "System Information Is Unavailable At This Time",
                                                 Buttons::Ok, Icon::None};
    EXPECT_EQ(prompter.asked, std::vector(2, unavailable));
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
