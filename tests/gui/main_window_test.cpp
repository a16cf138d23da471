#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QRadioButton>
#include <QScreen>
#include <fstream>

#include "app/qt_main_window.h"
#include "display/needle_drawing.h"
#include "recording/lvd_file.h"
#include "recording/qt_rec_dialog.h"
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
    QAction* action(const char* name) {
        QAction* a = w.menus().action(name);
        EXPECT_NE(a, nullptr) << name;
        return a;
    }
    test::TempDir m_dir{"lv_window"};
    MainWindow w;
};

// Demo mode from start to Quit: what shows, what a new sample and a new
// readout change, the lamp, where recordings go, and the session written.
TEST_F(MainWindowTest, DemoModeFromStartToQuit) {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(w.height() <= area.height() && w.width() <= area.width()) << "fits the screen";
    EXPECT_EQ(w.windowTitle(), "lv_Analog");
    EXPECT_FALSE(w.windowIcon().pixmap(32).isNull()) << "the icon, drawn from its SVG";
    EXPECT_EQ(w.statusText(), "Demo Mode");
    QImage shot = w.grab().toImage();
    EXPECT_EQ(colourAt(shot, onPanel(0, 1180)), cfg().Panel_Color) << "above the fan";
    EXPECT_EQ(colourAt(shot, onPanel(0, 800)), cfg().Dial_Color) << "inside the fan";
    const QPoint old = needleMiddle(w.session().needle());
    EXPECT_EQ(colourAt(shot, old), cfg().MainNeedle_Color);
    ASSERT_TRUE(w.chart()->isVisible());
    EXPECT_NEAR(w.chart()->height(), w.panel()->height() * 3 / 5, 2) << "shrunk together";
    EXPECT_EQ(colourAt(shot, w.chart()->mapTo(&w, w.chart()->rect().center())),
              cfg().GraphSheet_Color);

    w.showSample(16384);
    shot = w.grab().toImage();
    EXPECT_EQ(colourAt(shot, onPanel(750, 0)), cfg().MainNeedle_Color) << "a quarter turn";
    // Across the old needle, fringe included: all dial colour again.
    for (int dx = -4; dx <= 4; ++dx)
        EXPECT_EQ(colourAt(shot, old + QPoint(dx, 0)), cfg().Dial_Color) << dx;

    auto inkInBaseBox = [&] {
        shot = w.grab().toImage();
        int ink = 0;
        const QPoint a = onPanel(kBaseBox.x, kBaseBox.y);
        const QPoint b = onPanel(kBaseBox.x + kBaseBox.width, kBaseBox.y + kBaseBox.height);
        for (int y = a.y() + 1; y < b.y() - 1; ++y)
            for (int x = a.x() + 1; x < b.x() - 1; ++x)
                ink += colourAt(shot, QPoint(x, y)) == cfg().Text_Color;
        return ink;
    };
    EXPECT_GT(inkInBaseBox(), 100) << "\"Base\" and \"2.0\"";
    PanelReadouts readouts(w.panel()->surface(), {});
    readouts.setSettings(cfg());
    readouts.Update_BaseDisplay("");
    const int captionOnly = inkInBaseBox();
    readouts.Update_BaseDisplay("12.25");
    EXPECT_GT(inkInBaseBox(), captionOnly + 100) << "the number adds ink";
    readouts.Update_BaseDisplay("");
    EXPECT_EQ(inkInBaseBox(), captionOnly) << "and its wipe takes it all away";

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

    // A new user's settings hold no save folder: recordings go to the data
    // folder's recordings/, made when first needed, and the panel and the
    // Recording Settings dialog name the same mode.
    EXPECT_EQ(cfg().SavePath, m_dir.path().string() + "/recordings/");
    EXPECT_FALSE(std::filesystem::exists(cfg().SavePath));
    EXPECT_EQ(w.recordPanel()->findChild<QLabel*>("lblRecMode")->text(), "Auto Name");
    {
        RecDialog dialog(w.store().values, w.prompter());
        QString checked;
        for (QRadioButton* b : dialog.findChildren<QRadioButton*>("optMode"))
            if (b->isChecked()) checked = b->text();
        EXPECT_EQ(checked, "Auto name and manually save");
    }
    // Open starts in the folder last used, or else in the recordings folder;
    // a LoadPath of another system or a folder gone since is no start.
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

    QAction* quit = action("mnuFileQuit");
    EXPECT_EQ(quit->shortcut(), QKeySequence("Ctrl+Q"));
    quit->trigger();
    EXPECT_FALSE(w.isVisible());
    SessionConfig written;
    EXPECT_TRUE(LoadSessionConfig(m_dir.path(), written)) << "the exit writes the session";
    EXPECT_EQ(written.WindowWidth, w.normalGeometry().width());
}

// A tall window keeps the dial's shape; showing or hiding the chart, a taller
// chart or the recording panel changes the window only as far as the screen
// allows, and the dial gives up the rest.
TEST_F(MainWindowTest, ResizesKeepTheDialsShapeAndTheWindowOnTheScreen) {
    w.session().state().NeedleReset = false;
    w.resize(500, 900);
    QApplication::processEvents();
    EXPECT_TRUE(w.session().state().NeedleReset) << "the redrawn dial re-takes the reference";
    const QImage picture = w.panel()->surface().image();
    EXPECT_NEAR(double(picture.width()) / picture.height(), 1.6, 0.01);
    EXPECT_GT(w.panel()->imageOrigin().y(), 10) << "centred, margins above and below";
    const QImage shot = w.grab().toImage();
    EXPECT_EQ(colourAt(shot, w.panel()->mapTo(&w, QPoint(250, 2))), cfg().Background_Color)
        << "the margin is the window's background";
    EXPECT_EQ(colourAt(shot, needleMiddle(w.session().needle())), cfg().MainNeedle_Color);

    // Small enough that growing back fits on the offscreen screen.
    w.resize(480, w.height() - w.centralWidget()->height() + 480);
    QApplication::processEvents();
    const int dialHeight = w.panel()->height(), windowHeight = w.height();
    const int chartHeight = w.chart()->height();
    QAction* graph = action("mnuGraphVisible");
    graph->trigger();
    QApplication::processEvents();
    EXPECT_FALSE(cfg().GraphVisible || w.chart()->isVisible());
    EXPECT_NEAR(w.panel()->height(), dialHeight, 2) << "hiding the chart keeps the dial";
    EXPECT_NEAR(w.height(), windowHeight - chartHeight, 2) << "and shrinks the window";
    graph->trigger();
    QApplication::processEvents();
    EXPECT_TRUE(w.chart()->isVisible());
    EXPECT_NEAR(w.chart()->height(), chartHeight, 2);

    const QRect area = w.screen()->availableGeometry();
    const std::tuple<const char*, bool, int> cases[] = {
        // GraphHeight_Index, recording panel shown, top of the window in the free area
        {"3", true, 0},
        {"5", true, 0},
        {"5", false, 0},
        {"2", true, 200}};
    for (const auto& [fifths, record, top] : cases) {
        Settings& s = w.store().values;
        s.GraphVisible = false;
        s.RecordVisible = false;
        w.relayout();
        w.move(area.left(), area.top() + top);
        w.resize(area.width() / 2, area.height() - top - 40);
        QApplication::processEvents();
        const int dialBefore = w.panel()->height();
        s.GraphVisible = true;
        s.GraphHeight_Index = fifths;
        s.RecordVisible = record;
        w.relayout();
        QApplication::processEvents();
        EXPECT_TRUE(area.contains(w.frameGeometry())) << fifths << " " << top;
        EXPECT_LT(w.panel()->height(), dialBefore) << "the dial gave up height";
        EXPECT_NEAR(w.chart()->height(), w.panel()->height() * std::stoi(fifths) / 5, 2);
    }
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

// The needle test without a meter: the sine drives the needle from the
// placeholder's clock, and leaving puts the window back as it was; a run mode
// that refuses it shows the item disabled. Turning audio off without the
// placeholder says so at once.
TEST_F(MainWindowTest, NeedleTestAndRefusalsShowWhenTheOperatorActs) {
    QAction* test = action("mnuConnectNeedleTest");
    test->trigger();
    ASSERT_TRUE(test->isChecked());
    EXPECT_EQ(w.session().state().RunMode, kRunPlayback);
    EXPECT_EQ(w.statusText(), "Test Mode");
    const long before = w.framesDrawn();
    EXPECT_TRUE(test::waitUntil([&] { return w.framesDrawn() > before + 5; }, 3000))
        << "the needle moves";
    test->trigger();
    EXPECT_FALSE(test->isChecked());
    EXPECT_EQ(w.session().state().RunMode, kRunNoMeter);
    EXPECT_EQ(w.statusText(), "Demo Mode");

    auto* connection = w.menuBar()->findChild<QMenu*>("mnuConnection");
    ASSERT_TRUE(connection);
    MeterState& st = w.session().state();
    const std::tuple<std::int32_t, bool, bool> modes[] = {{kRunNoMeter, false, true},
                                                          {kRunRecording, false, false},
                                                          {kRunPlayback, false, false},
                                                          {kRunPlayback, true, true}};
    for (const auto& [mode, testRuns, enabled] : modes) {
        st.RunMode = mode;
        st.TestModeOn = testRuns;
        emit connection->aboutToShow();
        EXPECT_EQ(test->isEnabled(), enabled) << mode << testRuns;
    }
    st.RunMode = kRunNoMeter;
    st.TestModeOn = false;

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
