#include <unistd.h>
#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QSerialPortInfo>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <csignal>
#include <cstdio>

#include "app/qt_main_window.h"
#include "device/port_candidates.h"

namespace {

int g_signalPipe[2] = {-1, -1};
bool g_exitDue = false;

void onSignal(int) {
    const char c = 1;
    [[maybe_unused]] auto n = ::write(g_signalPipe[1], &c, 1);
}

std::vector<std::string> systemPorts() {
    std::vector<std::string> ports;
    for (const auto& info : QSerialPortInfo::availablePorts())
        ports.push_back(info.systemLocation().toStdString());
    std::sort(ports.begin(), ports.end());
    return ports;
}

// Leaves without running static destructors of libraries that may still hold
// devices; everything of ours has been flushed by then.
[[noreturn]] void finish(int code) {
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(code);
}

// The screenshot waits for a live needle, or this long for a meter that never came.
constexpr int kScreenshotFrames = 25;
constexpr qint64 kScreenshotNoMeterMs = 3000;
constexpr qint64 kScreenshotGiveUpMs = 10000;

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName("lv_Analog");
    QCoreApplication::setApplicationVersion(LV_VERSION);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Display for the lv3 meter. Without a meter the window runs in Demo Mode.");
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption portOption("port", "Serial port to try first (repeatable).", "PATH");
    QCommandLineOption exitAfterOption("exit-after", "Close in order after SECONDS.", "SECONDS");
    QCommandLineOption screenshotOption(
        "screenshot", "Save a PNG of the window once the needle is live (or in Demo Mode).",
        "FILE");
    parser.addOption(portOption);
    parser.addOption(exitAfterOption);
    parser.addOption(screenshotOption);
    parser.process(app);

    std::vector<std::string> given;
    for (const auto& p : parser.values(portOption)) given.push_back(p.toStdString());
    const char* env = std::getenv("LV_ANALOG_PORTS");
    const auto candidates = lv::portCandidates(given, env ? env : "", systemPorts());

    if (::pipe(g_signalPipe) == 0) {
        std::signal(SIGINT, onSignal);
        std::signal(SIGTERM, onSignal);
        auto* notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app, [] {
            g_exitDue = true;
            QCoreApplication::quit();
        });
    }
    if (parser.isSet(exitAfterOption)) {
        bool ok = false;
        const double secs = parser.value(exitAfterOption).toDouble(&ok);
        if (!ok || secs < 0) {
            std::fprintf(stderr, "lv_Analog: --exit-after wants a number of seconds\n");
            return 2;
        }
        // Remembered as well: a quit that lands inside the port search would
        // otherwise be forgotten by the main loop that starts after it.
        QTimer::singleShot(static_cast<int>(secs * 1000), &app, [] {
            g_exitDue = true;
            QCoreApplication::quit();
        });
    }

    lv::MainWindow window(stdout);
    QObject::connect(&window.session(), &lv::LiveSession::linkLost, &app,
                     [](const QString& reason) {
                         std::fprintf(stdout, "Link lost: %s\n", qPrintable(reason));
                         std::fflush(stdout);
                     });
    window.show();

    if (candidates.empty())
        std::fprintf(stdout, "No serial ports found. Give one with --port PATH.\n");
    const bool live = window.connectMeter(candidates);
    if (!live) std::fprintf(stdout, "No Hardware Detected\n");
    std::fflush(stdout);

    bool shot = !parser.isSet(screenshotOption);
    auto screenshot = [&] {
        if (shot) return;
        shot = true;
        const QString path = parser.value(screenshotOption);
        if (!window.grab().save(path, "PNG"))
            std::fprintf(stderr, "lv_Analog: cannot write the screenshot %s\n", qPrintable(path));
    };
    QTimer shotTimer;
    QElapsedTimer sinceStart;
    sinceStart.start();
    if (!shot) {
        QObject::connect(&shotTimer, &QTimer::timeout, &app, [&] {
            const qint64 ms = sinceStart.elapsed();
            if ((live && window.framesDrawn() >= kScreenshotFrames) ||
                (!live && ms >= kScreenshotNoMeterMs) || ms >= kScreenshotGiveUpMs)
                screenshot();
        });
        shotTimer.start(100);
    }
    const int code = g_exitDue ? 0 : app.exec();
    screenshot();
    finish(code);
}
