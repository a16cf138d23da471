#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QImage>
#include <QRegularExpression>
#include <QTimer>
#include <algorithm>

#include "app/qt_exit_request.h"
#include "device/link_status.h"
#include "recording/lvd_file.h"
#include "signal/lamp_rules.h"
#include "support/live_window.h"
#include "support/virtual_meter.h"

namespace lv {
namespace {

using test::waitUntil;

// The whole window against a meter whose status digit never changes (its lamp
// is never drawn) and which logs what it receives, saving "Run" files from 7.
class WindowRecording : public ::testing::Test {
protected:
    void start(int recordingMode) {
        meter = std::make_unique<test::VirtualMeter>(QStringList{"--log", "@rx.log"}, QString{},
                                                     "P80002A00000\nP81002A00000\n");
        ASSERT_TRUE(meter->ready);
        saveTo = data.filePath("rec/").toStdString();
        std::filesystem::create_directory(saveTo);
        w = test::openWindow(
            data.path().toStdString(),
            "[Recording]\nAudioEnable=False\nRecordingMode=" + std::to_string(recordingMode) +
                "\nSuffixType=0\nSuffixNum=7\nSavePrefix=Run\nSavePath=" + saveTo + "\n",
            meter->link.toStdString());
        ASSERT_EQ(state().RunMode, kRunLive);
        ASSERT_TRUE(test::streams(*w));
    }
    void TearDown() override {
        if (w) w->closeUnattended();
    }
    MeterState& state() { return w->session().state(); }
    void click(const char* name) { test::click(*w, name); }
    long count(const QString& what) {
        const QStringList lines = meter->received();
        return std::count(lines.begin(), lines.end(), what);
    }
    long frames() { return meter->received().filter(QRegularExpression("^P")).size(); }

    std::unique_ptr<test::VirtualMeter> meter;
    QTemporaryDir data;
    std::string saveTo;
    std::unique_ptr<MainWindow> w;
};

// One session: an Auto Save recording without sound (the second before the
// first frame is recorded too, a lamp never lit is stored as off, Record and
// both Stops send "U") played back; the calibration dialog, after which the
// stream comes back; the needle test, a "P" line a record, after which
// quitting tells the meter nothing.
TEST_F(WindowRecording, RecordsPlaysBackCalibratesAndTestsTheNeedle) {
    start(3);
    const long startsBefore = count("U");
    QElapsedTimer held;
    held.start();
    click("cmdRecord");
    QTest::qWait(2000 - static_cast<int>(held.elapsed()));
    click("cmdStop");
    const double seconds = static_cast<double>(held.elapsed()) / 1000;
    EXPECT_EQ(state().RunMode, kRunLive);
    EXPECT_EQ(count("U"), startsBefore + 2) << "Record and Stop restart the stream";

    const std::string lvd = saveTo + "Run007.lvd";
    ASSERT_TRUE(std::filesystem::exists(lvd)) << "Auto Save wrote the numbered file";
    EXPECT_EQ(w->settings().SuffixNum, 8);
    const RecBuffer& b = w->recording().state().buffer;
    const std::int32_t recorded = b.RecCount;
    EXPECT_NEAR(recorded, 50 * seconds, 20) << "every frame from Record to Stop";
    // On the frame grid from the first frame on; a slow start may hand the
    // first read two frames, and only the later one is recorded.
    EXPECT_TRUE(b(1).TimeMs % 20 == 0 && b(1).TimeMs >= 20 && b(1).TimeMs <= 60) << b(1).TimeMs;
    EXPECT_EQ(b(1).StatusFlags & 3, kLampOff) << "a lamp never lit is stored as off";
    EXPECT_EQ(std::filesystem::file_size(lvd), 20u * static_cast<std::uintmax_t>(recorded));

    ASSERT_TRUE(w->recording().player().Load_File(lvd));
    EXPECT_EQ(b.RecCount, recorded);
    const long drawn = w->framesDrawn(), framesBefore = frames();
    click("cmdPlay");
    EXPECT_EQ(state().RunMode, kRunPlayback);
    EXPECT_TRUE(waitUntil([&] { return state().RunMode != kRunPlayback; }, 8000))
        << "plays to the end";
    EXPECT_GT(w->framesDrawn(), drawn + 20) << "the records moved the needle";
    EXPECT_EQ(state().RunMode, kRunLive);
    EXPECT_GT(frames() - framesBefore, recorded / 2) << "the meter followed the playback";
    EXPECT_EQ(meter->received().last(), "U") << "and was told to stream again at its end";
    const long afterPlayback = w->session().samples();
    EXPECT_TRUE(waitUntil([&] { return w->session().samples() > afterPlayback + 10; }, 2000))
        << "the input held during the playback is read again after it";

    bool sawDialog = false;
    QTimer up;  // Exit, as soon as the dialog is up
    QObject::connect(&up, &QTimer::timeout, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog) return;
        up.stop();
        sawDialog = dialog->objectName() == "frmScale";
        dialog->findChild<QAbstractButton*>("cmdExit")->click();
    });
    up.start(20);
    w->menus().action("mnuSettingstDialTest")->trigger();
    EXPECT_TRUE(sawDialog);
    const long samples = w->session().samples();
    EXPECT_TRUE(waitUntil([&] { return w->session().samples() > samples + 10; }, 3000))
        << "frames again after the calibration";
    EXPECT_EQ(state().ShownStatus, kStatusInputOk);

    QAction* item = w->menus().action("mnuConnectNeedleTest");
    item->trigger();
    ASSERT_TRUE(item->isChecked());
    const long needleBefore = frames();
    QTest::qWait(2000);
    const int linesDuring = static_cast<int>(meter->received().size());
    EXPECT_NEAR(frames() - needleBefore, 100, 25) << "the needle test: about 50 a second";
    w->closeUnattended();
    EXPECT_FALSE(meter->received().mid(linesDuring).contains("U"))
        << "no start command on the way out";
    w.reset();
}

// A meter lost mid-recording, with a silent device or a live meter back on
// the same path before the watchdog has seen two silent ticks: the recording
// stops and is kept, and only then does a live meter bring the display back.
TEST_F(WindowRecording, AMeterLostMidRecordingStopsItAndKeepsIt) {
    for (const bool live : {false, true}) {
        SCOPED_TRACE(live ? "live meter back" : "silent device back");
        start(1);
        click("cmdRecord");  // returns with the lead-in second recorded
        QTest::qWait(500);
        const QString path = meter->link;
        meter->stop();
        QTest::qWait(200);
        test::VirtualMeter back(live ? QStringList{} : QStringList{"--mute"}, path);
        ASSERT_TRUE(back.ready);
        EXPECT_TRUE(waitUntil([&] { return state().RunMode != kRunRecording; }, 2600))
            << "stopped within two clock ticks and a bit";
        EXPECT_TRUE(w->recording().state().RecNotSaved) << "kept, for the operator to save";
        const std::int32_t kept = w->recording().state().buffer.RecCount;
        EXPECT_NEAR(kept, 75, 20) << "every frame up to the loss";
        // A live meter is back at once (it was probed when its path came
        // back); the silent device gets two reconnection probes' time.
        EXPECT_EQ(waitUntil([&] { return state().ShownStatus == kStatusInputOk; }, 2500), live)
            << "the live display comes back with a meter only";
        EXPECT_EQ(w->recording().state().buffer.RecCount, kept);
        w->closeUnattended();
        w.reset();
        meter.reset();
    }
}

// SIGTERM, SIGINT or --exit-after with the calibration dialog up: the window
// closes, the meter gets its stream back ("I", "U"), and the program ends.
TEST_F(WindowRecording, AnExitRequestEndsFromAModalDialog) {
    start(1);
    bool ended = false;
    double took = -1;
    ExitOnRequest exit(*w, [&] {
        ended = true;
        // The process would end here; the test leaves the dialog's loop.
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) d->done(0);
    });
    int linesBefore = 0, shownFor = 0;
    // Asked once the dialog has been up a moment, inside its own loop.
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!QApplication::activeModalWidget() || ++shownFor < 6) return;
        poll.stop();
        linesBefore = static_cast<int>(meter->received().size());
        QElapsedTimer t;
        t.start();
        exit.request();
        took = static_cast<double>(t.elapsed()) / 1000;
    });
    poll.start(50);
    w->menus().action("mnuSettingstDialTest")->trigger();
    EXPECT_TRUE(ended);
    EXPECT_LT(took, 2 + 5.5);
    EXPECT_FALSE(w->isVisible());
    const QStringList after = meter->received().mid(linesBefore);
    EXPECT_TRUE(after.contains("I") && after.contains("U"));
    w.reset();
}

// A new user's settings: no save folder, "Auto Name". R, S and Save put the
// recording in the data folder's recordings/, not where the program was
// started; the program started with that file as its argument opens it.
TEST(WindowRecordingFolders,
     WithoutASaveFolderRecordingsGoToTheDataFolderAndOpenFromTheCommandLine) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    QTemporaryDir data, startedIn, secondData;
    const std::filesystem::path folder = data.path().toStdString();
    // Started from another folder; back where it was however the test ends.
    struct StartedIn {
        std::filesystem::path before = std::filesystem::current_path();
        explicit StartedIn(const QString& dir) { std::filesystem::current_path(dir.toStdString()); }
        ~StartedIn() { std::filesystem::current_path(before); }
    };
    auto startedFrom = std::make_unique<StartedIn>(startedIn.path());
    const std::string saved = (folder / "recordings" / "New001.lvd").string();
    {
        auto w = test::openWindow(folder,
                                  "[Recording]\nAudioEnable=False\nRecordingMode=2\nSuffixType=0\n"
                                  "SuffixNum=1\nSavePrefix=New\nSavePath=\n",
                                  meter.link.toStdString());
        ASSERT_TRUE(test::streams(*w));
        QTest::keyClick(w.get(), Qt::Key_R);
        ASSERT_EQ(w->session().state().RunMode, kRunRecording);
        QTest::qWait(1200);
        QTest::keyClick(w.get(), Qt::Key_S);
        ASSERT_EQ(w->session().state().RunMode, kRunLive);
        w->menus().action("mnuFileSave")->trigger();
        EXPECT_TRUE(std::filesystem::exists(saved));
        EXPECT_EQ(test::firstLine(folder / "lv_Analog.recent"), saved)
            << "a save under the automatic name is a recent file";

        // Export writes what lvdtool writes for the same file.
        w->recording().openFile(QString::fromStdString(saved));
        ASSERT_TRUE(w->recording().exportTo(data.filePath("exported.csv")));
        QProcess tool;
        tool.start(LVDTOOL_PATH, {"csv", QString::fromStdString(saved)});
        ASSERT_TRUE(tool.waitForFinished(10000));
        EXPECT_EQ(test::readFile(folder / "exported.csv"),
                  tool.readAllStandardOutput().toStdString());
        EXPECT_FALSE(QImage(data.filePath("exported.png")).isNull());
        w->closeUnattended();
    }
    startedFrom.reset();
    EXPECT_TRUE(QDir(startedIn.path()).isEmpty()) << "nothing in the folder it was started from";
    EXPECT_NE(test::readFile(folder / "lv_Analog.ini").find("SavePath=\n"), std::string::npos)
        << "the file keeps the empty folder";

    // Recorded without sound, so played without it.
    const std::filesystem::path second = secondData.path().toStdString();
    std::ofstream(second / "lv_Analog.ini") << "[Recording]\nAudioEnable=False\n";
    QProcess app;
    app.setWorkingDirectory(QString::fromStdString((folder / "recordings").string()));
    test::startProgram(app, {"--port", meter.link, "--data-dir", secondData.path(), "--exit-after",
                             "2", "New001.lvd"});
    ASSERT_TRUE(app.waitForFinished(15000));
    EXPECT_EQ(app.exitCode(), 0);
    EXPECT_EQ(test::firstLine(second / "lv_Analog.recent"), saved)
        << "only a recording that loaded becomes the newest of the recent files";
}

}  // namespace
}  // namespace lv
