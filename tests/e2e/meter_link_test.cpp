#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QSignalSpy>
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
#include "support/virtual_meter.h"

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

// Identified, started and decoded; then lost: the port closes instead of
// spinning, and nothing more is decoded.
TEST_F(MeterLinkTest, IdentifiesStartsDecodesAndClosesWhenTheMeterIsLost) {
    test::VirtualMeter meter({"--code", "3A", "--seed", "5"});
    ASSERT_TRUE(meter.ready);
    ASSERT_TRUE(connectTo(meter.link));
    EXPECT_EQ(version.code, "3A");
    EXPECT_EQ(version.hardware, "LV3A");
    EXPECT_FALSE(version.boot.empty());

    QElapsedTimer t;
    t.start();
    QTest::qWait(2500);
    const double seconds = t.elapsed() / 1000.0;
    EXPECT_GE(counter.samples, 100);
    EXPECT_LE(counter.samples, static_cast<int>(seconds * 50) + 2);
    EXPECT_EQ(st.ShownStatus, kStatusInputOk);
    EXPECT_EQ(st.GoodFrames, 5);
    EXPECT_GE(counter.needle, -kNeedleLimit);
    EXPECT_LE(counter.needle, kNeedleLimit);
    EXPECT_EQ(port.threshold(), kReceiveThreshold);

    QSignalSpy failed(&port, &QtSerialPort::portFailed);
    meter.process.kill();
    meter.process.waitForFinished(2000);
    EXPECT_TRUE(failed.wait(2000) || failed.count() > 0);
    EXPECT_FALSE(port.isOpen());
    const int before = counter.samples;
    QTest::qWait(200);
    EXPECT_EQ(counter.samples, before);
}

TEST_F(MeterLinkTest, ScriptedFramesArriveExactlyAndASilentDeviceIsNoMeter) {
    test::VirtualMeter meter({"--once"}, {},
                             "# needle steps\nP10002A80064\nP20002A80064\nP30002A80064\n"
                             "P40002A80064\nP50002A80064\nP60002A803E8\n");
    ASSERT_TRUE(meter.ready);
    ASSERT_TRUE(connectTo(meter.link));
    QTest::qWait(600);
    ASSERT_FALSE(counter.raws.empty());
    EXPECT_EQ(counter.raws.back(), 0x6000);
    for (std::size_t i = 1; i < counter.raws.size(); ++i)
        EXPECT_GT(counter.raws[i], counter.raws[i - 1]) << "frames in order, none repeated";
    EXPECT_EQ(st.SensPos, 0x2A / 2);
    EXPECT_TRUE(st.BdCounting);
    EXPECT_EQ(st.ShownBd, "100");
    EXPECT_EQ(st.ShownStatus, kStatusInputOk);

    port.close();
    test::VirtualMeter mute({"--mute"});
    ASSERT_TRUE(mute.ready);
    EXPECT_FALSE(connectTo(mute.link));
    EXPECT_FALSE(port.isOpen());
}

}  // namespace
}  // namespace lv
