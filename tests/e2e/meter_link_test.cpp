#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "common/qt_pump.h"
#include "device/link_status.h"
#include "device/meter_start.h"
#include "device/protocol.h"
#include "device/qt_serial_port.h"
#include "device/receive_event.h"
#include "signal/lamp_rules.h"
#include "signal/needle_model.h"
#include "support/recording_display.h"
#include "virtual_meter.h"

namespace lv {
namespace {

struct SampleCounter : SampleConsumer {
    SampleCounter(MeterState& s, const Settings& c, DisplaySink& d) : st(s), cfg(c), display(d) {}
    void onNewSample() override {
        needle = liveNeedleValue(st, cfg, display);
        st.NeedleReset = false;
        ++samples;
        raws.push_back(st.RawNeedle);
    }
    MeterState& st;
    const Settings& cfg;
    DisplaySink& display;
    int samples = 0;
    std::int32_t needle = 0;
    std::vector<std::int32_t> raws;
};

class MeterLinkTest : public ::testing::Test {
protected:
    // Identify, start and arm the link on the meter's port, as a port search does.
    bool connectTo(const QString& path) {
        port.setPortName(path.toStdString());
        if (!probeMeter(port, pump, version)) return false;
        if (!startMeter(port, pump, version.code, false)) return false;
        st.PortNumber = 1;
        st.RunMode = kRunLive;
        st.LagLimit = lagLimitForItem(cfg.DataLag_Index);
        port.discardInput();
        port.setReceiveHandler([this] { receiveEvent(ctx, port, counter); });
        port.setThreshold(kSearchThreshold);
        return true;
    }
    void runFor(int ms) { QTest::qWait(ms); }

    QtSerialPort port;
    QtPump pump;
    MeterState st;
    Settings cfg;
    test::RecordingDisplay display;
    NoRecorder recorder;
    LiveContext ctx{st, cfg, display, recorder};
    SampleCounter counter{st, cfg, display};
    protocol::VersionInfo version;
};

TEST_F(MeterLinkTest, IdentifiesStartsAndDecodesTheStream) {
    test::VirtualMeter meter({"--code", "3A", "--seed", "5"});
    ASSERT_TRUE(meter.ready);
    ASSERT_TRUE(connectTo(meter.link));
    EXPECT_EQ(version.code, "3A");
    EXPECT_EQ(version.hardware, "LV3A");
    EXPECT_FALSE(version.boot.empty());

    QElapsedTimer t;
    t.start();
    runFor(2500);
    const double seconds = t.elapsed() / 1000.0;
    std::printf("decoded %d samples in %.2f s\n", counter.samples, seconds);
    EXPECT_GE(counter.samples, 100);
    EXPECT_LE(counter.samples, static_cast<int>(seconds * 50) + 2);
    EXPECT_EQ(st.ShownStatus, kStatusInputOk);
    EXPECT_EQ(st.GoodFrames, 5);
    EXPECT_GE(counter.needle, -kNeedleLimit);
    EXPECT_LE(counter.needle, kNeedleLimit);
    EXPECT_EQ(port.threshold(), kReceiveThreshold);
}

TEST_F(MeterLinkTest, ScriptedFramesArriveExactly) {
    test::VirtualMeter probe;  // only for its temporary folder
    const QString script = probe.scriptPath("frames.txt");
    {
        QFile f(script);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(
            "# needle steps\nP10002A80064\nP20002A80064\nP30002A80064\nP40002A80064\n"
            "P50002A80064\nP60002A803E8\n");
    }
    test::VirtualMeter meter({"--script", script, "--once"});
    ASSERT_TRUE(meter.ready);
    ASSERT_TRUE(connectTo(meter.link));
    runFor(600);
    ASSERT_FALSE(counter.raws.empty());
    EXPECT_EQ(counter.raws.back(), 0x6000);
    for (std::size_t i = 1; i < counter.raws.size(); ++i)
        EXPECT_GT(counter.raws[i], counter.raws[i - 1]) << "frames in order, none repeated";
    EXPECT_EQ(st.SensPos, 0x2A / 2);
    EXPECT_TRUE(st.BdCounting);
    EXPECT_EQ(st.ShownBd, "100");
    EXPECT_EQ(st.ShownStatus, kStatusInputOk);
}

TEST_F(MeterLinkTest, ASilentDeviceIsNotAMeter) {
    test::VirtualMeter meter({"--mute"});
    ASSERT_TRUE(meter.ready);
    EXPECT_FALSE(connectTo(meter.link));
    EXPECT_FALSE(port.isOpen());
}

TEST_F(MeterLinkTest, ALostMeterClosesThePortInsteadOfSpinning) {
    test::VirtualMeter meter;
    ASSERT_TRUE(meter.ready);
    ASSERT_TRUE(connectTo(meter.link));
    runFor(300);
    QSignalSpy failed(&port, &QtSerialPort::portFailed);
    meter.process.kill();
    meter.process.waitForFinished(2000);
    EXPECT_TRUE(failed.wait(2000) || failed.count() > 0);
    EXPECT_FALSE(port.isOpen());
    // With the port closed nothing more arrives and nothing is decoded.
    const int before = counter.samples;
    runFor(200);
    EXPECT_EQ(counter.samples, before);
}

}  // namespace
}  // namespace lv
