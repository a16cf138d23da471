#include <unistd.h>
#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QSerialPortInfo>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <csignal>
#include <cstdio>

#include "app/data_folder.h"
#include "app/qt_exit_request.h"
#include "app/qt_main_window.h"
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
// devices; everything of ours has been saved by then.
[[noreturn]] void finish(int code) {
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(code);
}

// The screenshot waits for a live needle, or this long for a meter that never came.
constexpr int kScreenshotFrames = 25;
constexpr qint64 kScreenshotNoMeterMs = 3000;
constexpr qint64 kScreenshotGiveUpMs = 10000;

// Help and version are text only: answered before the window's application
// exists, so that they work where there is no display at all.
void answerTextOnly(int argc, char* argv[], QCommandLineParser& parser) {
    QStringList args;
    for (int i = 0; i < argc; ++i) args << QString::fromLocal8Bit(argv[i]);
    // Options of the window system (-platform ...) are unknown here: only
    // whether help or version was asked for counts.
    parser.parse(args);
    if (!parser.isSet("help") && !parser.isSet("help-all") && !parser.isSet("version")) return;
    QCoreApplication text(argc, argv);
    parser.process(text);  // prints and leaves
    finish(0);
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication::setApplicationName("lv_Analog");
    QCoreApplication::setApplicationVersion(LV_VERSION);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Display and recorder for the lv3 meter. Without a meter the window runs in Demo Mode.");
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption portOption("port", "Serial port to try first (repeatable).", "PATH");
    QCommandLineOption dataDirOption(
        "data-dir", "Folder of lv_Analog.ini and lv_Analog.cfg (default: ~/.config/lv_Analog).",
        "DIR");
    QCommandLineOption exitAfterOption("exit-after", "Close in order after SECONDS.", "SECONDS");
    QCommandLineOption screenshotOption(
        "screenshot", "Save a PNG of the window once the needle is live (or in Demo Mode).",
        "FILE");
    QCommandLineOption playOption("play", "Load this recording (.lvd) and play it.", "FILE");
    parser.addOption(playOption);
    parser.addOption(portOption);
    parser.addOption(dataDirOption);
    parser.addOption(exitAfterOption);
    parser.addOption(screenshotOption);
    parser.addPositionalArgument("file", "A recording (.lvd) to open, ready to play.",
                                 "[FILE.lvd]");
    answerTextOnly(argc, argv, parser);

    // The window changes in small pieces 50 times a second. Through X shared
    // memory Qt waits, before each repaint, for the server to finish reading
    // the last one: a round trip and two thread wake-ups a frame, dearer than
    // sending a needle's few kilobytes down the socket. A setting of the
    // user's own wins.
    if (!qEnvironmentVariableIsSet("QT_XCB_NO_MITSHM")) qputenv("QT_XCB_NO_MITSHM", "1");
    QApplication app(argc, argv);
    parser.process(app);
    // The desktop entry's name: the window is matched to its launcher and icon.
    QGuiApplication::setDesktopFileName("lv_Analog");

    const std::filesystem::path exeDir = QCoreApplication::applicationDirPath().toStdString();
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    const std::string documents =
        QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation).toStdString();
    const lv::DataFolderResult data =
        lv::chooseDataFolder({parser.value(dataDirOption).toStdString(), exeDir, xdg ? xdg : "",
                              home ? home : "", documents});
    if (!data.error.empty()) {
        std::fprintf(stderr, "lv_Analog: %s\n", data.error.c_str());
        return 2;
    }

    double exitAfter = -1;
    if (parser.isSet(exitAfterOption)) {
        bool ok = false;
        exitAfter = parser.value(exitAfterOption).toDouble(&ok);
        if (!ok || exitAfter < 0) {
            std::fprintf(stderr, "lv_Analog: --exit-after wants a number of seconds\n");
            return 2;
        }
    }

    std::vector<std::string> given;
    for (const auto& p : parser.values(portOption)) given.push_back(p.toStdString());
    const char* env = std::getenv("LV_ANALOG_PORTS");
    const std::string envPorts = env ? env : "";

    lv::StartOptions options;
    options.dataFolder = data.folder;
    options.versionText = LV_VERSION;
    options.exeDir = exeDir;
    options.candidates = [given, envPorts] {
        return lv::portCandidates(given, envPorts, systemPorts());
    };
    lv::MainWindow window(std::move(options));
    window.setRecordingsFolder(data.recordings);

    bool shot = !parser.isSet(screenshotOption);
    auto screenshot = [&] {
        if (shot) return;
        shot = true;
        const QString path = parser.value(screenshotOption);
        if (!window.grab().save(path, "PNG"))
            std::fprintf(stderr, "lv_Analog: cannot write the screenshot %s\n", qPrintable(path));
    };

    // A signal or --exit-after closes the window as Quit does, answering no
    // question, and ends the program from whatever dialog or wait it finds.
    lv::ExitOnRequest exitRequest(window, [&] {
        screenshot();
        finish(0);
    });
    if (::pipe(g_signalPipe) == 0) {
        std::signal(SIGINT, onSignal);
        std::signal(SIGTERM, onSignal);
        auto* notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app, [&] {
            char c;
            [[maybe_unused]] auto n = ::read(g_signalPipe[0], &c, 1);
            exitRequest.request();
        });
    }
    if (exitAfter >= 0)
        QTimer::singleShot(static_cast<int>(exitAfter * 1000), &app,
                           [&] { exitRequest.request(); });

    QObject::connect(&window.session(), &lv::LiveSession::linkLost, &app,
                     [](const QString& reason) {
                         std::fprintf(stderr, "lv_Analog: link lost: %s\n", qPrintable(reason));
                     });

    window.Form_Load();
    window.show();
    if (parser.isSet(playOption))
        window.recording().playFile(parser.value(playOption));
    else if (!parser.positionalArguments().isEmpty())
        window.recording().openFile(parser.positionalArguments().constFirst());
    const bool live = window.session().state().PortNumber != 0;

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
    const int code = app.exec();
    screenshot();
    finish(code);
}
