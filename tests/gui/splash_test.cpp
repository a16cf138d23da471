#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>

#include "app/qt_splash.h"

namespace lv {
namespace {

// Frameless, centred, the version shown; each start-up caption shows whole
// and is painted before setProgress returns.
TEST(Splash, CentredWithItsVersionAndEachCaptionPaintedAtOnce) {
    SplashForm form("1.2.3");
    form.show();
    QApplication::processEvents();
    auto* version = form.findChild<QLabel*>("lblVersion");
    auto* progress = form.findChild<QLabel*>("lblProgress");
    ASSERT_TRUE(version && progress);
    EXPECT_EQ(version->text(), "Version 1.2.3");
    EXPECT_TRUE(form.rect().contains(version->geometry()));
    EXPECT_TRUE(form.windowFlags() & Qt::FramelessWindowHint);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_LE((form.frameGeometry().center() - screen.center()).manhattanLength(), 1);

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
        SCOPED_TRACE(caption.toStdString());
        const int before = paints;
        form.setProgress(caption);
        EXPECT_GT(paints, before) << "painted before it returns";
        EXPECT_EQ(progress->text(), caption);
        EXPECT_TRUE(progress->isVisible() && form.rect().contains(progress->geometry()));
        EXPECT_LE(progress->sizeHint().width(), progress->width()) << "shown whole";
        EXPECT_NE(progress->grab().toImage(), blank);
    }
    progress->removeEventFilter(&counter);
}

}  // namespace
}  // namespace lv
