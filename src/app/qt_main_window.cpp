#include "app/qt_main_window.h"

#include <QAction>
#include <QDateTime>
#include <QKeySequence>
#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>

#include "common/vb_format.h"
#include "display/needle_drawing.h"

namespace lv {

namespace {

// The meter sends 50 readings a second; the screen gains nothing from more.
constexpr int kRepaintMs = 20;
// The clock shows minutes: looking a little more often than once a minute is enough.
constexpr int kClockMs = 800;

ClockTime clockNow() {
    const QDateTime now = QDateTime::currentDateTime();
    ClockTime t;
    t.hour = now.time().hour();
    t.minute = now.time().minute();
    t.second = now.time().second();
    t.date = {now.date().year(), now.date().month(), now.date().day()};
    return t;
}

}  // namespace

MainWindow::MainWindow(std::FILE* out, QWidget* parent)
    : QMainWindow(parent),
      m_panel(new PanelWidget),
      m_chart(new PanelWidget),
      m_status(new QLabel),
      m_readouts(m_panel->surface(),
                 [this](const std::string& text, Colour colour) {
                     QPalette pal = m_status->palette();
                     pal.setColor(QPalette::WindowText, toQColor(colour));
                     m_status->setPalette(pal);
                     m_status->setText(QString::fromStdString(text));
                 }),
      m_session(m_readouts, out),
      m_ctx{m_panel->surface(), m_session.settings(), m_session.state(),
            m_readouts,         m_panelState,         [] { return ClockInputs{clockNow()}; }} {
    m_readouts.setSettings(m_session.settings());
    setWindowTitle("lv_Analog");

    QMenu* file = menuBar()->addMenu("&File");
    QAction* quit = file->addAction("&Quit", this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    // Stretch 5 against GraphHeight_Index: the chart is that many fifths of the dial's height.
    const int graphFifths =
        std::clamp<int>(vbCInt(m_session.settings().GraphHeight_Index).value_or(3), 1, 5);
    layout->addWidget(m_panel, 5);
    layout->addWidget(m_chart, graphFifths);
    m_chart->setVisible(m_graphVisible);
    setCentralWidget(central);
    statusBar()->addWidget(m_status, 1);
    m_panel->setAspect(-kPanelScale.width / kPanelScale.height);
    // A dial area of 800 by 500 pixels: the shape the artwork is drawn for.
    resize(800, 800 + menuBar()->sizeHint().height() + statusBar()->sizeHint().height());

    m_panel->setRebuild([this] { rebuildPanel(); });
    m_chart->setRebuild([this] { rebuildChart(); });

    connect(&m_session, &LiveSession::newSample, this, &MainWindow::showSample);
    m_repaint.setInterval(kRepaintMs);
    m_repaint.setTimerType(Qt::PreciseTimer);
    connect(&m_repaint, &QTimer::timeout, this, &MainWindow::flush);
    m_repaint.start();
    m_clock.setInterval(kClockMs);
    connect(&m_clock, &QTimer::timeout, this, &MainWindow::tickClock);
    m_clock.start();
}

bool MainWindow::connectMeter(const std::vector<std::string>& candidates) {
    const bool found = m_session.connectMeter(candidates);
    // The port search wrote its own texts; a fresh face shows the outcome whole.
    rebuildPanel();
    m_panel->update();
    return found;
}

void MainWindow::rebuildPanel() {
    m_panel->surface().setScale(kPanelScale);
    m_panel->surface().setEraseColour(m_session.settings().Dial_Color);
    // A new image holds no needle: Update_Needle draws the face first, then the needle.
    m_panelState.redraw = true;
    Update_Needle(m_ctx, m_session.needle());
    m_readouts.redrawLamp();
    m_lastMinute = clockNow().minute;
}

void MainWindow::rebuildChart() {
    Init_Graph(m_chartState);
    Update_Graph(m_chartState, m_chart->surface(), m_session.settings(), 0,
                 m_chart->surface().widthPixels());
}

void MainWindow::showSample(std::int32_t needle) {
    Update_Needle(m_ctx, needle);
    if (m_graphVisible)
        Update_Graph(m_chartState, m_chart->surface(), m_session.settings(),
                     m_session.state().RawNeedle, m_chart->surface().widthPixels());
    m_dirty = true;
}

void MainWindow::flush() {
    if (!m_dirty) return;
    m_dirty = false;
    m_panel->update();
    if (m_graphVisible) m_chart->update();
    ++m_frames;
}

void MainWindow::tickClock() {
    const ClockTime t = clockNow();
    if (t.minute == m_lastMinute || m_session.state().RunMode == kRunPlayback) return;
    m_lastMinute = t.minute;
    m_readouts.Update_Clock(t.hour, t.minute, t.second, t.date);
    m_panel->update();
}

}  // namespace lv
