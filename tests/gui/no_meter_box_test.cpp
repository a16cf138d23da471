#include <gtest/gtest.h>

#include <sys/fsuid.h>
#include <unistd.h>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include "app/port_search.h"
#include "common/qt_prompter.h"
#include "device/qt_serial_port.h"
#include "support/fake_pump.h"
#include "support/recording_display.h"

namespace lv {
namespace {

// Real ports that cannot be opened, the real box: each port's reason and the
// fix for a refused one are in the box. Root opens a mode-000 file regardless,
// so files are checked as an ordinary user, for this thread only.
TEST(NoMeterBoxTest, RealPortsTellTheirReasonsInTheBox) {
    QTemporaryDir dir;
    // Others may look into the folder, so a missing port stays "missing".
    ASSERT_TRUE(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner |
                                                      QFile::ExeOwner | QFile::ReadOther |
                                                      QFile::ExeOther));
    const QString locked = dir.path() + "/ttyUSB0", missing = dir.path() + "/ttyUSB9";
    QFile(locked).open(QIODevice::WriteOnly);
    ASSERT_TRUE(QFile::setPermissions(locked, {}));
    QtSerialPort port;
    test::FakePump pump;
    MeterState st;
    test::RecordingDisplay display;
    QtPrompter prompter;
    Settings settings;
    QString informative, detailed;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        informative = box->informativeText();
        detailed = box->detailedText();
        box->button(QMessageBox::Cancel)->click();
    });
    const bool root = ::geteuid() == 0;
    if (root) ::setfsgid(65534), ::setfsuid(65534);
    PortSearch(port, pump, st, display, prompter, settings,
               {locked.toStdString(), missing.toStdString()}, "1")
        .mnuConnectionConnect_Click();
    if (root) ::setfsuid(0), ::setfsgid(0);
    EXPECT_EQ(detailed,
              locked + ": Permission denied\n" + missing + ": No such file or directory\n");
    EXPECT_TRUE(informative.contains("Permission denied on " + locked) &&
                informative.contains("dialout"))
        << informative.toStdString();
    EXPECT_EQ(st.PortNumber, 0);
}

}  // namespace
}  // namespace lv
