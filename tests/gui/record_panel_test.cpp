#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <functional>

#include "recording/qt_record_panel.h"

namespace lv {
namespace {

using E = RecordPanelSink::Enabled;

void mouse(QWidget* w, QEvent::Type type, Qt::MouseButton button, QPoint at,
           Qt::MouseButtons held) {
    QMouseEvent event(type, QPointF(at), w->mapToGlobal(QPointF(at)), button, held, Qt::NoModifier);
    QApplication::sendEvent(w, &event);
}

void click(QWidget* w, Qt::MouseButton button, QPoint at = {-1, -1}) {
    if (at == QPoint(-1, -1)) at = w->rect().center();
    mouse(w, QEvent::MouseButtonPress, button, at, button);
    mouse(w, QEvent::MouseButtonRelease, button, at, Qt::NoButton);
}

template <typename... Args>
struct Spy {
    template <typename Signal>
    Spy(RecordPanel* panel, Signal signal) {
        QObject::connect(panel, signal, [this](Args... args) { calls.emplace_back(args...); });
    }
    std::vector<std::tuple<std::decay_t<Args>...>> calls;
    int count() const { return static_cast<int>(calls.size()); }
};

class RecordPanelTest : public ::testing::Test {
protected:
    RecordPanelTest() {
        panel.resize(760, panel.sizeHint().height());
        panel.show();
    }
    QPushButton* button(const char* name) const { return panel.findChild<QPushButton*>(name); }
    QLabel* label(const char* name) const { return panel.findChild<QLabel*>(name); }

    RecordPanel panel;
    FilePositionBar* bar = panel.findChild<FilePositionBar*>("picFilePosition");
};

// Each button: its caption, the signal a click gives, and the switch that greys it out.
TEST_F(RecordPanelTest, ButtonsCaptionsSignalsAndEnabling) {
    const std::tuple<const char*, const char*, void (RecordPanel::*)(), bool E::*> buttons[] = {
        {"cmdRecord", "Record", &RecordPanel::recordClicked, &E::record},
        {"cmdStop", "Stop", &RecordPanel::stopClicked, &E::stop},
        {"cmdPlay", "Play", &RecordPanel::playClicked, &E::play},
        {"cmdLoop", "Single", &RecordPanel::loopClicked, &E::loop},
        {"cmdFwd", "", &RecordPanel::fwdClicked, &E::fwd},
        {"cmdRev", "", &RecordPanel::revClicked, &E::rev},
        {"cmdSave", "Save As", &RecordPanel::saveClicked, &E::save},
        {"cmdLoad", "Load", &RecordPanel::loadClicked, &E::load},
        {"cmdRecSettings", "", &RecordPanel::settingsClicked, &E::settings}};
    EXPECT_EQ(label("lblLoadedFile")->text(), "No File Loaded");
    EXPECT_TRUE(panel.height() >= 60 && panel.height() <= 90) << panel.height();
    for (const auto& [name, caption, signal, off] : buttons) {
        ASSERT_NE(button(name), nullptr) << name;
        EXPECT_EQ(button(name)->text(), caption) << name;
        EXPECT_FALSE(button(name)->icon().isNull()) << name;
        Spy<> spy(&panel, signal);
        click(button(name), Qt::LeftButton);
        EXPECT_EQ(spy.count(), 1) << name;

        E enabled;
        enabled.*off = false;
        panel.setEnabled(enabled);
        EXPECT_FALSE(panel.enabledControls().*off);
        for (const auto& [other, c, s, member] : buttons)
            EXPECT_EQ(button(other)->isEnabled(), member != off) << other << " with " << name;
        EXPECT_TRUE(bar->isEnabled());
        panel.setEnabled(E{});
    }
}

TEST_F(RecordPanelTest, SinkCallsShowUpOnTheirControls) {
    panel.setLoadedFile("Run007", "/rec/Run007");
    panel.setMode("Auto Save", "in /rec/");
    panel.setNaming("Prefix_nnn");
    panel.setSaveCaption("Save");
    panel.setLoopCaption("Loop");
    panel.setTotalTime("1:02:03");
    panel.setTag("3");
    QStringList texts;
    for (const char* name : {"lblLoadedFile", "lblRecMode", "lblNaming", "cmdSave", "cmdLoop",
                             "lblTotalTime", "lblTag"})
        texts << panel.findChild<QObject*>(name)->property("text").toString();
    texts << label("lblLoadedFile")->toolTip() << label("lblRecMode")->toolTip();
    EXPECT_EQ(texts.join('|').toStdString(),
              "Run007|Auto Save|Prefix_nnn|Save|Loop|1:02:03|3|/rec/Run007|in /rec/");
    for (const Colour colour : {rgb(255, 0, 0), rgb(10, 200, 30)}) {
        panel.setPlayTime("0:07", colour);
        EXPECT_EQ(label("lblPlayTime")->text(), "0:07");
        EXPECT_EQ(label("lblPlayTime")->palette().color(QPalette::WindowText),
                  QColor(redOf(colour), greenOf(colour), blueOf(colour)));
    }
    for (const bool visible : {false, true}) {
        panel.setTagVisible(visible);
        EXPECT_EQ(label("lblTag")->isVisible(), visible);
    }
}

TEST_F(RecordPanelTest, RightClicksAndPanelWord) {
    Spy<> load(&panel, &RecordPanel::loadClicked);
    Spy<> list(&panel, &RecordPanel::loadListRequested);
    Spy<> saveAs(&panel, &RecordPanel::loadedFileSaveAsRequested);
    click(button("cmdLoad"), Qt::RightButton);
    click(label("lblLoadedFile"), Qt::RightButton);
    click(label("lblLoadedFile"), Qt::LeftButton);
    EXPECT_EQ(std::tuple(load.count(), list.count(), saveAs.count()), std::tuple(0, 1, 1));

    E noLoad;
    noLoad.load = false;
    panel.setEnabled(noLoad);
    click(button("cmdLoad"), Qt::RightButton);
    EXPECT_EQ(list.count(), 1) << "a disabled Load offers no list either";

    Spy<const QString&> word(&panel, &RecordPanel::panelWordChanged);
    panel.setPanelWord("PAUSE");
    panel.setPanelWord("");
    EXPECT_EQ(word.calls, (std::vector<std::tuple<QString>>{{"PAUSE"}, {""}}));
}

TEST_F(RecordPanelTest, PositionBarReportsAndDrawsClampedFractions) {
    bar->setFixedWidth(201);  // pixels 0..200: a fraction is x / 200
    Spy<double> pressed(&panel, &RecordPanel::positionPressed);
    Spy<double> moved(&panel, &RecordPanel::positionMoved);
    Spy<double> released(&panel, &RecordPanel::positionReleased);
    const int y = bar->height() / 2;
    bar->setMouseTracking(true);  // hovering must not seek
    mouse(bar, QEvent::MouseMove, Qt::NoButton, QPoint(20, y), Qt::NoButton);
    mouse(bar, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(50, y), Qt::LeftButton);
    for (const int x : {100, -30, 200, 450})
        mouse(bar, QEvent::MouseMove, Qt::NoButton, QPoint(x, y), Qt::LeftButton);
    mouse(bar, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(150, y), Qt::NoButton);
    click(bar, Qt::RightButton, QPoint(10, y));  // only the left button seeks

    using F = std::vector<std::tuple<double>>;
    EXPECT_EQ(pressed.calls, F({{0.25}}));
    EXPECT_EQ(moved.calls, F({{0.5}, {0.0}, {1.0}, {1.0}}));
    EXPECT_EQ(released.calls, F({{0.75}}));

    E noBar;
    noBar.positionBar = false;
    panel.setEnabled(noBar);
    click(bar, Qt::LeftButton, QPoint(50, y));
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(pressed.count() + released.count(), 2) << "a disabled bar does not seek";

    const std::tuple<int, double, double, int, double, double> cases[] = {
        {25, 0.5, 0.75, 25, 0.5, 0.75}, {60, -1.0, 2.0, 50, 0.0, 1.0}, {-3, 0.0, 1.0, 0, 0.0, 1.0}};
    for (const auto& [progress, play, end, wantProgress, wantPlay, wantEnd] : cases) {
        panel.setLoadProgress(progress);
        panel.setPosition(play, end);
        EXPECT_EQ(std::tuple(bar->loadProgress(), bar->playFraction(), bar->endFraction()),
                  std::tuple(wantProgress, wantPlay, wantEnd));
    }
    // Half loaded: the strip covers the top of the left half only.
    bar->setFixedSize(201, 20);
    panel.setLoadProgress(25);
    panel.setPosition(0.9, 1.0);
    const QImage image = bar->grab().toImage();
    const auto pixel = [&](int x, int y) {
        return image.pixelColor(QPoint(x, y) * image.devicePixelRatio()).rgb();
    };
    const QRgb strip = bar->palette().color(QPalette::Dark).rgb();
    EXPECT_EQ(pixel(40, 3), strip);
    EXPECT_NE(pixel(140, 3), strip);
    EXPECT_NE(pixel(40, 15), strip);
}

}  // namespace
}  // namespace lv
