#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QElapsedTimer>
#include <csignal>

#include "recording/lvd_file.h"
#include "recording/recovery_journal.h"
#include "support/live_window.h"
#include "support/virtual_meter.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using test::waitUntil;

// The window in a process of its own, so that it can be killed: this test
// program run again with LV_E2E_RUN set. Run 1 records and saves T001, then
// records again and is killed mid-recording; run 2 starts where that left
// off, says No to the recovery (nobody answers), records and saves.
TEST(WindowRecoveryChild, DISABLED_RecordsAsTheRunSays) {
    const QByteArray run = qgetenv("LV_E2E_RUN");
    if (run.isEmpty()) GTEST_SKIP() << "only as the child of WindowRecovery";
    auto w = test::openWindow(qgetenv("LV_E2E_DATA").toStdString(), "",
                              qgetenv("LV_E2E_METER").toStdString());
    ASSERT_TRUE(test::streams(*w));
    // Record returns with the lead-in second recorded.
    const auto record = [&](int ms, bool stop) {
        test::click(*w, "cmdRecord");
        QTest::qWait(ms);
        if (stop) test::click(*w, "cmdStop");
    };
    const auto say = [](const char* line) {
        std::printf("%s\n", line);
        std::fflush(stdout);
    };
    record(500, true);
    if (run == "2") {
        w->closeUnattended();
        return say("DONE");
    }
    say("SAVED");
    record(1500, false);
    say(("RECORDED " + std::to_string(w->recording().state().buffer.RecCount)).c_str());
    say("RECORDING");
    QTest::qWait(30000);  // killed long before
}

TEST(WindowRecovery, KilledMidRecordingThenNoAndANewRecordingLosesNothing) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    QTemporaryDir data;
    const fs::path folder = data.path().toStdString(), save = folder / "rec";
    fs::create_directory(save);
    std::ofstream(folder / "lv_Analog.ini")
        << "[Recording]\nAudioEnable=False\nRecordingMode=3\nSuffixType=0\nSuffixNum=1\n"
        << "SavePrefix=T\nSavePath=" << save.string() << "/\n";
    QByteArray out;
    const auto startRun = [&](QProcess& p, const char* run) {
        qputenv("LV_E2E_RUN", run);
        qputenv("LV_E2E_DATA", data.path().toLocal8Bit());
        qputenv("LV_E2E_METER", meter.link.toLocal8Bit());
        test::startProgram(
            p, {"--gtest_filter=WindowRecoveryChild.*", "--gtest_also_run_disabled_tests"},
            QCoreApplication::applicationFilePath());
        out.clear();
    };
    const auto says = [&](QProcess& p, const char* line, int ms) {
        return waitUntil([&] { return (out += p.readAllStandardOutput()).contains(line); }, ms);
    };

    QProcess first;
    startRun(first, "1");
    ASSERT_TRUE(says(first, "SAVED", 15000)) << out.constData();
    const std::string t001 = test::readFile(save / "T001.lvd");
    ASSERT_GE(t001.size(), 50u * 20);
    EXPECT_NE(test::readFile(folder / "lv_Analog.ini").find("SuffixNum=2"), std::string::npos)
        << "the number moved on in the file at once";
    ASSERT_TRUE(says(first, "RECORDING", 5000));
    const int recorded = out.mid(out.indexOf("RECORDED ") + 9).split('\n')[0].toInt();
    ::kill(static_cast<pid_t>(first.processId()), SIGKILL);
    ASSERT_TRUE(first.waitForFinished(5000));
    const auto journal = RecoveryJournal::find(folder);
    ASSERT_TRUE(journal);
    EXPECT_GT(recorded, 100);
    EXPECT_GE(journal->recordCount, recorded - 50) << "at most the last second lost";

    QProcess second;
    startRun(second, "2");
    ASSERT_TRUE(says(second, "DONE", 15000)) << out.constData();
    second.waitForFinished(5000);

    EXPECT_EQ(test::readFile(save / "T001.lvd"), t001) << "the saved recording is untouched";
    RecBuffer buffer;
    ASSERT_TRUE(loadLvdFile(save / "T002.lvd", std::nullopt, buffer).ok())
        << "the new one has a name of its own";
    EXPECT_NEAR(buffer.RecCount, 75, 20) << "the lead-in second and 0.5 s after it";
    EXPECT_FALSE(RecoveryJournal::find(folder));

    // The interrupted session: an ordinary recording in recovered/.
    std::vector<fs::path> kept;
    for (const auto& e : fs::directory_iterator(folder / RecoveryJournal::kRecoveredFolder))
        kept.push_back(e.path());
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].extension(), ".lvd");
    ASSERT_TRUE(loadLvdFile(kept[0], std::nullopt, buffer).ok());
    EXPECT_EQ(buffer.RecCount, journal->recordCount);
    QProcess tool;
    tool.start(LVDTOOL_PATH, {"info", QString::fromStdString(kept[0].string())});
    ASSERT_TRUE(tool.waitForFinished(5000));
    EXPECT_EQ(tool.exitCode(), 0);
    EXPECT_TRUE(tool.readAllStandardOutput().contains("verdict: valid"));
}

// What is not a recording file ends in a message at once, in the window
// (as --play gives it) and in lvdtool.
TEST(WindowRecovery, APipeADeviceAndAFolderEndInAMessageWithinASecond) {
    QTemporaryDir data;
    const QString fifo = data.filePath("fifo.lvd");
    ASSERT_EQ(::mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    auto w = test::openWindow(data.path().toStdString(), "", "");
    const std::pair<QString, const char*> cases[] = {{fifo, "This is not an ordinary file."},
                                                     {"/dev/zero", "This is not an ordinary file."},
                                                     {data.path(), "This is a folder"}};
    for (const auto& [path, message] : cases) {
        SCOPED_TRACE(path.toStdString());
        QElapsedTimer t;
        t.start();
        w->recording().playFile(path);
        EXPECT_LT(t.elapsed(), 1000);
        EXPECT_EQ(w->recording().state().buffer.RecCount, 0);
        EXPECT_NE(w->session().state().RunMode, kRunPlayback);

        QProcess tool;
        tool.start(LVDTOOL_PATH, {"info", path});
        ASSERT_TRUE(tool.waitForFinished(1000));
        EXPECT_NE(tool.exitCode(), 0);
        EXPECT_TRUE(tool.readAllStandardError().contains(message));
    }
    w->closeUnattended();
}

}  // namespace
}  // namespace lv
