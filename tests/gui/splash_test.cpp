#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QLabel>

#include "app/qt_splash.h"

namespace lv {
namespace {

// The version shown; a start-up caption shows whole and is painted before
// setProgress returns.
TEST(Splash, ItsVersionAndACaptionPaintedAtOnce) {
    SplashForm form("1.2.3");
    form.show();
    QApplication::processEvents();
    auto* progress = form.findChild<QLabel*>("lblProgress");
    ASSERT_TRUE(progress);
    EXPECT_EQ(form.findChild<QLabel*>("lblVersion")->text(), "Version 1.2.3");
    struct Counter : QObject {
        int n = 0;
        bool eventFilter(QObject*, QEvent* e) override {
            return n += e->type() == QEvent::Paint, false;
        }
    } paints;
    progress->installEventFilter(&paints);
    form.setProgress("Checking Port 16 for Hardware");  // the longest
    EXPECT_GT(paints.n, 0) << "painted before it returns";
    EXPECT_EQ(progress->text(), "Checking Port 16 for Hardware");
    EXPECT_TRUE(progress->isVisible() && form.rect().contains(progress->geometry()));
    EXPECT_LE(progress->sizeHint().width(), progress->width()) << "shown whole";
    progress->removeEventFilter(&paints);
}

}  // namespace
}  // namespace lv
