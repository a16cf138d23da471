#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>

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
        QObject::connect(panel, signal, &context,
                         [this](Args... args) { calls.emplace_back(args...); });
    }
    QObject context;  // the connection ends with the spy
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

// Each button: the signal a click gives, and the switch that greys it out.
TEST_F(RecordPanelTest, ButtonsSignalsEnablingAndRightClicks) {
    const std::tuple<const char*, void (RecordPanel::*)(), bool E::*> buttons[] = {
        {"cmdRecord", &RecordPanel::recordClicked, &E::record},
        {"cmdStop", &RecordPanel::stopClicked, &E::stop},
        {"cmdPlay", &RecordPanel::playClicked, &E::play},
        {"cmdLoop", &RecordPanel::loopClicked, &E::loop},
        {"cmdFwd", &RecordPanel::fwdClicked, &E::fwd},
        {"cmdRev", &RecordPanel::revClicked, &E::rev},
        {"cmdSave", &RecordPanel::saveClicked, &E::save},
        {"cmdLoad", &RecordPanel::loadClicked, &E::load},
        {"cmdRecSettings", &RecordPanel::settingsClicked, &E::settings}};
    for (const auto& [name, signal, off] : buttons) {
        Spy<> spy(&panel, signal);
        click(button(name), Qt::LeftButton);
        EXPECT_EQ(spy.count(), 1) << name;
        E enabled;
        enabled.*off = false;
        panel.setEnabled(enabled);
        EXPECT_FALSE(panel.enabledControls().*off);
        for (const auto& [other, s, member] : buttons)
            EXPECT_EQ(button(other)->isEnabled(), member != off) << other << " with " << name;
        EXPECT_TRUE(bar->isEnabled());
        panel.setEnabled(E{});
    }
    // Right-clicks: Load offers the list, the file's name Save As, unless Load is off.
    Spy<> load(&panel, &RecordPanel::loadClicked);
    Spy<> list(&panel, &RecordPanel::loadListRequested);
    Spy<> saveAs(&panel, &RecordPanel::loadedFileSaveAsRequested);
    click(button("cmdLoad"), Qt::RightButton);
    click(label("lblLoadedFile"), Qt::RightButton);
    click(label("lblLoadedFile"), Qt::LeftButton);
    EXPECT_EQ(std::tuple(load.count(), list.count(), saveAs.count()), std::tuple(0, 1, 1));

    panel.setEnabled({.load = false});
    click(button("cmdLoad"), Qt::RightButton);
    EXPECT_EQ(list.count(), 1) << "a disabled Load offers no list either";
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

    panel.setEnabled({.positionBar = false});
    click(bar, Qt::LeftButton, QPoint(50, y));
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(pressed.count() + released.count(), 2) << "a disabled bar does not seek";
}

}  // namespace
}  // namespace lv
