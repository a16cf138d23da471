#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QTimer>

#include "calibration/qt_scale_dialog.h"
#include "calibration/upload.h"
#include "common/qt_pump.h"
#include "device/meter_start.h"
#include "device/qt_serial_port.h"
#include "support/scripted_prompter.h"
#include "support/virtual_meter.h"

namespace lv {
namespace {

// The dialog over the real port to the virtual meter, entered as the menu
// does it (meter found and streaming, then calibration), with "+" held on
// the first mark for 0.3 s so that there is something new to upload.
struct UploadE2e : ::testing::Test {
    std::unique_ptr<ScaleDialog> openDialog(QStringList extra) {
        meter = std::make_unique<test::VirtualMeter>(QStringList{"--table-out", "@table"} + extra);
        port.setPortName(meter->link.toStdString());
        protocol::VersionInfo version;
        if (!meter->ready || !probeMeter(port, pump, version) ||
            !startMeter(port, pump, version.code, false))
            return nullptr;
        enterCalibration(port, pump);
        auto d = std::make_unique<ScaleDialog>(port, pump, prompter, stored, 0, nullptr,
                                               [this] { ++saves; });
        auto* up = d->findChild<QPushButton*>("cmdUp");
        QTimer::singleShot(300, up, [up] { QTest::mouseRelease(up, Qt::LeftButton); });
        QTest::mousePress(up, Qt::LeftButton);
        test::waitUntil(
            [&] { return stored[0] != d->calibrator().values()[0] && !d->calibrator().stepping(); },
            2000);
        list = d->calibrator().values();
        const CorrectionTable t = buildCorrectionTable(workPoints(list, 0), 0);
        expected.assign(t.begin(), t.end());
        return d;
    }
    // What the meter holds from 0xE000 once its loader was left.
    std::vector<int> meterTable() {
        QFile f(meter->path("table"));
        test::waitUntil([&] { return f.exists(); }, 2000);
        std::vector<int> table;
        if (f.open(QIODevice::ReadOnly))
            for (const QByteArray& line : f.readAll().split('\n'))
                if (!line.isEmpty()) table.push_back(line.toInt());
        return table;
    }
    std::unique_ptr<test::VirtualMeter> meter;
    QtSerialPort port;
    QtPump pump;
    test::ScriptedPrompter prompter;
    std::array<std::int16_t, 12> stored{203,  560,  944,  1300, 1690, 2040,
                                        2425, 2780, 3170, 3520, 3905};
    std::vector<int> list, expected;
    int saves = 0;
};

// With "--ack-split": whole answers wait out 0.3 s a line, minutes in all.
TEST_F(UploadE2e, TheMeterHoldsTheCalibratedTable) {
    const auto d = openDialog({"--ack-split"});
    ASSERT_NE(d, nullptr);
    prompter.answers = {Answer::Ok, Answer::Ok};  // the second only if something went wrong
    QElapsedTimer t;
    t.start();
    d->findChild<QPushButton*>("cmdSave")->click();
    const double seconds = t.elapsed() / 1000.0;
    EXPECT_LT(seconds, 10.0);

    // A refused line (a bad checksum among them) would have asked Retry or Cancel.
    ASSERT_EQ(prompter.asked,
              (std::vector<test::ScriptedPrompter::Question>{
                  {"Firmware Upload", "Upload Complete", Buttons::Ok, Icon::Information}}));
    EXPECT_EQ(saves, 1);
    EXPECT_EQ(std::vector<int>(stored.begin(), stored.begin() + 11), list);
    EXPECT_EQ(meterTable(), expected);

    // Back from calibration the meter streams to the receive event again.
    leaveCalibration(port, pump);
    EXPECT_TRUE(test::waitUntil([&] { return port.bytesWaiting() >= 26; }, 2000));
}

TEST_F(UploadE2e, TerminateLeavesTheLoaderMidUpload) {
    const auto d = openDialog({});
    ASSERT_NE(d, nullptr);
    prompter.answers = {Answer::Cancel, Answer::Ok};
    auto* terminate = d->findChild<QPushButton*>("Command2");
    QTimer::singleShot(2000, terminate, [terminate] { terminate->click(); });
    d->findChild<QPushButton*>("cmdSave")->click();

    // The meter left its loader, so the next line went unanswered.
    ASSERT_EQ(prompter.asked.size(), 2u);
    const std::string refused = prompter.asked[0].text;
    ASSERT_EQ(refused.substr(0, 17), "Error sending :10");
    EXPECT_EQ(prompter.asked[1].text.substr(0, 22), "Upload was interrupted");
    const int record = (std::stoi(refused.substr(17, 4), nullptr, 16) - 0xE000) / 16;
    EXPECT_GE(record, 2);
    EXPECT_LE(record, 6);
    const std::vector<int> table = meterTable();
    ASSERT_EQ(table.size(), 4096u);
    // The end record's PASS may come too late for its own wait and be taken
    // for the next line's, so the record before the refused one may be lost.
    for (std::size_t k = 0; k < 4096; ++k)
        if (k < 8u * (record - 1) || k >= 8u * record) {
            ASSERT_EQ(table[k], k < 8u * record ? expected[k] : static_cast<int>(k)) << k;
        }
}

// The virtual meter itself: it answers as configured, falls quiet on Q and
// removes its link when SIGTERM ends it.
TEST(VirtualMeterE2e, AnswersStopsOnQAndRemovesItsLinkOnSigterm) {
    test::VirtualMeter meter({"--code=31", "--boot", "B7", "--firmware", "3.4"});
    QtSerialPort port;
    QtPump pump;
    port.setPortName(meter.link.toStdString());
    protocol::VersionInfo v;
    ASSERT_TRUE(meter.ready && probeMeter(port, pump, v));
    EXPECT_EQ(v.code + "," + v.boot + "," + v.firmware, "31,B7,3.4");
    ASSERT_TRUE(startMeter(port, pump, v.code, false));
    ASSERT_TRUE(test::waitUntil([&] { return port.bytesWaiting() >= 26; }, 2000));
    port.write("Q\r");
    QTest::qWait(100);
    port.discardInput();
    QTest::qWait(300);
    EXPECT_EQ(port.bytesWaiting(), 0) << "quiet after Q";
    meter.stop();
    EXPECT_EQ(meter.process.exitCode(), 0);
    EXPECT_FALSE(QFileInfo(meter.link).isSymLink());
}

}  // namespace
}  // namespace lv
