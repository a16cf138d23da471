#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>

#include "app/qt_splash.h"

namespace lv {
namespace {

// Counts the paints a widget receives.
class PaintCounter : public QObject {
public:
    int paints = 0;
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::Paint) ++paints;
        return false;
    }
};

class SplashTest : public ::testing::Test {
protected:
    SplashTest() : form("1.2.3") {
        form.show();
        QApplication::processEvents();
    }
    QLabel* label(const char* name) { return form.findChild<QLabel*>(name); }
    SplashForm form;
};

TEST_F(SplashTest, NamesVersionAndPlace) {
    EXPECT_EQ(form.objectName(), "frmLvSplash");
    ASSERT_TRUE(label("lblVersion") && label("lblProductName") && label("lblProgress"));
    EXPECT_EQ(label("lblVersion")->text(), "Version 1.2.3");
    EXPECT_EQ(label("lblProductName")->text(), "lv_Analog");
    EXPECT_TRUE(form.windowFlags() & Qt::FramelessWindowHint);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_LE((form.frameGeometry().center() - screen.center()).manhattanLength(), 1);
    for (const char* name : {"lblVersion", "lblProductName"})
        EXPECT_TRUE(form.rect().contains(label(name)->geometry())) << name;
}

// Every caption the start-up and the port search use shows whole, and is
// painted before setProgress returns: the callers then wait on the port.
TEST_F(SplashTest, CaptionsShowAtOnceAndFit) {
    QLabel* progress = label("lblProgress");
    ASSERT_TRUE(progress);
    PaintCounter counter;
    progress->installEventFilter(&counter);
    const QImage blank = progress->grab().toImage();
    for (const QString caption : {"Loading", "Checking for Hardware", "Running in Demo Mode",
                                  "Checking Port 16 for Hardware", "No Hardware Detected"}) {
        SCOPED_TRACE(caption.toStdString());
        const int before = counter.paints;
        form.setProgress(caption);
        EXPECT_GT(counter.paints, before);
        EXPECT_EQ(progress->text(), caption);
        EXPECT_TRUE(progress->isVisible());
        EXPECT_TRUE(form.rect().contains(progress->geometry()));
        EXPECT_LE(progress->sizeHint().width(), progress->width());
        EXPECT_NE(progress->grab().toImage(), blank) << "the caption leaves ink";
    }
    progress->removeEventFilter(&counter);
}

}  // namespace
}  // namespace lv
