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

// Root opens a mode-000 file regardless; checking files as an ordinary user
// for this thread only makes the refusal a user meets happen here too.
class OrdinaryUserFiles {
public:
    OrdinaryUserFiles() : m_root(::geteuid() == 0) {
        if (!m_root) return;
        ::setfsgid(65534);
        ::setfsuid(65534);
    }
    ~OrdinaryUserFiles() {
        if (!m_root) return;
        ::setfsuid(0);
        ::setfsgid(0);
    }
    OrdinaryUserFiles(const OrdinaryUserFiles&) = delete;
    OrdinaryUserFiles& operator=(const OrdinaryUserFiles&) = delete;

private:
    bool m_root;
};

// Real ports that cannot be opened, the real box: its text stays, and each
// port's reason and the fix for a refused one are in the box.
TEST(NoMeterBoxTest, RealPortsTellTheirReasonsInTheBox) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // Others may look into the folder, so a missing port stays "missing".
    ASSERT_TRUE(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner |
                                                      QFile::ExeOwner | QFile::ReadOther |
                                                      QFile::ExeOther));
    const std::string locked = (dir.path() + "/ttyUSB0").toStdString();
    const std::string missing = (dir.path() + "/ttyUSB9").toStdString();
    {
        QFile f(QString::fromStdString(locked));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    ASSERT_TRUE(QFile::setPermissions(QString::fromStdString(locked), {}));

    QtSerialPort port;
    test::FakePump pump;
    MeterState st;
    test::RecordingDisplay display;
    QtPrompter prompter;
    Settings settings;
    QString text, informative, detailed;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        text = box->text();
        informative = box->informativeText();
        detailed = box->detailedText();
        box->button(QMessageBox::Cancel)->click();
    });
    {
        const OrdinaryUserFiles asUser;
        PortSearch(port, pump, st, display, prompter, settings, {locked, missing}, "1")
            .mnuConnectionConnect_Click();
    }
    EXPECT_EQ(text, "Check connection and Retry, or Cancel to run in demo mode.");
    EXPECT_EQ(detailed.toStdString(),
              locked + ": Permission denied\n" + missing + ": No such file or directory\n");
    EXPECT_TRUE(informative.contains("Permission denied on " + QString::fromStdString(locked)))
        << informative.toStdString();
    EXPECT_TRUE(informative.contains("dialout") && informative.contains("log in again"));
    EXPECT_EQ(st.PortNumber, 0);
}

}  // namespace
}  // namespace lv
