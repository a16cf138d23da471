#include <gtest/gtest.h>

#include <QApplication>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QProcess>
#include <filesystem>
#include <fstream>
#include <functional>

#include "app/qt_main_window.h"
#include "recording/lvd_file.h"
#include "support/qt_wait.h"
#include "virtual_meter.h"

namespace lv {
namespace {

using test::waitUntil;

// The whole window against the virtual meter: record with the placeholder
// time base in "Auto Save", then load the file back and play it to the end.
TEST(WindowRecording, RecordsSavesLoadsAndPlaysBack) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    QTemporaryDir data;
    const std::filesystem::path folder = data.path().toStdString();
    const std::string saveTo = (folder / "rec").string() + "/";
    std::filesystem::create_directory(saveTo);
    std::ofstream(folder / "lv_Analog.ini")
        << "[Recording]\nAudioEnable=False\nRecordingMode=3\nSuffixType=0\nSuffixNum=7\n"
        << "SavePrefix=Run\nSavePath=" << saveTo << "\n";
    const std::string link = meter.link.toStdString();
    MainWindow w({folder, "1.0.0", [link] { return std::vector<std::string>{link}; },
                  QCoreApplication::applicationDirPath().toStdString()});
    w.prompter().setUnattended(true);  // any question fails safe, and the test goes on
    w.Form_Load();
    w.show();
    MeterState& st = w.session().state();
    ASSERT_EQ(st.RunMode, kRunLive);
    ASSERT_TRUE(waitUntil([&] { return w.session().samples() > 10; }, 3000));

    w.recordPanel()->findChild<QAbstractButton*>("cmdRecord")->click();
    EXPECT_EQ(st.RunMode, kRunRecording);
    QTest::qWait(1500);
    w.recordPanel()->findChild<QAbstractButton*>("cmdStop")->click();
    EXPECT_EQ(st.RunMode, kRunLive);

    const std::string lvd = saveTo + "Run007.lvd";
    ASSERT_TRUE(std::filesystem::exists(lvd)) << "Auto Save wrote the numbered file";
    EXPECT_EQ(w.settings().SuffixNum, 8);
    const std::int32_t frames = w.recording().state().buffer.RecCount;
    EXPECT_NEAR(frames, 75, 15) << "1.5 s at 50 frames a second";
    EXPECT_EQ(std::filesystem::file_size(lvd), 20u * static_cast<std::uintmax_t>(frames));

    ASSERT_TRUE(w.recording().player().Load_File(lvd));
    EXPECT_EQ(w.recording().state().buffer.RecCount, frames);
    long before = w.framesDrawn();
    w.recordPanel()->findChild<QAbstractButton*>("cmdPlay")->click();
    EXPECT_EQ(st.RunMode, kRunPlayback);
    EXPECT_TRUE(waitUntil([&] { return st.RunMode != kRunPlayback; }, 5000)) << "plays to the end";
    EXPECT_GT(w.framesDrawn(), before + 20) << "the records moved the needle";
    EXPECT_EQ(st.RunMode, kRunLive);
    w.closeUnattended();
}

// A new user's settings: no save folder, "Auto Name". R, S and Save put the
// recording in the data folder's recordings/, not where the program was
// started; the program started with that file as its argument opens it.
TEST(WindowRecording, WithoutASaveFolderRecordingsGoToTheDataFolderAndOpenFromTheCommandLine) {
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
