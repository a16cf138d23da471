#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QElapsedTimer>
#include <QRegularExpression>
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
    // Each step said with the records the window holds by then.
    const auto say = [&](const char* word) {
        std::printf("%s %d\n", word, w->recording().state().buffer.RecCount);
        std::fflush(stdout);
    };
    record(500, true);
    if (run == "2") {
        say("DONE");
        return w->closeUnattended();
    }
    say("SAVED");
    record(1500, false);
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
    // The record count the child said with `word`, or -1.
    const auto says = [&](QProcess& p, const QString& word, int ms) {
        const QRegularExpression said(word + " (\\d+)\n");
        QRegularExpressionMatch m;
        waitUntil(
            [&] {
                return (m = said.match(QString::fromLatin1(out += p.readAllStandardOutput())))
                    .hasMatch();
            },
            ms);
        return m.hasMatch() ? m.captured(1).toInt() : -1;
    };

    QProcess first;
    startRun(first, "1");
    const int saved = says(first, "SAVED", 15000);
    ASSERT_GT(saved, 0) << out.constData();
    const std::string t001 = test::readFile(save / "T001.lvd");
    EXPECT_EQ(t001.size(), 20u * saved) << "every record saved";
    EXPECT_NE(test::readFile(folder / "lv_Analog.ini").find("SuffixNum=2"), std::string::npos)
        << "the number moved on in the file at once";
    const int recorded = says(first, "RECORDING", 5000);
    EXPECT_GT(recorded, 50) << "more than the second that may be lost";
    ::kill(static_cast<pid_t>(first.processId()), SIGKILL);
    ASSERT_TRUE(first.waitForFinished(5000));
    const auto journal = RecoveryJournal::find(folder);
    ASSERT_TRUE(journal);
    EXPECT_GE(journal->recordCount, recorded - 50) << "at most the last second lost";

    QProcess second;
    startRun(second, "2");
    const int done = says(second, "DONE", 15000);
    ASSERT_GT(done, 0) << out.constData();
    second.waitForFinished(5000);

    EXPECT_EQ(test::readFile(save / "T001.lvd"), t001) << "the saved recording is untouched";
    RecBuffer buffer;
    ASSERT_TRUE(loadLvdFile(save / "T002.lvd", std::nullopt, buffer).ok())
        << "the new one has a name of its own";
    EXPECT_EQ(buffer.RecCount, done) << "every record saved";
    EXPECT_FALSE(RecoveryJournal::find(folder));

    // The interrupted session: an ordinary recording in recovered/.
    std::vector<fs::path> kept;
    for (const auto& e : fs::directory_iterator(folder / RecoveryJournal::kRecoveredFolder))
        kept.push_back(e.path());
    ASSERT_EQ(kept.size(), 1u);
    ASSERT_TRUE(loadLvdFile(kept[0], std::nullopt, buffer).ok());
    EXPECT_EQ(buffer.RecCount, journal->recordCount);
}

// What is not a recording file ends in a message at once (as --play gives it).
TEST(WindowRecovery, APipeADeviceAndAFolderEndInAMessageWithinASecond) {
    QTemporaryDir data;
    const QString fifo = data.filePath("fifo.lvd");
    ASSERT_EQ(::mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    auto w = test::openWindow(data.path().toStdString(), "", "");
    for (const QString& path : {fifo, QString("/dev/zero"), data.path()}) {
        SCOPED_TRACE(path.toStdString());
        QElapsedTimer t;
        t.start();
        w->recording().playFile(path);
        EXPECT_LT(t.elapsed(), 1000);
        EXPECT_EQ(w->recording().state().buffer.RecCount, 0);
        EXPECT_NE(w->session().state().RunMode, kRunPlayback);
    }
    w->closeUnattended();
}

}  // namespace
}  // namespace lv
