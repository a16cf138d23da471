#include "app/qt_main_window.h"

#include <QCloseEvent>
#include <QColorDialog>
#include <QDateTime>
#include <QGuiApplication>
#include <QIcon>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdio>
#include <utility>

#include "about/qt_about_dialog.h"
#include "about/qt_help.h"
#include "app/data_folder.h"
#include "app/exit_sequence.h"
#include "app/program_files.h"
#include "app/qt_splash.h"
#include "calibration/upload.h"
#include "common/vb_format.h"
#include "display/needle_drawing.h"

// Outside the namespace, as the macro wants.
static void loadIconResource() {
    Q_INIT_RESOURCE(lv_icon);
}

namespace lv {

namespace {

// tmrClock: the clock shows minutes, and two silent ticks flag the link.
constexpr int kClockMs = 800;
// The dial's own shape and the size it is drawn for when nothing was saved.
constexpr int kDialWidth = 800;
constexpr int kDialHeight = 500;
// Width over height of the panel's coordinates (y runs upwards).
constexpr double kDialAspect = -kPanelScale.width / kPanelScale.height;

ClockTime clockNow() {
    const QDateTime now = QDateTime::currentDateTime();
    ClockTime t;
    t.hour = now.time().hour();
    t.minute = now.time().minute();
    t.second = now.time().second();
    t.date = {now.date().year(), now.date().month(), now.date().day()};
    return t;
}

// GraphHeight_Index is kept as text; the chart is 1 to 5 fifths of the dial.
int chartFifths(const Settings& cfg) {
    return std::clamp<int>(vbCInt(cfg.GraphHeight_Index).value_or(3), 1, 5);
}

// A size the program chooses by itself stays on the screen: the window is cut
// to the screen's free area (the layout then takes the height from the dial,
// the chart keeping its share of it) and moved back onto it when it would
// hang over an edge.
void resizeWithinScreen(QWidget& window, int width, int height) {
    const QScreen* screen = window.screen();
    if (!screen) {
        window.resize(width, height);
        return;
    }
    const QRect area = screen->availableGeometry();
    // The title bar and borders of the window manager come on top.
    const int frameW = window.frameGeometry().width() - window.geometry().width();
    const int frameH = window.frameGeometry().height() - window.geometry().height();
    width = std::max(std::min(width, area.width() - frameW), window.minimumWidth());
    height = std::max(std::min(height, area.height() - frameH), window.minimumHeight());
    window.resize(width, height);
    QRect outer = window.frameGeometry();
    outer.setSize(QSize(width + frameW, height + frameH));
    if (area.contains(outer)) return;
    outer.moveBottom(std::min(outer.bottom(), area.bottom()));
    outer.moveRight(std::min(outer.right(), area.right()));
    outer.moveTop(std::max(outer.top(), area.top()));
    outer.moveLeft(std::max(outer.left(), area.left()));
    window.move(outer.topLeft());
}

}  // namespace

MainWindow::MainWindow(StartOptions options, QWidget* parent)
    : QMainWindow(parent),
      m_options(std::move(options)),
      m_prompter(this),
      m_panel(new PanelWidget),
      m_chart(new PanelWidget),
      m_recordPanel(new RecordPanel),
      m_status(new QLabel),
      m_readouts(m_panel->surface(),
                 [this](const std::string& text, Colour colour) {
                     QPalette pal = m_status->palette();
                     pal.setColor(QPalette::WindowText, toQColor(colour));
                     m_status->setPalette(pal);
                     m_status->setText(QString::fromStdString(text));
                 }),
      m_session(m_store, m_readouts, m_prompter, m_options.versionText, m_options.candidates),
      m_watchdog(m_session.state(), m_session.port(), m_readouts,
                 [this] {
                     if (m_recording) m_recording->pressStop();
                 }),
      m_ctx{m_panel->surface(), m_store.values, m_session.state(),
            m_readouts,         m_panelState,   [this] { return clockInputs(); }} {
    setObjectName("frmMain");
    m_panel->setObjectName("picMeterPanel");
    m_chart->setObjectName("picGraph");
    m_status->setObjectName("lblStatus");
    m_readouts.setSettings(m_store.values);
    setWindowTitle("lv_Analog");
    loadIconResource();
    setWindowIcon(QIcon(":/lv_Analog.svg"));

    m_menus = std::make_unique<MainMenus>(menuBar(), m_store, m_session.state(), menuHooks(), this);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_panel, 5);
    layout->addWidget(m_chart, 3);
    layout->addWidget(m_recordPanel, 0);
    setCentralWidget(central);
    statusBar()->addWidget(m_status, 1);
    m_panel->setAspect(kDialAspect);

    m_panel->setRebuild([this] { rebuildPanel(); });
    m_chart->setRebuild([this] { rebuildChart(); });

    connect(&m_session, &LiveSession::newSample, this, [this](std::int32_t needle) {
        showSample(needle);
        // Recording takes the needle just drawn.
        if (m_recording) m_recording->liveNeedle(needle);
    });
    connect(m_recordPanel, &RecordPanel::panelWordChanged, this, [this](const QString& word) {
        m_readouts.Update_PanelWord(word.toStdString());
        m_panel->update();
    });
    connect(&m_session, &LiveSession::portsChanged, this, &MainWindow::refreshPortMenu);
    // Started by a new reading, so an idle window wakes for nothing.
    m_repaint.setSingleShot(true);
    m_repaint.setTimerType(Qt::PreciseTimer);
    m_frameClock.start();
    connect(&m_repaint, &QTimer::timeout, this, &MainWindow::flush);
    m_clock.setObjectName("tmrClock");
    m_clock.setInterval(kClockMs);
    connect(&m_clock, &QTimer::timeout, this, &MainWindow::tickClock);
}

MainWindow::~MainWindow() = default;

void MainWindow::splashText(const std::string& text) {
    if (m_splash) m_splash->setProgress(QString::fromStdString(text));
}

void MainWindow::Form_Load() {
    m_splash = std::make_unique<SplashForm>(QString::fromStdString(m_options.versionText));
    m_splash->show();
    splashText("Loading");
    QCoreApplication::processEvents();

    m_store.RecordingsFolder = !m_recordingsFolder.empty()
                                   ? m_recordingsFolder
                                   : recordingsInside(m_options.dataFolder.string());
    const std::string filesNotice =
        loadProgramFiles(m_options.dataFolder, m_store, m_sessionConfig);
    placeWindow();
    startRecording();

    SearchHooks hooks;
    hooks.splashText = [this](const std::string& text) { splashText(text); };
    hooks.showSplash = [this] {
        if (m_splash) m_splash->show();
    };
    hooks.closeSplash = [this] {
        if (m_splash) m_splash->hide();
    };
    m_session.findMeterAtStart(m_sessionConfig, hooks);
    if (m_splash) m_splash->hide();
    if (!filesNotice.empty())
        m_prompter.ask("Session Configuration", filesNotice, Buttons::Ok, Icon::Exclamation);

    m_menus->syncFromSettings();
    MeterState& st = m_session.state();
    st.ShownBase = "2.0";
    st.ShownBd = "0.0";
    st.BdCounting = false;
    relayout();
    QCoreApplication::processEvents();
    m_session.armLink();
    m_recording->offerRecovery();

    m_started = true;
    m_clock.start();
}

void MainWindow::startRecording() {
    RecordingController::Wiring w{this,
                                  m_store,
                                  m_session.state(),
                                  m_readouts,
                                  m_session.pump(),
                                  m_prompter,
                                  m_session.port(),
                                  {},
                                  {},
                                  {}};
    const auto dummy = findResource("dummy.mp3", m_options.exeDir);
    // Where it should be, for the message that says it is missing.
    w.dummyPath = dummy ? dummy->string() : (m_options.exeDir / "dummy.mp3").string();
    w.showNeedle = [this](std::int32_t needle) { showSample(needle); };
    w.sendToMeter = [this](const std::string& line) {
        m_session.sendToMeter(line);
        return true;
    };
    m_recording = std::make_unique<RecordingController>(*m_recordPanel, std::move(w), this);
    m_session.setRecorderTap(&m_recording->recorder());
}

void MainWindow::placeWindow() {
    const int bars = menuBar()->sizeHint().height() + statusBar()->sizeHint().height();
    const int chart =
        m_store.values.GraphVisible ? kDialHeight * chartFifths(m_store.values) / 5 : 0;
    const int record = m_store.values.RecordVisible ? m_recordPanel->sizeHint().height() : 0;
    QSize first(kDialWidth, kDialHeight + chart + record + bars);
    // On a small screen the dial and chart shrink together, keeping the
    // dial's shape, so that the recording panel and the status line stay on it.
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QSize area = screen->availableGeometry().size();
        if (first.height() > area.height()) {
            const double fit = double(area.height() - record - bars) / (kDialHeight + chart);
            first = QSize(qRound(kDialWidth * fit), area.height());
        }
        first = first.boundedTo(area);
    }
    resize(first);
    const WindowPlacement saved = placementOf(m_sessionConfig);
    if (!saved.valid()) return;
    // A screen that has gone since (a second monitor unplugged) must not
    // leave the window out of reach.
    QRect wanted(saved.left, saved.top, saved.width, saved.height);
    const QScreen* screen = QGuiApplication::screenAt(wanted.center());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (screen) {
        const QRect area = screen->availableGeometry();
        wanted.setSize(wanted.size().boundedTo(area.size()));
        if (!area.contains(wanted)) wanted.moveCenter(area.center());
    }
    resize(wanted.size());
    move(wanted.topLeft());
}

void MainWindow::relayout() {
    const Settings& cfg = m_store.values;
    // The window's background shows beside the dial; the recording panel
    // keeps the desktop's colours, so its texts stay legible whatever is chosen.
    m_panel->setMarginColour(cfg.Background_Color);

    auto* layout = static_cast<QVBoxLayout*>(centralWidget()->layout());
    const int fifths = chartFifths(cfg);
    // Measured before anything changes: showing the chart lays the window
    // out again at once.
    const bool wasVisible = !m_chart->isHidden();
    const int oldChart = wasVisible ? m_chart->height() : 0;
    const int oldRecord = m_recordPanel->isHidden() ? 0 : m_recordPanel->height();
    const int dialHeight = std::min(m_panel->height(), qRound(m_panel->width() / kDialAspect));
    // The margins beside a dial held at its shape go too.
    const int slack = m_panel->height() - dialHeight;
    layout->setStretch(1, fifths);
    m_chart->setVisible(cfg.GraphVisible);
    m_recordPanel->setVisible(cfg.RecordVisible);
    m_recordPanel->setTagVisible(cfg.SwitchMode_Index == 2);
    // The dial keeps its size: the window grows or shrinks by the chart and
    // the recording panel.
    if (m_started && !isMaximized() && !isFullScreen()) {
        const int newChart = cfg.GraphVisible ? dialHeight * fifths / 5 : 0;
        const int newRecord = cfg.RecordVisible ? m_recordPanel->sizeHint().height() : 0;
        resizeWithinScreen(*this, width(),
                           height() - oldChart - oldRecord + newChart + newRecord - slack);
    }
    rebuildPanel();
    if (cfg.GraphVisible) rebuildChart();
    m_panel->update();
    m_chart->update();
}

MenuHooks MainWindow::menuHooks() {
    MenuHooks h;
    h.connect = [this] { m_session.connectFromMenu(); };
    h.port = [this](int n) { m_session.tryPort(n); };
    h.sensor = [this](bool remote) { m_session.chooseSensor(remote); };
    h.meterSetup = [this] { meterSetup(); };
    h.loadSettings = [this] { loadSettingsFile(); };
    h.saveSettings = [this] { SaveSettings(m_store); };
    h.saveSettingsAs = [this] { saveSettingsFileAs(); };
    h.redrawPanel = [this] {
        rebuildPanel();
        m_panel->update();
    };
    h.reinitChart = [this] {
        if (!m_store.values.GraphVisible) return;
        rebuildChart();
        m_chart->update();
    };
    h.relayout = [this] { relayout(); };
    h.pickColour = [this](Colour current, const QString& title) -> std::optional<Colour> {
        const QColor c = QColorDialog::getColor(toQColor(current), this, title);
        if (!c.isValid()) return std::nullopt;
        return rgb(c.red(), c.green(), c.blue());
    };
    // The recording controller comes with the start-up; the menus before it.
    h.open = [this] {
        if (m_recording) m_recording->open();
    };
    h.recentFiles = [this] { return m_recording ? m_recording->recentFiles() : QStringList(); };
    h.openRecent = [this](const QString& path) {
        if (m_recording) m_recording->openFile(path);
    };
    h.save = [this] {
        if (m_recording) m_recording->saveFromMenu();
    };
    h.saveAs = [this] {
        if (m_recording) m_recording->saveAsFromMenu();
    };
    h.exportRecording = [this] {
        if (m_recording) m_recording->exportRecording();
    };
    h.quit = [this] { close(); };
    h.dialCalibration = [this] { dialCalibration(); };
    h.help = [this] { openUserGuide(m_options.exeDir, m_prompter); };
    h.about = [this] {
        AboutDialog about(aboutInfoFrom(m_options.versionText, m_session.search().version()),
                          m_prompter, {}, this);
        about.exec();
    };
    h.needleTest = [this](bool on) { return m_recording && m_recording->needleTest(on); };
    h.testAudio = [this] { return m_recording && m_recording->toggleTestAudio(); };
    return h;
}

void MainWindow::refreshPortMenu() {
    const PortSearch& search = m_session.search();
    const int checked = m_session.state().PortNumber != 0 ? search.checkedPort() : 0;
    m_menus->setPorts(search.candidates(), search.availability(), checked);
    m_menus->showSensorMenu(search.sensorMenuShown());
}

void MainWindow::rebuildPanel() {
    m_panel->surface().setScale(kPanelScale);
    m_panel->surface().setEraseColour(m_store.values.Dial_Color);
    m_session.followDialColour();
    // A new image holds no needle: Update_Needle draws the face first, then the needle.
    m_panelState.redraw = true;
    // A redrawn dial takes the needle's reference afresh with the next reading.
    m_session.state().NeedleReset = true;
    Update_Needle(m_ctx, m_session.needle());
    m_readouts.redrawLamp();
    m_readouts.redrawPanelWord();
}

void MainWindow::rebuildChart() {
    Init_Graph(m_chartState);
    Update_Graph(m_chartState, m_chart->surface(), m_store.values, 0,
                 m_chart->surface().widthPixels(), m_store.values.GraphGain,
                 chartGain(m_session.state().SensPos));
}

void MainWindow::showSample(std::int32_t needle) {
    Update_Needle(m_ctx, needle);
    if (m_store.values.GraphVisible)
        Update_Graph(m_chartState, m_chart->surface(), m_store.values, m_session.state().RawNeedle,
                     m_chart->surface().widthPixels(), m_store.values.GraphGain,
                     chartGain(m_session.state().SensPos));
    m_dirty = true;
    if (!m_started || m_flushPending) return;
    m_flushPending = true;
    // On the screen before this returns, rather than posted to the event
    // loop: a reading then costs one wake-up and no more. Readings that come
    // together are paced, and the last one is painted when the gap is up.
    const std::int64_t wait = m_pacer.waitMs(m_frameClock.elapsed());
    if (wait == 0)
        flush();
    else
        m_repaint.start(static_cast<int>(wait));
}

void MainWindow::flush() {
    m_flushPending = false;
    if (!m_dirty) return;
    m_dirty = false;
    m_pacer.drawn(m_frameClock.elapsed());
    m_panel->repaintDirty();
    if (m_store.values.GraphVisible) m_chart->repaintDirty();
    ++m_frames;
}

ClockInputs MainWindow::clockInputs() const {
    ClockInputs in{clockNow()};
    if (!m_recording) return in;
    // During playback a redraw shows the recording's own time at the play position.
    RecordingState& rs = m_recording->state();
    in.startTimeSecs = rs.buffer.StartTimeSecs;
    in.unitsPerSecond = rs.AudioBytesPerSec;
    std::int64_t position = 0;
    if (rs.track && rs.track->position(position) == kAudioOk)
        in.playPosition = position;
    else
        in.playPosition = std::int64_t{rs.buffer.CurRecord.TimeMs} * rs.AudioBytesPerSec / 1000;
    return in;
}

void MainWindow::tickClock() {
    m_watchdog.tmrClock_Timer(clockNow());
    m_panel->repaintDirty();
}

std::optional<SessionConfigError> MainWindow::writeSessionConfig() {
    const QRect g = normalGeometry().isValid() ? normalGeometry() : geometry();
    m_sessionConfig = sessionToSave(m_sessionConfig, m_store, m_session.state().PortNumber,
                                    m_session.search().portCount(),
                                    WindowPlacement{g.x(), g.y(), g.width(), g.height()});
    return SaveSessionConfig(m_options.dataFolder, m_sessionConfig);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (m_started && m_recording && m_recording->keyPressed(event)) return;
    QMainWindow::keyPressEvent(event);
}

void MainWindow::closeUnattended() {
    m_unattended = true;
    m_prompter.setUnattended(true);
    close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (m_closed) {
        event->accept();
        return;
    }
    ExitRequest request;
    request.unattended = m_unattended;
    request.recordingInProgress = m_recording && m_recording->recordingInProgress();
    request.recordingNotSaved = m_recording && m_recording->recordingNotSaved();
    ExitHooks hooks;
    if (m_recording) {
        hooks.keepRecordingForRecovery = [this] { m_recording->keepForRecovery(); };
        hooks.closeAudio = [this] { m_recording->closeAudio(); };
    }
    hooks.writeSessionConfig = [this] { return writeSessionConfig(); };
    hooks.report = [](const std::string& text) {
        std::fprintf(stderr, "lv_Analog: %s\n", text.c_str());
    };
    if (runExitSequence(m_store, m_prompter, request, hooks) == ExitResult::Cancelled) {
        event->ignore();
        return;
    }
    m_closed = true;
    const bool atRisk = request.recordingInProgress || request.recordingNotSaved;
    if (m_recording && atRisk && !m_unattended) {
        // Asked and answered: the operator let it go. Without the question
        // (warnings switched off) the journal stays, for the next start.
        if (m_store.values.RecPromptEnable)
            m_recording->discardRecording();
        else
            m_recording->keepForRecovery();
    }
    // An exit that comes while the calibration dialog is up (a signal in its
    // waits) still gives the meter its stream back, as the dialog would.
    if (std::exchange(m_calibrating, false)) leaveCalibration(m_session.port(), m_session.pump());
    m_session.disarm();
    m_repaint.stop();
    m_clock.stop();
    event->accept();
}

}  // namespace lv
