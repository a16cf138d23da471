#pragma once
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "support/qt_wait.h"

namespace lv::test {

// lv3sim on a link (by default a fresh one in a temporary folder), stopped at
// the end. "@name" in its arguments names a file in that folder; a script
// given is written to "@frames.txt" first. Waiting for it runs the event
// loop, so whatever the test drives keeps running meanwhile.
class VirtualMeter {
public:
    explicit VirtualMeter(QStringList args = {}, QString linkPath = {},
                          const QByteArray& script = {}) {
        link = linkPath.isEmpty() ? dir.filePath("meter") : linkPath;
        if (!script.isEmpty()) {
            QFile f(dir.filePath("frames.txt"));
            if (f.open(QIODevice::WriteOnly)) f.write(script);
            args << "--script"
                 << "@frames.txt";
        }
        for (QString& a : args)
            if (a.startsWith('@')) a = dir.filePath(a.mid(1));
        process.start(LV3SIM_PATH, QStringList{"--link", link} + args);
        ready = process.waitForStarted(5000) && waitUntil(
                                                    [&] {
                                                        out += process.readAllStandardOutput();
                                                        return out.contains("READY");
                                                    },
                                                    5000);
    }
    ~VirtualMeter() { stop(); }
    void stop() {
        if (process.state() == QProcess::NotRunning) return;
        process.terminate();
        if (!process.waitForFinished(3000)) process.kill();
        process.waitForFinished(1000);
    }
    QString path(const QString& name) const { return dir.filePath(name); }
    // The lines "--log @rx.log" has logged as received so far, without times.
    QStringList received() const {
        QTest::qWait(100);  // the meter logs what it has read, a moment later
        QFile f(path("rx.log"));
        QStringList lines;
        if (f.open(QIODevice::ReadOnly))
            for (const QByteArray& line : f.readAll().split('\n'))
                if (!line.isEmpty() && !line.startsWith("# "))
                    lines << QString::fromLatin1(line.mid(line.indexOf(' ') + 1));
        return lines;
    }

    QTemporaryDir dir;
    QString link;
    QProcess process;
    bool ready = false;

private:
    QByteArray out;
};

}  // namespace lv::test
