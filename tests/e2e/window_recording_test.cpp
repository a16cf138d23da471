#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QProcess>
#include <QRegularExpression>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "app/qt_exit_request.h"
#include "app/qt_main_window.h"
#include "device/link_status.h"
#include "recording/lvd_file.h"
#include "signal/lamp_rules.h"
#include "support/qt_wait.h"
#include "virtual_meter.h"

namespace lv {
namespace {

using test::waitUntil;

// A meter whose status digit never changes: its lamp is never drawn.
constexpr const char* kDarkLampFrames = "P80002A00000\nP81002A00000\n";

// The whole window against the virtual meter and its log of what it received,
// with the placeholder time base and the recording mode of the row.
class WindowRecording : public ::testing::Test {
protected:
    void start(int recordingMode) {
        {
            QFile f(probe.scriptPath("frames.txt"));
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            f.write(kDarkLampFrames);
        }
        log = probe.scriptPath("rx.log");
        meter = std::make_unique<test::VirtualMeter>(
            QStringList{"--script", probe.scriptPath("frames.txt"), "--log", log});
        ASSERT_TRUE(meter->ready);
        folder = data.path().toStdString();
        saveTo = (folder / "rec").string() + "/";
        std::filesystem::create_directory(saveTo);
        std::ofstream(folder / "lv_Analog.ini")
            << "[Recording]\nAudioEnable=False\nRecordingMode=" << recordingMode
            << "\nSuffixType=0\nSuffixNum=7\nSavePrefix=Run\nSavePath=" << saveTo << "\n";
        const std::string link = meter->link.toStdString();
        w = std::make_unique<MainWindow>(
            StartOptions{folder, "1.0.0", [link] { return std::vector<std::string>{link}; },
                         QCoreApplication::applicationDirPath().toStdString()});
        w->prompter().setUnattended(true);  // any question fails safe, and the test goes on
        w->Form_Load();
        w->show();
        ASSERT_EQ(state().RunMode, kRunLive);
        ASSERT_TRUE(waitUntil([&] { return w->session().samples() > 10; }, 3000));
    }
    void TearDown() override {
        if (w) w->closeUnattended();
    }
    MeterState& state() { return w->session().state(); }
    void click(const char* name) { w->recordPanel()->findChild<QAbstractButton*>(name)->click(); }
    // The lines the meter received, as the log has them by now.
    QStringList received() {
        QTest::qWait(100);  // the meter logs what it has read, a moment later
        QFile f(log);
        if (!f.open(QIODevice::ReadOnly)) return {};
        QStringList lines;
        for (const QByteArray& line : f.readAll().split('\n'))
            if (!line.isEmpty() && !line.startsWith("# "))
                lines << QString::fromLatin1(line.mid(line.indexOf(' ') + 1));
        return lines;
    }
    static long count(const QStringList& lines, const QString& what) {
        return std::count(lines.begin(), lines.end(), what);
    }

    test::VirtualMeter probe;  // only for its temporary folder
    QString log;
    std::unique_ptr<test::VirtualMeter> meter;
    QTemporaryDir data;
    std::filesystem::path folder;
    std::string saveTo;
    std::unique_ptr<MainWindow> w;
};

// Sessions that lose data and bytes the meter expects, on an Auto Save
// recording without sound: the second before the first frame is recorded too,
// a lamp never lit is stored as off, Record and both Stops send "U".
TEST_F(WindowRecording, RecordsSavesLoadsAndPlaysBack) {
    start(3);
    const long startsBefore = count(received(), "U");
    QElapsedTimer held;
    held.start();
    click("cmdRecord");
    EXPECT_EQ(state().RunMode, kRunRecording);
    QTest::qWait(3000 - static_cast<int>(held.elapsed()));
    click("cmdStop");
    const double seconds = static_cast<double>(held.elapsed()) / 1000;
    EXPECT_EQ(state().RunMode, kRunLive);
    EXPECT_EQ(count(received(), "U"), startsBefore + 2) << "Record and Stop restart the stream";

    const std::string lvd = saveTo + "Run007.lvd";
    ASSERT_TRUE(std::filesystem::exists(lvd)) << "Auto Save wrote the numbered file";
    EXPECT_EQ(w->settings().SuffixNum, 8);
    const RecBuffer& b = w->recording().state().buffer;
    const std::int32_t frames = b.RecCount;
    EXPECT_NEAR(frames, 50 * seconds, 20) << "every frame from Record to Stop";
    EXPECT_EQ(b(1).TimeMs, 20);
    // A loaded machine may light the lag lamp for a moment; the lamp is
    // otherwise off, from the first record on.
    EXPECT_EQ(b(1).StatusFlags & 3, kLampOff);
    const auto off = std::count_if(b.valid().begin(), b.valid().end(), [](const lvdRecord& r) {
        return (r.StatusFlags & 3) == kLampOff;
    });
    EXPECT_GT(off, frames * 3 / 4);
    EXPECT_EQ(std::filesystem::file_size(lvd), 20u * static_cast<std::uintmax_t>(frames));

    ASSERT_TRUE(w->recording().player().Load_File(lvd));
    EXPECT_EQ(b.RecCount, frames);
    const long before = w->framesDrawn();
    click("cmdPlay");
    EXPECT_EQ(state().RunMode, kRunPlayback);
    EXPECT_TRUE(waitUntil([&] { return state().RunMode != kRunPlayback; }, 8000))
        << "plays to the end";
    EXPECT_GT(w->framesDrawn(), before + 20) << "the records moved the needle";
    EXPECT_EQ(state().RunMode, kRunLive);
    const QStringList lines = received();
    EXPECT_GT(lines.filter(QRegularExpression("^P")).size(), frames / 2)
        << "the meter followed the playback";
    EXPECT_EQ(lines.last(), "U") << "and was told to stream again at its end";
}

// A meter lost mid-recording, with a silent device or a live meter back on
// the same path before the watchdog has seen two silent ticks: the recording
// stops and is kept, and only then does a live meter bring the display back.
TEST_F(WindowRecording, AMeterLostMidRecordingStopsItAndKeepsIt) {
    for (const bool live : {false, true}) {
        SCOPED_TRACE(live ? "live meter back" : "silent device back");
        start(1);
        click("cmdRecord");
        QTest::qWait(1500);
        const QString path = meter->link;
        meter->stop();
        QTest::qWait(200);
        test::VirtualMeter back(live ? QStringList{} : QStringList{"--mute"}, path);
        ASSERT_TRUE(back.ready);
        EXPECT_TRUE(waitUntil([&] { return state().RunMode != kRunRecording; }, 2600))
            << "stopped within two clock ticks and a bit";
        EXPECT_TRUE(w->recording().state().RecNotSaved) << "kept, for the operator to save";
        const std::int32_t kept = w->recording().state().buffer.RecCount;
        EXPECT_NEAR(kept, 125, 20);
        EXPECT_EQ(waitUntil([&] { return state().ShownStatus == kStatusInputOk; }, 4000), live)
            << "the live display comes back with a meter only";
        EXPECT_EQ(w->recording().state().buffer.RecCount, kept);
        w->closeUnattended();
        w.reset();
        meter.reset();
    }
}

// The needle test drives the meter with a "P" line a record; quitting while
// it runs tells the meter nothing.
TEST_F(WindowRecording, TheNeedleTestDrivesTheMeterAndQuittingSendsNothing) {
    start(1);
    QAction* item = w->menus().action("mnuConnectNeedleTest");
    item->trigger();
    ASSERT_TRUE(item->isChecked());
    const long before = received().filter(QRegularExpression("^P")).size();
    QTest::qWait(2000);
    const QStringList during = received();
    EXPECT_NEAR(during.filter(QRegularExpression("^P")).size() - before, 100, 25)
        << "about 50 a second";
    w->closeUnattended();
    EXPECT_FALSE(received().mid(during.size()).contains("U")) << "no start command on the way out";
    w.reset();
}

// SIGTERM, SIGINT or --exit-after with a modal dialog up: the window closes,
// the dialog's own closing exchange runs, and the program ends.
struct ExitCase {
    const char* item;
    double maxSeconds;
    bool calibration;  // the meter gets its stream back first ("I", "U")
};

TEST_F(WindowRecording, AnExitRequestEndsFromAModalDialog) {
    const ExitCase cases[] = {
        {"mnuSettingstDialTest", 2 + 5.5, true},
        {"mnuSettingsMeter", 2, false},
    };
    for (const ExitCase& c : cases) {
        SCOPED_TRACE(c.item);
        start(1);
        bool ended = false;
        double took = -1;
        ExitOnRequest exit(*w, [&] {
            ended = true;
            // The process would end here; the test leaves the dialog's loop.
            if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) d->done(0);
        });
        int linesBefore = 0;
        // Asked once the dialog has been up a moment, inside its own loop.
        int shownFor = 0;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (!QApplication::activeModalWidget() || ++shownFor < 6) return;
            poll.stop();
            linesBefore = static_cast<int>(received().size());
            QElapsedTimer t;
            t.start();
            exit.request();
            took = static_cast<double>(t.elapsed()) / 1000;
        });
        poll.start(50);
        w->menus().action(c.item)->trigger();
        EXPECT_TRUE(ended);
        EXPECT_GE(took, 0);
        EXPECT_LT(took, c.maxSeconds);
        EXPECT_FALSE(w->isVisible());
        const QStringList after = received().mid(linesBefore);
        EXPECT_EQ(after.contains("I") && after.contains("U"), c.calibration);
        w.reset();
        meter.reset();
    }
}

// A new user's settings: no save folder, "Auto Name". R, S and Save put the
// recording in the data folder's recordings/, not where the program was
// started; the program started with that file as its argument opens it.
TEST(WindowRecordingFolders, WithoutASaveFolderRecordingsGoToTheDataFolderAndOpenFromTheCommandLine) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    QTemporaryDir data, startedIn, secondData;
    const std::filesystem::path folder = data.path().toStdString();
    std::ofstream(folder / "lv_Analog.ini")
        << "[Recording]\nAudioEnable=False\nRecordingMode=2\nSuffixType=0\nSuffixNum=1\n"
        << "SavePrefix=New\nSavePath=\n";
    // Started from another folder; back where it was however the test ends.
    struct StartedIn {
        std::filesystem::path before = std::filesystem::current_path();
        explicit StartedIn(const QString& dir) { std::filesystem::current_path(dir.toStdString()); }
        ~StartedIn() { std::filesystem::current_path(before); }
    };
    auto startedFrom = std::make_unique<StartedIn>(startedIn.path());
    const std::string link = meter.link.toStdString();
    std::string saved;
    {
        MainWindow w({folder, "1.0.0", [link] { return std::vector<std::string>{link}; },
                      QCoreApplication::applicationDirPath().toStdString()});
        w.prompter().setUnattended(true);
        w.Form_Load();
        w.show();
        ASSERT_TRUE(waitUntil([&] { return w.session().samples() > 10; }, 3000));
        QTest::keyClick(&w, Qt::Key_R);
        ASSERT_EQ(w.session().state().RunMode, kRunRecording);
        QTest::qWait(1200);
        QTest::keyClick(&w, Qt::Key_S);
        ASSERT_EQ(w.session().state().RunMode, kRunLive);
        w.menus().action("mnuFileSave")->trigger();
        saved = (folder / "recordings" / "New001.lvd").string();
        EXPECT_TRUE(std::filesystem::exists(saved));
        EXPECT_EQ(w.recordPanel()->findChild<QLabel*>("lblLoadedFile")->toolTip().toStdString(),
                  (folder / "recordings" / "New001").string())
            << "the full path";
        EXPECT_EQ(w.windowTitle(), "New001.lvd - lv_Analog");
        std::ifstream recent(folder / "lv_Analog.recent");
        std::string newest;
        std::getline(recent, newest);
        EXPECT_EQ(newest, saved) << "a save under the automatic name is a recent file";

        // Export writes what lvdtool writes for the same file.
        w.recording().openFile(QString::fromStdString(saved));
        const std::filesystem::path exported = folder / "exported.csv";
        ASSERT_TRUE(w.recording().exportTo(QString::fromStdString(exported.string())));
        QProcess tool;
        tool.start(LVDTOOL_PATH, {"csv", QString::fromStdString(saved)});
        ASSERT_TRUE(tool.waitForFinished(10000));
        std::ifstream csv(exported);
        EXPECT_EQ(std::string((std::istreambuf_iterator<char>(csv)), {}),
                  tool.readAllStandardOutput().toStdString());
        EXPECT_FALSE(QImage(QString::fromStdString((folder / "exported.png").string())).isNull());
        w.closeUnattended();
    }
    startedFrom.reset();
    EXPECT_TRUE(QDir(startedIn.path()).isEmpty()) << "nothing in the folder it was started from";
    std::ifstream ini(folder / "lv_Analog.ini");
    const std::string text((std::istreambuf_iterator<char>(ini)), {});
    EXPECT_NE(text.find("SavePath=\n"), std::string::npos) << "the file keeps the empty folder";

    // Recorded without sound, so played without it.
    std::ofstream(std::filesystem::path(secondData.path().toStdString()) / "lv_Analog.ini")
        << "[Recording]\nAudioEnable=False\n";
    QProcess app;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    app.setProcessEnvironment(env);
    app.setWorkingDirectory(QString::fromStdString((folder / "recordings").string()));
    app.start(LV_ANALOG_PATH, {"--port", meter.link, "--data-dir", secondData.path(),
                               "--exit-after", "2", "New001.lvd"});
    ASSERT_TRUE(app.waitForFinished(15000));
    EXPECT_EQ(app.exitCode(), 0);
    // Only a recording that loaded becomes the newest of the recent files.
    std::ifstream recent(std::filesystem::path(secondData.path().toStdString()) /
                         "lv_Analog.recent");
    std::string first;
    std::getline(recent, first);
    EXPECT_EQ(first, saved);
}

}  // namespace
}  // namespace lv
