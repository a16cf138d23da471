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

QString labels(const QWidget& parent) {
    QStringList out;
    for (const char* name : {"lblSoft", "lblFirm", "lblBoot", "lblhard", "lblNoMeter"})
        if (const auto* label = parent.findChild<QLabel*>(name)) out << label->text();
    return out.join('|');
}

// The meter that answered or that none did; System Info opens our own dialog
// over the about box, one section per kind with its first row; a dialog that
// cannot be shown is reported instead.
TEST(AboutDialog, ShowsTheMeterAndItsSystemInfo) {
    ScriptedPrompter prompter;
    EXPECT_EQ(labels(AboutDialog(aboutInfoFrom("1.0", {}), prompter)),
              "1.0.0||||No meter has answered yet.");
    const auto give = [](std::vector<InfoRow> r) { return [r] { return r; }; };
    AboutDialog d(
        {"1.0.0", "2.10", "1.02", "LV3A"}, prompter,
        {give({{"/dev/ttyUSB0", "FT232R USB UART"}}), give({}), give({{"Speakers", "default"}})});
    EXPECT_EQ(labels(d), "1.0.0|2.10|1.02|LV3A");
    QStringList rows;
    {
        const test::ModalAnswerer closer([&](QWidget* box) {
            if (auto* info = qobject_cast<SystemInfoDialog*>(box); info && info->parent() == &d)
                for (int i = 0; i < info->tree()->topLevelItemCount(); ++i) {
                    const QTreeWidgetItem* top = info->tree()->topLevelItem(i);
                    rows << top->text(0) + "|" + top->child(0)->text(0) + "|" +
                                top->child(0)->text(1);
                }
            box->close();
        });
        d.findChild<QPushButton*>("cmdSysInfo")->click();
    }
    EXPECT_EQ(rows, QStringList({"Program|lv_Analog|1.0.0",
                                 "Operating system|System|" + QSysInfo::prettyProductName(),
                                 "Serial ports|/dev/ttyUSB0|FT232R USB UART",
                                 "Sound inputs|None found (is a sound server running?)|",
                                 "Sound outputs|Speakers|default"}));
    prompter.answers = {Answer::Ok};
    d.setSystemInfoShower([](QWidget*) -> bool { throw std::runtime_error("no"); });
    d.findChild<QPushButton*>("cmdSysInfo")->click();
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].text, "System Information Is Unavailable At This Time");
    d.show();
    d.findChild<QPushButton*>("cmdOK")->click();
    EXPECT_EQ(std::pair(d.isVisible(), d.result()), std::pair(false, int(QDialog::Accepted)));
}

// Help → User Guide, against a temporary program folder.
TEST(UserGuide, MissingFoundAndUnopenableGuide) {
    test::TempDir root{"lv_user_guide"};
    const fs::path exeDir = root.path() / "bin", shared = root.path() / "share/lv_Analog";
    ScriptedPrompter prompter;
    prompter.answers = {Answer::Ok, Answer::Ok};
    std::vector<QUrl> opened;
    const auto opener = [&](bool works) {
        return [&opened, works](const QUrl& url) { return opened.push_back(url), works; };
    };
    EXPECT_FALSE(openUserGuide(exeDir, prompter, opener(true)));
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].text,
              userGuideMissingText({exeDir / kUserGuideFileName, shared / kUserGuideFileName}));
    for (const fs::path& dir : {shared, exeDir}) {
        fs::create_directories(dir);  // beside the program wins once it is there
        std::ofstream(dir / kUserGuideFileName) << "%PDF-1.4";
        EXPECT_TRUE(openUserGuide(exeDir, prompter, opener(true)));
        EXPECT_EQ(opened.back().toLocalFile().toStdString(), (dir / kUserGuideFileName).string());
    }
    EXPECT_EQ(opened.size(), 2u);
    EXPECT_FALSE(openUserGuide(exeDir, prompter, opener(false)));
    EXPECT_EQ(prompter.asked.back().text, userGuideOpenFailedText(exeDir / kUserGuideFileName));
}

}  // namespace
}  // namespace lv
