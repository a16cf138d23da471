#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QMouseEvent>
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
    static void click(const ScaleDialog& d, const char* name) {  // steps run from the event loop
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
    auto* list = control<QListWidget>(*d, "lstDial");
    EXPECT_FALSE(control(*d, "cmdSave")->isEnabled());

    // A click on another line drives once; on the line already selected, again.
    d->show();
    const auto clickLine = [list](int row) {
        const QPointF at = list->visualItemRect(list->item(row)).center();
        for (const bool down : {true, false}) {
            QMouseEvent e(down ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, at,
                          list->viewport()->mapToGlobal(at), Qt::LeftButton,
                          down ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(list->viewport(), &e);
        }
    };
    clickLine(4);
    clickLine(4);
    click(*d, "cmdUp");
    EXPECT_EQ(list->item(4)->text(), "2050");
    EXPECT_TRUE(control(*d, "cmdSave")->isEnabled());
    control(*d, "Command2")->click();
    EXPECT_EQ(port.written, (std::vector<std::string>{"S\r", "0C8N\r", "800N\r", "800N\r", "802N\r",
                                                      ":00000001FF\r"}));
}

TEST_F(ScaleDialogTest, ClosingWithValuesNotUploadedAsks) {
    const std::tuple<bool, std::string, Answer> cases[] = {{false, "EXIT", Answer::No},
                                                           {true, "EXIT", Answer::No},
                                                           {true, "close", Answer::Yes},
                                                           {true, "Escape", Answer::No}};
    const test::ScriptedPrompter::Question question{"Warning", "Previous values not saved, Exit?",
                                                    Buttons::YesNo, Icon::None};
    for (const auto& [changed, how, answer] : cases) {
        prompter.asked.clear();
        prompter.answers = {answer};
        const auto d = open(0);
        d->show();
        if (changed) click(*d, "cmdDn");
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        if (how == "EXIT") control(*d, "cmdExit")->click();
        if (how == "close") d->close();
        if (how == "Escape") QCoreApplication::sendEvent(d.get(), &escape);
        EXPECT_EQ(d->isVisible(), changed && answer == Answer::No) << how;
        EXPECT_EQ(prompter.asked, std::vector(changed ? 1 : 0, question)) << how;
    }
}

}  // namespace
}  // namespace lv
