#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <functional>

#include "recording/qt_record_panel.h"

namespace lv {
namespace {

// The mouse as the window system delivers it: press, move, release at a
// point of the widget, with the buttons held down at the time.
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

// How often a signal came, and with what.
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
    FilePositionBar* bar() const { return panel.findChild<FilePositionBar*>("picFilePosition"); }

    RecordPanel panel;
};

TEST_F(RecordPanelTest, ControlsCarryTheirNamesAndCaptions) {
    EXPECT_EQ(panel.objectName(), "picRecord");
    const std::pair<const char*, const char*> buttons[] = {
        {"cmdRecord", "Record"}, {"cmdStop", "Stop"}, {"cmdPlay", "Play"},
        {"cmdLoop", "Single"},   {"cmdFwd", ""},      {"cmdRev", ""},
        {"cmdSave", "Save As"},  {"cmdLoad", "Load"}, {"cmdRecSettings", ""}};
    for (const auto& [name, caption] : buttons) {
        const QPushButton* b = button(name);
        ASSERT_NE(b, nullptr) << name;
        EXPECT_EQ(b->text(), caption) << name;
        EXPECT_FALSE(b->icon().isNull()) << name;
        EXPECT_FALSE(b->toolTip().isEmpty()) << name;
    }
    EXPECT_EQ(button("cmdRecSettings")->toolTip(), "Recording Settings");
    for (const char* name :
         {"lblRecMode", "lblNaming", "lblLoadedFile", "lblPlayTime", "lblTotalTime", "lblTag"})
        EXPECT_NE(label(name), nullptr) << name;
    ASSERT_NE(bar(), nullptr);
    EXPECT_EQ(bar(), panel.positionBar());
    EXPECT_EQ(label("lblLoadedFile")->text(), "No File Loaded");
    // Two legible rows, neither cramped nor taking the dial's room.
    EXPECT_GE(panel.height(), 60);
    EXPECT_LE(panel.height(), 90);
}

TEST_F(RecordPanelTest, SinkCallsShowUpOnTheirControls) {
    struct Case {
        std::function<void(RecordPanelSink&)> call;
        const char* control;
        QString text, tip;  // a null tip is not checked
    } const cases[] = {
        {[](RecordPanelSink& s) { s.setLoadedFile("Run007", "/rec/Run007"); }, "lblLoadedFile",
         "Run007", "/rec/Run007"},
        {[](RecordPanelSink& s) { s.setLoadedFile("Buffer", "Buffer"); }, "lblLoadedFile", "Buffer",
         "Buffer"},
        {[](RecordPanelSink& s) { s.setMode("Auto Save", "in /rec/"); }, "lblRecMode", "Auto Save",
         "in /rec/"},
        {[](RecordPanelSink& s) { s.setNaming("Prefix_nnn"); }, "lblNaming", "Prefix_nnn", {}},
        {[](RecordPanelSink& s) { s.setSaveCaption("Save"); }, "cmdSave", "Save", {}},
        {[](RecordPanelSink& s) { s.setSaveCaption("Save As"); }, "cmdSave", "Save As", {}},
        {[](RecordPanelSink& s) { s.setLoopCaption("Loop"); }, "cmdLoop", "Loop", {}},
        {[](RecordPanelSink& s) { s.setLoopCaption("Single"); }, "cmdLoop", "Single", {}},
        {[](RecordPanelSink& s) { s.setTotalTime("1:02:03"); }, "lblTotalTime", "1:02:03", {}},
        {[](RecordPanelSink& s) { s.setTag("3"); }, "lblTag", "3", {}},
        {[](RecordPanelSink& s) { s.setPlayTime("0:07", 0); }, "lblPlayTime", "0:07", {}},
    };
    for (const Case& c : cases) {
        c.call(panel);
        const QObject* control = panel.findChild<QObject*>(c.control);
        ASSERT_NE(control, nullptr) << c.control;
        EXPECT_EQ(control->property("text").toString(), c.text) << c.control;
        if (!c.tip.isNull()) {
            EXPECT_EQ(control->property("toolTip").toString(), c.tip) << c.control;
        }
    }
}

TEST_F(RecordPanelTest, PlayTimeColourAndTagVisibility) {
    for (const Colour colour : {rgb(255, 0, 0), rgb(0, 0, 0), rgb(10, 200, 30)}) {
        panel.setPlayTime("1:00", colour);
        const QColor shown = label("lblPlayTime")->palette().color(QPalette::WindowText);
        EXPECT_EQ(shown, QColor(redOf(colour), greenOf(colour), blueOf(colour)));
    }
    for (const bool visible : {true, false, true}) {
        panel.setTagVisible(visible);
        EXPECT_EQ(label("lblTag")->isVisible(), visible);
    }
}

TEST_F(RecordPanelTest, SetEnabledGreysOutExactlyTheControlsItNames) {
    using E = RecordPanelSink::Enabled;
    const std::pair<bool E::*, const char*> controls[] = {{&E::record, "cmdRecord"},
                                                          {&E::stop, "cmdStop"},
                                                          {&E::play, "cmdPlay"},
                                                          {&E::loop, "cmdLoop"},
                                                          {&E::fwd, "cmdFwd"},
                                                          {&E::rev, "cmdRev"},
                                                          {&E::save, "cmdSave"},
                                                          {&E::load, "cmdLoad"},
                                                          {&E::settings, "cmdRecSettings"},
                                                          {&E::positionBar, "picFilePosition"}};
    for (const auto& [off, offName] : controls) {
        E enabled;
        enabled.*off = false;
        panel.setEnabled(enabled);
        EXPECT_FALSE(panel.enabledControls().*off);
        for (const auto& [member, name] : controls)
            EXPECT_EQ(panel.findChild<QWidget*>(name)->isEnabled(), member != off)
                << name << " with " << offName << " off";
    }
    panel.setEnabled(false);  // the widget's own switch still works
    EXPECT_FALSE(button("cmdPlay")->isEnabled());
}

TEST_F(RecordPanelTest, ButtonsAndRightClicksEmitTheirSignals) {
    const std::pair<const char*, void (RecordPanel::*)()> clicks[] = {
        {"cmdRecord", &RecordPanel::recordClicked},
        {"cmdStop", &RecordPanel::stopClicked},
        {"cmdPlay", &RecordPanel::playClicked},
        {"cmdLoop", &RecordPanel::loopClicked},
        {"cmdFwd", &RecordPanel::fwdClicked},
        {"cmdRev", &RecordPanel::revClicked},
        {"cmdSave", &RecordPanel::saveClicked},
        {"cmdLoad", &RecordPanel::loadClicked},
        {"cmdRecSettings", &RecordPanel::settingsClicked}};
    for (const auto& [name, signal] : clicks) {
        Spy<> spy(&panel, signal);
        click(button(name), Qt::LeftButton);
        EXPECT_EQ(spy.count(), 1) << name;
    }

    Spy<> load(&panel, &RecordPanel::loadClicked);
    Spy<> list(&panel, &RecordPanel::loadListRequested);
    Spy<> saveAs(&panel, &RecordPanel::loadedFileSaveAsRequested);
    click(button("cmdLoad"), Qt::RightButton);
    click(label("lblLoadedFile"), Qt::RightButton);
    click(label("lblLoadedFile"), Qt::LeftButton);
    EXPECT_EQ(std::tuple(load.count(), list.count(), saveAs.count()), std::tuple(0, 1, 1));

    RecordPanelSink::Enabled noLoad;
    noLoad.load = false;
    panel.setEnabled(noLoad);
    click(button("cmdLoad"), Qt::RightButton);
    EXPECT_EQ(list.count(), 1) << "a disabled Load offers no list either";

    Spy<const QString&> word(&panel, &RecordPanel::panelWordChanged);
    panel.setPanelWord("PAUSE");
    panel.setPanelWord("");
    EXPECT_EQ(word.calls, (std::vector<std::tuple<QString>>{{"PAUSE"}, {""}}));
}

TEST_F(RecordPanelTest, PositionBarReportsClampedFractions) {
    FilePositionBar* b = bar();
    b->setFixedWidth(201);  // pixels 0..200: a fraction is x / 200
    Spy<double> pressed(&panel, &RecordPanel::positionPressed);
    Spy<double> moved(&panel, &RecordPanel::positionMoved);
    Spy<double> released(&panel, &RecordPanel::positionReleased);
    const int y = b->height() / 2;
    b->setMouseTracking(true);  // so that hovering reaches the bar, and must not seek
    mouse(b, QEvent::MouseMove, Qt::NoButton, QPoint(20, y), Qt::NoButton);
    mouse(b, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(50, y), Qt::LeftButton);
    for (const int x : {100, -30, 200, 450})
        mouse(b, QEvent::MouseMove, Qt::NoButton, QPoint(x, y), Qt::LeftButton);
    mouse(b, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(150, y), Qt::NoButton);
    click(b, Qt::RightButton, QPoint(10, y));  // only the left button seeks

    using F = std::vector<std::tuple<double>>;
    EXPECT_EQ(pressed.calls, F({{0.25}}));
    EXPECT_EQ(moved.calls, F({{0.5}, {0.0}, {1.0}, {1.0}}));
    EXPECT_EQ(released.calls, F({{0.75}}));

    RecordPanelSink::Enabled noBar;
    noBar.positionBar = false;
    panel.setEnabled(noBar);
    click(b, Qt::LeftButton, QPoint(50, y));
    EXPECT_EQ(pressed.count() + released.count(), 2) << "a disabled bar does not seek";
}

TEST_F(RecordPanelTest, PositionBarDrawsLoadStripAndClampsWhatItIsGiven) {
    FilePositionBar* b = bar();
    const std::tuple<int, double, double, int, double, double> cases[] = {
        {25, 0.5, 0.75, 25, 0.5, 0.75}, {60, -1.0, 2.0, 50, 0.0, 1.0}, {-3, 0.0, 1.0, 0, 0.0, 1.0}};
    for (const auto& [progress, play, end, wantProgress, wantPlay, wantEnd] : cases) {
        panel.setLoadProgress(progress);
        panel.setPosition(play, end);
        EXPECT_EQ(std::tuple(b->loadProgress(), b->playFraction(), b->endFraction()),
                  std::tuple(wantProgress, wantPlay, wantEnd));
    }

    // Half loaded: the strip along the top covers the left half only, and
    // leaves the lower part of the bar to the markers.
    b->setFixedSize(201, 20);
    panel.setLoadProgress(25);
    panel.setPosition(0.9, 1.0);
    const QImage image = b->grab().toImage();
    const double dpr = image.devicePixelRatio();
    const auto pixel = [&](int x, int y) { return image.pixelColor(QPoint(x, y) * dpr).rgb(); };
    const QRgb strip = b->palette().color(QPalette::Dark).rgb();
    EXPECT_EQ(pixel(40, 3), strip);
    EXPECT_NE(pixel(140, 3), strip);
    EXPECT_NE(pixel(40, 15), strip);
}

}  // namespace
}  // namespace lv
