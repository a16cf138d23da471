#include "common/qt_pump.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTime>
#include <QTimer>
#include <cmath>

namespace lv {

QtPump::QtPump() {
    m_startOfDay = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
    m_clock.start();
}

double QtPump::Timer() {
    const double t = m_startOfDay + m_clock.nsecsElapsed() / 1e9;
    return std::fmod(t, 86400.0);
}

void QtPump::DoEvents() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void QtPump::wait(double seconds) {
    const int ms = static_cast<int>(std::ceil(seconds * 1000.0));
    if (ms <= 0) {
        DoEvents();
        return;
    }
    QEventLoop loop;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(ms);
    loop.exec();
}

}  // namespace lv
