#pragma once
#include <QElapsedTimer>
#include <QTest>
#include <functional>

namespace lv::test {

// Runs the event loop until `done` holds, or `ms` have passed (false then).
inline bool waitUntil(const std::function<bool()>& done, int ms) {
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > ms) return false;
        QTest::qWait(5);
    }
    return true;
}

}  // namespace lv::test
