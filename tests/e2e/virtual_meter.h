#pragma once
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace lv::test {

// lv3sim on a link (by default a fresh one in a temporary folder), stopped at
// the end. Waiting for it runs the event loop, so whatever the test drives
// keeps running meanwhile.
class VirtualMeter {
public:
    explicit VirtualMeter(QStringList extra = {}, QString linkPath = {}) {
        link = linkPath.isEmpty() ? dir.filePath("meter") : linkPath;
        process.setProgram(LV3SIM_PATH);
        process.setArguments(QStringList{"--link", link} + extra);
        process.start();
        ready = process.waitForStarted(5000) && waitForReady();
    }
    ~VirtualMeter() { stop(); }
    void stop() {
        if (process.state() == QProcess::NotRunning) return;
        process.terminate();
        if (!process.waitForFinished(3000)) process.kill();
        process.waitForFinished(1000);
    }
    QString scriptPath(const QString& name) const { return dir.filePath(name); }

    QTemporaryDir dir;
    QString link;
    QProcess process;
    bool ready = false;

private:
    bool waitForReady() {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < 5000) {
            QTest::qWait(10);
            out += process.readAllStandardOutput();
            if (out.contains("READY")) return true;
        }
        return false;
    }
    QByteArray out;
};

}  // namespace lv::test
