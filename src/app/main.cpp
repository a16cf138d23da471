#include <unistd.h>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSerialPortInfo>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <csignal>
#include <cstdio>

#include "app/console_display.h"
#include "app/qt_live_session.h"
#include "device/port_candidates.h"

namespace {

int g_signalPipe[2] = {-1, -1};

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

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("lv_Analog");
    QCoreApplication::setApplicationVersion(LV_VERSION);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Display for the lv3 meter. Until the window is built the readouts are printed "
        "as text.");
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption portOption("port", "Serial port to try first (repeatable).", "PATH");
    QCommandLineOption exitAfterOption("exit-after", "Close in order after SECONDS.", "SECONDS");
    parser.addOption(portOption);
    parser.addOption(exitAfterOption);
    parser.process(app);

    std::vector<std::string> given;
    for (const auto& p : parser.values(portOption)) given.push_back(p.toStdString());
    const char* env = std::getenv("LV_ANALOG_PORTS");
    const auto candidates = lv::portCandidates(given, env ? env : "", systemPorts());

    if (::pipe(g_signalPipe) == 0) {
        std::signal(SIGINT, onSignal);
        std::signal(SIGTERM, onSignal);
        auto* notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app,
                         [] { QCoreApplication::quit(); });
    }
    if (parser.isSet(exitAfterOption)) {
        bool ok = false;
        const double secs = parser.value(exitAfterOption).toDouble(&ok);
        if (!ok || secs < 0) {
            std::fprintf(stderr, "lv_Analog: --exit-after wants a number of seconds\n");
            return 2;
        }
        QTimer::singleShot(static_cast<int>(secs * 1000), &app, [] { QCoreApplication::quit(); });
    }

    lv::ConsoleDisplay display(stdout);
    lv::LiveSession session(display, stdout);
    QObject::connect(&session, &lv::LiveSession::linkLost, &app, [](const QString& reason) {
        std::fprintf(stdout, "Link lost: %s\n", qPrintable(reason));
        QCoreApplication::exit(3);
    });

    if (candidates.empty()) {
        std::fprintf(stdout, "No serial ports found. Give one with --port PATH.\n");
        finish(1);
    }
    if (!session.connectMeter(candidates)) {
        std::fprintf(stdout, "No Hardware Detected\n");
        finish(1);
    }
    finish(app.exec());
}
