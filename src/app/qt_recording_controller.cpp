#include "app/qt_recording_controller.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMenu>

#include "common/vb_date.h"
#include "recording/naming.h"
#include "recording/qt_rec_dialog.h"
#include "recording/rec_setup.h"
#include "recording/recovery_journal.h"

namespace lv {

namespace {

const QString kLvdFilter = "LVD file (*.lvd*)";
// Files offered by the Load button's right click and the "L" key.
constexpr int kRecentFiles = 10;
// The journal reaches the disk at least this often while recording.
constexpr int kJournalTickMs = 500;

const char* kRecoverTitle = "Recover Recording";

}  // namespace

RecordingController::RecordingController(RecordPanel& panel, Wiring wiring, QObject* parent)
    : QObject(parent),
      m_panel(panel),
      m_w(std::move(wiring)),
      m_tracks{m_sound, m_placeholder, m_w.dummyPath} {
    Settings& cfg = m_w.store.values;
    m_recorder = std::make_unique<Recorder>(m_rs, m_tracks, m_w.st, cfg, m_w.display, m_panel,
                                            m_w.pump, m_w.prompter, [] { return localNow(); });
    m_recorder->setRecoveryFolder(m_w.store.DataFolder);
    // The sound waits for its Save beside the journal, on the same disk.
    m_sound.setCaptureFolder(m_w.store.DataFolder);
    auto send = [this](const std::string& line) {
        if (m_w.st.PortNumber != 0 && m_w.sendToMeter) m_w.sendToMeter(line);
    };
    m_player =
        std::make_unique<Player>(m_rs, m_tracks, m_w.st, cfg, m_w.display, m_panel, m_w.prompter,
                                 m_w.pump, m_w.showNeedle, send, [this] { m_skip.start(); });

    m_test =
        std::make_unique<NeedleTest>(m_w.st, m_w.port, m_tracks, m_rs, m_w.display, m_panel,
                                     m_w.prompter, m_w.showNeedle, [] { QApplication::beep(); });
    m_testStep.setTimerType(Qt::PreciseTimer);
    m_testStep.setInterval(kNeedleTestStepMs);
    connect(&m_testStep, &QTimer::timeout, this, [this] { m_test->step(); });

    m_step.setTimerType(Qt::PreciseTimer);
    m_step.setInterval(kPlayStepMs);
    connect(&m_step, &QTimer::timeout, this, [this] {
        m_player->step();
        syncTimers();
    });
    m_skip.setObjectName("tmrSkip");
    m_skip.setSingleShot(true);
    m_skip.setInterval(kSkipTimerMs);
    connect(&m_skip, &QTimer::timeout, this, [this] {
        m_player->tmrSkip_Timer();
        syncTimers();
    });
    m_tick.setInterval(kJournalTickMs);
    connect(&m_tick, &QTimer::timeout, this, [this] { m_recorder->tick(); });
    m_tick.start();

    connect(&m_panel, &RecordPanel::recordClicked, this, &RecordingController::record);
    connect(&m_panel, &RecordPanel::stopClicked, this, &RecordingController::stop);
    connect(&m_panel, &RecordPanel::playClicked, this, [this] {
        if (m_recorder->recording()) return;
        m_player->cmdPlay_Click();
        syncTimers();
    });
    connect(&m_panel, &RecordPanel::loopClicked, this, [this] { m_player->cmdLoop_Click(); });
    connect(&m_panel, &RecordPanel::fwdClicked, this, [this] { m_player->cmdFwd_Click(); });
    connect(&m_panel, &RecordPanel::revClicked, this, [this] { m_player->cmdRev_Click(); });
    connect(&m_panel, &RecordPanel::saveClicked, this, &RecordingController::save);
    connect(&m_panel, &RecordPanel::loadClicked, this, &RecordingController::load);
    connect(&m_panel, &RecordPanel::loadListRequested, this, &RecordingController::loadFromList);
    connect(&m_panel, &RecordPanel::settingsClicked, this, &RecordingController::settings);
    connect(&m_panel, &RecordPanel::loadedFileSaveAsRequested, this,
            &RecordingController::saveAsFromLabel);
    connect(&m_panel, &RecordPanel::positionPressed, this, [this](double f) {
        m_player->positionBarPress(f);
        syncTimers();
    });
    connect(&m_panel, &RecordPanel::positionMoved, this, [this](double f) {
        m_player->positionBarPress(f);
        syncTimers();
    });
    connect(&m_panel, &RecordPanel::positionReleased, this, [this](double f) {
        m_player->positionBarRelease(f);
        syncTimers();
    });

    m_panel.setMode(recordingModeCaption(cfg.RecordingMode), recordingModeTooltip(cfg));
    m_panel.setNaming(namingPatternText(cfg));
    m_panel.setLoopCaption(cfg.PlayLoopEnable ? "Loop" : "Single");
    m_panel.setTagVisible(cfg.SwitchMode_Index == 2);
}

RecordingController::~RecordingController() = default;

void RecordingController::syncTimers() {
    if (m_player->playing()) {
        if (!m_step.isActive()) m_step.start();
    } else {
        m_step.stop();
    }
}

bool RecordingController::recordingInProgress() const {
    return m_recorder->recording();
}

void RecordingController::liveNeedle(std::int32_t needle) {
    if (m_w.st.RunMode == kRunRecording) m_recorder->recordFrame(needle);
}

void RecordingController::pressStop() {
    if (m_recorder->recording()) m_recorder->cmdStop_Click();
}

void RecordingController::record() {
    if (m_player->active() || m_recorder->recording()) return;
    m_recorder->cmdRecord_Click();
}

void RecordingController::stop() {
    if (m_recorder->recording())
        m_recorder->cmdStop_Click();
    else
        m_player->cmdStop_Click();
    syncTimers();
}

void RecordingController::save() {
    if (m_recorder->saveCaption() != "Save As") {
        m_recorder->cmdSave_Click(std::nullopt);
        return;
    }
    const QString start = QString::fromStdString(m_w.store.values.SavePath);
    const QString path =
        QFileDialog::getSaveFileName(m_w.window, "Save Recording As", start, kLvdFilter);
    if (path.isEmpty()) return;
    if (m_recorder->cmdSave_Click(path.toStdString())) rememberRecent(path);
}

void RecordingController::saveAsFromLabel() {
    if (m_rs.buffer.RecCount < 1) return;
    const QString path =
        QFileDialog::getSaveFileName(m_w.window, "Save Recording As",
                                     QString::fromStdString(m_w.store.values.SavePath), kLvdFilter);
    if (!path.isEmpty() && m_recorder->saveAsFromLabel(path.toStdString())) rememberRecent(path);
}

void RecordingController::load() {
    if (m_recorder->recording()) return;
    const QString start = QString::fromStdString(m_w.store.values.LoadPath);
    const QString path =
        QFileDialog::getOpenFileName(m_w.window, "Load Recording", start, kLvdFilter);
    if (!path.isEmpty()) loadFile(path);
}

void RecordingController::loadFromList() {
    if (m_recorder->recording() || m_recent.isEmpty()) return;
    QMenu menu(m_w.window);
    for (const QString& path : m_recent) menu.addAction(QFileInfo(path).fileName())->setData(path);
    if (QAction* chosen = menu.exec(m_panel.loadListAnchor())) loadFile(chosen->data().toString());
}

void RecordingController::loadFile(const QString& path) {
    // Loading empties the buffer: an unsaved recording is the operator's to give up.
    if (m_rs.RecNotSaved && m_w.store.values.RecPromptEnable &&
        m_w.prompter.ask("Warning", "Previous recording not saved, Continue?", Buttons::YesNo,
                         Icon::None) != Answer::Yes)
        return;
    m_player->cmdStop_Click();
    syncTimers();
    m_recorder->Flush_RecBuffer();
    if (!m_player->Load_File(path.toStdString())) return;
    m_w.store.values.LoadPath = QFileInfo(path).absolutePath().toStdString() + "/";
    rememberRecent(path);
}

void RecordingController::playFile(const QString& path) {
    loadFile(path);
    if (m_rs.buffer.RecCount < 1 || m_player->active()) return;
    m_player->cmdPlay_Click();
    syncTimers();
}

void RecordingController::rememberRecent(const QString& path) {
    m_recent.removeAll(path);
    m_recent.prepend(path);
    while (m_recent.size() > kRecentFiles) m_recent.removeLast();
}

void RecordingController::settings() {
    if (m_recorder->recording()) return;
    Settings& cfg = m_w.store.values;
    RecDialog dialog(cfg, m_w.prompter, {}, m_w.window);
    dialog.exec();
    m_panel.setMode(recordingModeCaption(cfg.RecordingMode), recordingModeTooltip(cfg));
    m_panel.setNaming(namingPatternText(cfg));
}

bool RecordingController::keyPressed(QKeyEvent* event) {
    const QString text = event->text().toUpper();
    if (text.size() != 1 || event->modifiers() & (Qt::ControlModifier | Qt::AltModifier))
        return false;
    const char key = text.at(0).toLatin1();
    switch (m_player->keyPressed(key, m_panel.enabledControls())) {
        case PlayerKey::None:
            return false;
        case PlayerKey::Handled:
            break;
        case PlayerKey::Record:
            if (m_panel.enabledControls().record) record();
            break;
        case PlayerKey::StopRecording:
            if (m_panel.enabledControls().stop) pressStop();
            break;
        case PlayerKey::Tag:
            m_recorder->tag();
            break;
        case PlayerKey::Load:
            if (m_panel.enabledControls().load) load();
            break;
        case PlayerKey::LoadFromList:
            loadFromList();
            break;
    }
    syncTimers();
    return true;
}

void RecordingController::offerRecovery() {
    const auto found = RecoveryJournal::find(m_w.store.DataFolder);
    if (!found || found->recordCount < 1) return;
    const int seconds = found->recordCount / 50;
    const std::string text = "A recording of about " + std::to_string(seconds / 60) + " min " +
                             std::to_string(seconds % 60) +
                             " s was interrupted before it was saved.\n\nRecover it now? It "
                             "is then in the buffer, unsaved, ready to be saved.";
    if (m_w.prompter.ask(kRecoverTitle, text, Buttons::YesNo, Icon::Question) == Answer::Yes)
        m_recorder->recoverFromJournal();
    // No keeps the journal: the operator may change their mind at the next start.
}

void RecordingController::keepForRecovery() {
    m_recorder->stopForExit();
}

bool RecordingController::needleTest(bool on) {
    if (!on) {
        m_testStep.stop();
        m_test->stop();
        return false;
    }
    if (m_test->running()) return true;
    if (!m_test->start()) return false;
    m_testStep.start();
    return true;
}

void RecordingController::discardRecording() {
    m_recorder->stopForExit();
    m_recorder->discardJournal();
}

void RecordingController::closeAudio() {
    needleTest(false);
    m_player->cmdStop_Click();
    m_step.stop();
    // "close WavFile" twice, as the original did: once for each track in use.
    m_sound.close();
    m_placeholder.close();
}

}  // namespace lv
