#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>

#include "app/qt_splash.h"

namespace lv {
namespace {

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
    ASSERT_TRUE(label("lblVersion") && label("lblProductName"));
    EXPECT_EQ(label("lblVersion")->text(), "Version 1.2.3");
    EXPECT_EQ(label("lblProductName")->text(), "lv_Analog");
    EXPECT_TRUE(form.windowFlags() & Qt::FramelessWindowHint);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_LE((form.frameGeometry().center() - screen.center()).manhattanLength(), 1);
    for (const char* name : {"lblVersion", "lblProductName"})
        EXPECT_TRUE(form.rect().contains(label(name)->geometry())) << name;
}

// Each start-up caption shows whole and is painted before setProgress returns.
TEST_F(SplashTest, CaptionsShowAtOnceAndFit) {
    QLabel* progress = label("lblProgress");
    ASSERT_TRUE(progress);
    int paints = 0;
    struct Counter : QObject {
        int& n;
        explicit Counter(int& n) : n(n) {}
        bool eventFilter(QObject*, QEvent* e) override {
            return n += e->type() == QEvent::Paint, false;
        }
    } counter(paints);
    progress->installEventFilter(&counter);
    const QImage blank = progress->grab().toImage();
    for (const QString caption : {"Loading", "Checking for Hardware", "Running in Demo Mode",
                                  "Checking Port 16 for Hardware", "No Hardware Detected"}) {
        const int before = paints;
        form.setProgress(caption);
        EXPECT_GT(paints, before) << caption.toStdString();
        EXPECT_EQ(progress->text(), caption);
        EXPECT_TRUE(progress->isVisible() && form.rect().contains(progress->geometry()));
        EXPECT_LE(progress->sizeHint().width(), progress->width()) << caption.toStdString();
        EXPECT_NE(progress->grab().toImage(), blank) << caption.toStdString();
    }
    progress->removeEventFilter(&counter);
}

}  // namespace
}  // namespace lv
