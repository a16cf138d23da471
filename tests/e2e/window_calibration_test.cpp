#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>
#include <fstream>

#include "app/qt_main_window.h"
#include "device/link_status.h"
#include "support/qt_wait.h"
#include "virtual_meter.h"

namespace lv {
namespace {

// Settings, Dial Calibration on the live window: the meter leaves its stream
// for the dialog, and comes back to it once the dialog is closed.
TEST(WindowCalibration, TheStreamComesBackAfterTheDialog) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    QTemporaryDir data;
    const std::string link = meter.link.toStdString();
    MainWindow w({data.path().toStdString(), "1.0.0",
                  [link] { return std::vector<std::string>{link}; },
                  QCoreApplication::applicationDirPath().toStdString()});
    w.prompter().setUnattended(true);
    w.Form_Load();
    w.show();
    const MeterState& st = w.session().state();
    ASSERT_TRUE(test::waitUntil([&] { return st.ShownStatus == kStatusInputOk; }, 3000));

    bool sawDialog = false;
    QTimer::singleShot(500, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        sawDialog = dialog && dialog->objectName() == "frmScale";
        if (dialog) dialog->findChild<QAbstractButton*>("cmdExit")->click();
    });
    w.menus().action("mnuSettingstDialTest")->trigger();
    EXPECT_TRUE(sawDialog);
    const long before = w.session().samples();
    EXPECT_TRUE(test::waitUntil([&] { return w.session().samples() > before + 10; }, 3000))
        << "frames again after the calibration";
    EXPECT_EQ(st.ShownStatus, kStatusInputOk);
    w.closeUnattended();
}

}  // namespace
}  // namespace lv
