#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>

#include "calibration/qt_scale_dialog.h"
#include "support/fake_pump.h"
#include "support/scripted_port.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

struct ScaleDialogTest : ::testing::Test {
    ScaleDialogTest() { port.open(); }
    std::unique_ptr<ScaleDialog> open(int scaleType) {
        return std::make_unique<ScaleDialog>(port, pump, prompter, stored, scaleType, nullptr,
                                             nullptr);
    }
    template <typename T = QPushButton>
    static T* control(const ScaleDialog& d, const char* name) {
        return d.findChild<T*>(name);
    }
    // A click by code on "+" or "-" steps once; the stepping runs from the event loop.
    static void click(const ScaleDialog& d, const char* name) {
        control(d, name)->click();
        QCoreApplication::processEvents();
    }
    test::ScriptedPort port;
    test::FakePump pump;
    test::ScriptedPrompter prompter;
    std::array<std::int16_t, 12> stored{200};
};

TEST_F(ScaleDialogTest, NamedControlsDriveTheMeter) {
    const auto d = open(1);
    EXPECT_EQ(d->objectName(), "frmScale");
    EXPECT_EQ(d->windowTitle(), "lv Dial Calibration");
    const std::pair<const char*, const char*> buttons[] = {
        {"cmdCycle", "Cycle"},    {"cmdUp", "+"},        {"cmdDn", "-"},
        {"cmdReset", "Defaults"}, {"cmdSave", "Upload"}, {"cmdExit", "EXIT"},
        {"Command2", "Terminate"}};
    for (const auto& [name, caption] : buttons) {
        ASSERT_NE(control(*d, name), nullptr) << name;
        EXPECT_EQ(control(*d, name)->text(), caption);
    }
    auto* list = control<QListWidget>(*d, "lstDial");
    ASSERT_EQ(list->count(), 9);
    EXPECT_EQ(list->item(0)->text(), "200");
    EXPECT_EQ(list->item(8)->text(), "3898");
    EXPECT_EQ(control<QProgressBar>(*d, "pbUpgrade")->maximum(), 512);
    EXPECT_FALSE(control(*d, "cmdSave")->isEnabled());

    list->setCurrentRow(4);
    click(*d, "cmdUp");
    EXPECT_EQ(list->item(4)->text(), "2050");
    EXPECT_TRUE(control(*d, "cmdSave")->isEnabled());
    control(*d, "Command2")->click();
    EXPECT_EQ(port.written,
              (std::vector<std::string>{"S\r", "0C8N\r", "800N\r", "802N\r", ":00000001FF\r"}));
}

TEST_F(ScaleDialogTest, ClosingWithValuesNotUploadedAsks) {
    const struct {
        bool changed;
        const char* how;
        Answer answer;
    } cases[] = {{false, "EXIT", Answer::No},  {true, "EXIT", Answer::No},
                 {true, "EXIT", Answer::Yes},  {true, "close", Answer::No},
                 {true, "close", Answer::Yes}, {true, "Escape", Answer::No}};
    const test::ScriptedPrompter::Question question{"Warning", "Previous values not saved, Exit?",
                                                    Buttons::YesNo, Icon::None};
    for (const auto& c : cases) {
        prompter.asked.clear();
        prompter.answers = {c.answer};
        const auto d = open(0);
        d->show();
        if (c.changed) click(*d, "cmdDn");
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        if (c.how == std::string("EXIT")) control(*d, "cmdExit")->click();
        if (c.how == std::string("close")) d->close();
        if (c.how == std::string("Escape")) QCoreApplication::sendEvent(d.get(), &escape);
        EXPECT_EQ(d->isVisible(), c.changed && c.answer == Answer::No) << c.how;
        EXPECT_EQ(prompter.asked, std::vector(c.changed ? 1 : 0, question)) << c.how;
    }
}

}  // namespace
}  // namespace lv
