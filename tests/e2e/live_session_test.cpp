#include <gtest/gtest.h>

#include <QFile>
#include <QSignalSpy>

#include "app/qt_live_session.h"
#include "device/link_status.h"
#include "device/receive_event.h"
#include "settings/session_config.h"
#include "support/live_window.h"
#include "support/recording_display.h"
#include "support/scripted_prompter.h"
#include "support/virtual_meter.h"

namespace lv {
namespace {

using test::waitUntil;

// The session on a meter that plays a script once: every frame decoded, in
// order; then the meter is lost, and a live one on the same path is taken
// back within two seconds and streams at 50 frames a second.
TEST(LiveSessionEndToEnd, DecodesEveryFrameAndTakesTheMeterBackWhenItsPortReturns) {
    test::VirtualMeter meter({"--once"}, {},
                             "# needle steps\nP10002A80064\nP20002A80064\nP30002A80064\n"
                             "P40002A80064\nP50002A80064\nP60002A803E8\n");
    ASSERT_TRUE(meter.ready);
    SettingsStore store;
    store.values = Settings{};
    test::RecordingDisplay display;
    test::ScriptedPrompter prompter;  // a question would fail the test
    const std::string link = meter.link.toStdString();
    LiveSession s(store, display, prompter, "1.0.0", [link] { return std::vector{link}; });
    std::vector<std::int32_t> raws;
    QObject::connect(&s, &LiveSession::newSample, [&] { raws.push_back(s.state().RawNeedle); });

    s.findMeterAtStart(SessionConfig{}, {});
    ASSERT_EQ(s.state().PortNumber, 1);
    ASSERT_EQ(s.state().RunMode, kRunLive);
    s.armLink();
    ASSERT_TRUE(waitUntil([&] { return s.state().RawNeedle == 0x6000; }, 3000))
        << "the last frame of the script arrives";
    for (std::size_t i = 1; i < raws.size(); ++i)
        EXPECT_GT(raws[i], raws[i - 1]) << "frames in order, none repeated";
    EXPECT_EQ(s.state().ShownBd, "100");
    EXPECT_EQ(s.state().ShownStatus, kStatusInputOk);
    EXPECT_EQ(s.port().threshold(), kReceiveThreshold);

    meter.stop();
    ASSERT_TRUE(waitUntil([&] { return s.state().ShownStatus == kStatusInputError; }, 3000));
    EXPECT_TRUE(s.reconnecting());
    EXPECT_FALSE(s.port().isOpen()) << "closed instead of spinning";

    QSignalSpy restored(&s, &LiveSession::linkRestored);
    test::VirtualMeter again({"--seed", "5"}, meter.link);
    ASSERT_TRUE(again.ready);
    QElapsedTimer sinceReturn;
    sinceReturn.start();
    ASSERT_TRUE(waitUntil([&] { return restored.count() > 0; }, 5000));
    EXPECT_LT(sinceReturn.elapsed(), 2000) << "back within two seconds of the port's return";
    EXPECT_FALSE(s.reconnecting());
    const long before = s.samples();
    EXPECT_TRUE(waitUntil([&] { return s.state().ShownStatus == kStatusInputOk; }, 3000));
    QElapsedTimer t;
    t.start();
    QTest::qWait(1500);
    const double seconds = static_cast<double>(t.elapsed()) / 1000;
    const long samples = s.samples() - before;
    EXPECT_GE(samples, static_cast<long>(seconds * 25)) << "the needle moves again";
    EXPECT_LE(samples, static_cast<long>(seconds * 50) + 12) << "no frame decoded twice";
    EXPECT_EQ(s.state().GoodFrames, 5);
}

// The program itself: it finds the meter given on the command line, and a
// SIGTERM closes it as Quit does, writing its files without asking.
TEST(ProgramEndToEnd, RunsLiveAndClosesInOrderOnSigterm) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    QTemporaryDir data;
    const QString shot = data.filePath("shot.png");
    QProcess app;
    test::startProgram(app,
                       {"--port", meter.link, "--data-dir", data.path(), "--screenshot", shot});
    ASSERT_TRUE(app.waitForStarted(5000));
    // The screenshot is taken once the needle has moved with live frames.
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(shot); }, 15000));
    app.terminate();
    ASSERT_TRUE(app.waitForFinished(10000));
    EXPECT_EQ(app.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(app.exitCode(), 0);

    SessionConfig cfg;
    ASSERT_TRUE(LoadSessionConfig(data.path().toStdString(), cfg));
    EXPECT_EQ(cfg.PortNumber, 1);
    EXPECT_GE(cfg.PortCandidateCount, 1) << "the system's own ports follow the one given";
    EXPECT_GT(cfg.WindowWidth, 0) << "the placement is kept";
}

// A silent device keeps the start-up's search probing; SIGTERM then ends the
// program at once rather than after the search.
TEST(ProgramEndToEnd, SigtermDuringThePortSearchEndsItWithinTwoSeconds) {
    test::VirtualMeter silent({"--mute"});
    ASSERT_TRUE(silent.ready);
    QTemporaryDir data;
    QProcess app;
    test::startProgram(app, {"--port", silent.link, "--data-dir", data.path()});
    ASSERT_TRUE(app.waitForStarted(5000));
    QTest::qWait(700);
    QElapsedTimer t;
    t.start();
    app.terminate();
    ASSERT_TRUE(app.waitForFinished(10000));
    EXPECT_LT(t.elapsed(), 2000);
    EXPECT_EQ(app.exitCode(), 0);
}

}  // namespace
}  // namespace lv
