#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QMessageBox>
#include <fstream>

#include "app/qt_main_window.h"
#include "display/needle_drawing.h"
#include "recording/lvd_file.h"
#include "recording/start_stamp.h"
#include "support/modal_answerer.h"
#include "support/pixel_colour.h"
#include "support/qt_wait.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

using test::colourAt;

// The window without a meter (no ports to try, the search's question answered
// with Cancel), the chart shown, checked through what grab() shows, as a user
// would see it.
class MainWindowTest : public ::testing::Test {
protected:
    static StartOptions options(const test::TempDir& dir) {
        std::ofstream(dir.file("lv_Analog.ini")) << "[Format]\nGraphVisible=True\n";
        return {dir.path(), "1.0.0", [] { return std::vector<std::string>{}; },
                QCoreApplication::applicationDirPath().toStdString()};
    }
    MainWindowTest() : w(options(m_dir)) {
        w.prompter().setUnattended(true);
        w.Form_Load();
        w.show();
        QApplication::processEvents();
    }
    const Settings& cfg() { return w.settings(); }
    // The window's pixel at a point in panel units.
    QPoint onPanel(float x, float y) {
        const QPoint inPicture = w.panel()->surface().toPixels(x, y).toPoint();
        return w.panel()->mapTo(&w, w.panel()->imageOrigin() + inPicture);
    }
    QPoint needleMiddle(std::int32_t value) {
        const NeedleLine n = needleLine(value);
        return onPanel((n.innerX + n.outerX) / 2, (n.innerY + n.outerY) / 2);
    }
    QAction* action(const char* name) { return w.menus().action(name); }
    test::TempDir m_dir{"lv_window"};
    MainWindow w;
};

// Demo mode from start to Quit: what shows, what a new sample changes, the lamp, a tall window,
// where recordings go, and the session written.
TEST_F(MainWindowTest, DemoModeFromStartToQuit) {
    EXPECT_EQ(w.statusText(), "Demo Mode");
    QImage shot = w.grab().toImage();
    EXPECT_EQ(colourAt(shot, onPanel(0, 1180)), cfg().Panel_Color) << "above the fan";
    EXPECT_EQ(colourAt(shot, onPanel(0, 800)), cfg().Dial_Color) << "inside the fan";
    const QPoint old = needleMiddle(w.session().needle());
    EXPECT_EQ(colourAt(shot, old), cfg().MainNeedle_Color);
    ASSERT_TRUE(w.chart()->isVisible());
    EXPECT_EQ(colourAt(shot, w.chart()->mapTo(&w, w.chart()->rect().center())),
              cfg().GraphSheet_Color);

    w.showSample(16384);
    shot = w.grab().toImage();
    EXPECT_EQ(colourAt(shot, onPanel(750, 0)), cfg().MainNeedle_Color) << "a quarter turn";
    // Across the old needle, fringe included: all dial colour again.
    for (int dx = -4; dx <= 4; ++dx)
        EXPECT_EQ(colourAt(shot, old + QPoint(dx, 0)), cfg().Dial_Color) << dx;

    // The lamp starts off, in the dial's colour, and stays off when the dial
    // changes colour: a meter that never lights it records it as off.
    MeterState& st = w.session().state();
    EXPECT_EQ(st.LedColour, cfg().Dial_Color);
    w.store().values.Dial_Color = rgb(10, 20, 30);
    w.relayout();
    EXPECT_EQ(st.LedColour, rgb(10, 20, 30));
    st.LedColour = cfg().LED_Set_Color;
    w.store().values.Dial_Color = rgb(40, 50, 60);
    w.relayout();
    EXPECT_EQ(st.LedColour, cfg().LED_Set_Color) << "a lit lamp stays lit";

    // Open starts in the folder last used, or else in the recordings folder,
    // made when first needed; a LoadPath of another system or a folder gone
    // since is no start.
    EXPECT_FALSE(std::filesystem::exists(cfg().SavePath));
    const std::string data = m_dir.path().string() + "/";
    const std::pair<std::string, std::string> starts[] = {
        {"C:\\Program Files\\lumivane\\samples\\", cfg().SavePath},
        {data + "gone/", cfg().SavePath},
        {data, data}};
    for (const auto& [loadPath, start] : starts) {
        w.store().values.LoadPath = loadPath;
        EXPECT_EQ(QDir(w.recording().loadStartFolder()), QDir(QString::fromStdString(start)))
            << loadPath;
    }
    EXPECT_TRUE(std::filesystem::is_directory(cfg().SavePath)) << "made when first needed";

    // A tall window keeps the dial's shape, centred, and redraws it whole.
    st.NeedleReset = false;
    w.resize(500, 900);
    QApplication::processEvents();
    EXPECT_TRUE(st.NeedleReset) << "the redrawn dial re-takes the reference";
    const QImage picture = w.panel()->surface().image();
    EXPECT_NEAR(double(picture.width()) / picture.height(), 1.6, 0.01);
    EXPECT_GT(w.panel()->imageOrigin().y(), 10) << "centred, margins above and below";
    shot = w.grab().toImage();
    EXPECT_EQ(colourAt(shot, w.panel()->mapTo(&w, QPoint(250, 2))), cfg().Background_Color);
    EXPECT_EQ(colourAt(shot, needleMiddle(w.session().needle())), cfg().MainNeedle_Color);

    action("mnuFileQuit")->trigger();
    EXPECT_FALSE(w.isVisible());
    SessionConfig written;
    EXPECT_TRUE(LoadSessionConfig(m_dir.path(), written)) << "the exit writes the session";
    EXPECT_EQ(written.WindowWidth, w.normalGeometry().width());
}

TEST_F(MainWindowTest, RedrawDuringPlaybackShowsTheRecordingsTime) {
    std::vector<lvdRecord> records(250);
    for (std::size_t i = 0; i < records.size(); ++i) {
        records[i].TimeMs = std::int32_t(i) * 20;
        records[i].FrameType = 'P';
        records[i].StatusFlags = packStatusFlags(0, false, false, cfg().DialType);
    }
    const std::string lvd = m_dir.file("play.lvd");
    ASSERT_TRUE(
        saveLvdRecords(lvd, records, startStampFor(cfg(), 10 * 3600 + 20 * 60 + 59, 9000)).saved);
    w.store().values.AudioEnable = false;
    ASSERT_TRUE(w.recording().player().Load_File(lvd));
    w.recording().player().cmdPlay_Click();
    ASSERT_EQ(w.session().state().RunMode, kRunPlayback);
    ASSERT_TRUE(test::waitUntil(
        [&] { return w.clockInputs().playPosition >= w.clockInputs().unitsPerSecond; }, 4000));
    w.resize(w.width() - 40, w.height() - 40);
    QApplication::processEvents();
    // 10:20:59 plus a second played: 10:21.
    const auto shown = panelClock(kRunPlayback, w.clockInputs());
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(std::pair(shown->hour, shown->minute), std::pair(10, 21));
}

// Turning audio off without the placeholder says so at once.
TEST(MainWindowBare, AudioOffWithoutThePlaceholderSaysSoAtOnce) {
    test::TempDir noDummy{"lv_no_dummy"};
    std::ofstream(noDummy.file("lv_Analog.ini")) << "[Recording]\nAudioEnable=True\n";
    MainWindow bare(
        {noDummy.path(), "1.0.0", [] { return std::vector<std::string>{}; }, noDummy.path()});
    bare.prompter().setUnattended(true);
    bare.Form_Load();
    bare.prompter().setUnattended(false);
    QString told;
    const test::ModalAnswerer answer([&](QWidget* box) {
        if (box->objectName() == "frmRec") {
            box->findChild<QAbstractButton*>("chkAudio")->click();
            box->findChild<QAbstractButton*>("cmdOK")->click();
        } else if (auto* message = qobject_cast<QMessageBox*>(box)) {
            told = message->text();
            message->close();
        }
    });
    bare.recordPanel()->findChild<QAbstractButton*>("cmdRecSettings")->click();
    EXPECT_FALSE(bare.settings().AudioEnable);
    EXPECT_TRUE(
        told.startsWith("The Dummy.mp3 file could not be loaded for the following reason(s):\n"))
        << told.toStdString();
    bare.closeUnattended();
}

}  // namespace
}  // namespace lv
