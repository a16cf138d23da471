#include "app/qt_recording_controller.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QStatusBar>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "common/vb_date.h"
#include "device/protocol.h"
#include "recording/lvd_report.h"
#include "recording/naming.h"
#include "recording/qt_rec_dialog.h"
#include "recording/qt_recording_plot.h"
#include "recording/rec_setup.h"
#include "recording/recovery_journal.h"

namespace lv {

namespace {

const QString kLvdFilter = "LVD file (*.lvd*)";
// The same picture lvdtool plot draws by default.
constexpr int kPlotWidth = 1600;
constexpr int kPlotHeight = 900;
constexpr int kStatusMessageMs = 10000;
// The journal reaches the disk at least this often while recording.
constexpr int kJournalTickMs = 500;

const char* kRecoverTitle = "Recover Recording";

}  // namespace

RecordingController::RecordingController(RecordPanel& panel, Wiring wiring, QObject* parent)
    : QObject(parent),
      m_panel(panel),
      m_w(std::move(wiring)),
      m_tracks{m_sound, m_placeholder, m_w.dummyPath},
      m_recent(std::filesystem::path(m_w.store.DataFolder) / kRecentFilesName) {
    m_recent.load();
    Settings& cfg = m_w.store.values;
    m_recorder = std::make_unique<Recorder>(m_rs, m_tracks, m_w.st, cfg, m_w.display, m_panel,
                                            m_w.pump, m_w.prompter, [] { return localNow(); });
    m_recorder->setRecoveryFolder(m_w.store.DataFolder);
    m_recorder->setNumberingSaver([this] { SaveRecordingSettings(m_w.store); });
    // The sound waits for its Save beside the journal, on the same disk.
    m_sound.setCaptureFolder(m_w.store.DataFolder);
    auto send = [this](const std::string& line) {
        if (m_w.st.PortNumber != 0 && m_w.sendToMeter) m_w.sendToMeter(line);
    };
    m_recorder->setMeterStart([send] { send(protocol::commandLine(protocol::kStart)); });
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
    m_step.setSingleShot(true);
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
        if (!m_step.isActive()) m_step.start(m_player->msToNextStep());
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
    const std::string before = m_rs.loadedBase;
    if (m_recorder->recording()) m_recorder->cmdStop_Click();
    noteSaved(before);
}

void RecordingController::record() {
    if (m_player->active() || m_recorder->recording()) return;
    makeSaveFolder();
    m_recorder->cmdRecord_Click();
    if (m_recorder->recording()) showLoadedInTitle({});
}

void RecordingController::stop() {
    const std::string before = m_rs.loadedBase;
    if (m_recorder->recording())
        m_recorder->cmdStop_Click();
    else
        m_player->cmdStop_Click();
    syncTimers();
    noteSaved(before);
}

void RecordingController::save() {
    if (m_recorder->recording()) return;
    if (m_recorder->saveCaption() != "Save As") {
        const std::string before = m_rs.loadedBase;
        m_recorder->cmdSave_Click(std::nullopt);
        noteSaved(before);
        return;
    }
    saveRecordingAs();
}

void RecordingController::saveRecordingAs() {
    makeSaveFolder();
    const std::string before = m_rs.loadedBase;
    const QString start = QString::fromStdString(m_w.store.values.SavePath);
    const QString path =
        QFileDialog::getSaveFileName(m_w.window, "Save Recording As", start, kLvdFilter);
    if (path.isEmpty()) return;
    m_recorder->cmdSave_Click(path.toStdString());
    noteSaved(before);
}

void RecordingController::saveAsFromLabel() {
    if (m_rs.buffer.RecCount < 1 || m_recorder->recording()) return;
    makeSaveFolder();
    const std::string before = m_rs.loadedBase;
    const QString path =
        QFileDialog::getSaveFileName(m_w.window, "Save Recording As",
                                     QString::fromStdString(m_w.store.values.SavePath), kLvdFilter);
    if (!path.isEmpty()) m_recorder->saveAsFromLabel(path.toStdString());
    noteSaved(before);
}

void RecordingController::saveAsFromMenu() {
    if (m_recorder->recording()) return;
    // A recording not yet saved gets its start stamp, as the panel's Save As
    // gives it; a loaded one is copied as it stands, as from the label.
    if (m_rs.RecHasData && m_rs.RecNotSaved)
        saveRecordingAs();
    else
        saveAsFromLabel();
}

void RecordingController::noteSaved(const std::string& baseBefore) {
    if (m_rs.RecNotSaved || m_rs.loadedBase.empty() || m_rs.loadedBase == baseBefore) return;
    const QString path = QString::fromStdString(m_rs.loadedBase + ".lvd");
    m_w.store.values.LoadPath = QFileInfo(path).absolutePath().toStdString() + "/";
    rememberRecent(path);
    showLoadedInTitle(path);
}

void RecordingController::exportRecording() {
    if (m_recorder->recording() || m_rs.buffer.RecCount < 1) return;
    const QString loaded = m_rs.loadedBase.empty()
                               ? QString::fromStdString(m_w.store.values.SavePath) + "recording"
                               : QString::fromStdString(m_rs.loadedBase);
    const QString csv = QFileDialog::getSaveFileName(m_w.window, "Export Recording",
                                                     loaded + ".csv", "CSV file (*.csv)");
    if (!csv.isEmpty()) exportTo(csv);
}

bool RecordingController::exportTo(const QString& csv) {
    if (m_recorder->recording() || m_rs.buffer.RecCount < 1) return false;
    const QString base = csv.endsWith(".csv", Qt::CaseInsensitive) ? csv.chopped(4) : csv;
    const QString png = base + ".png";
    QString problem;
    {
        std::ofstream out(csv.toStdString(), std::ios::trunc);
        tool::writeRecords(m_rs.buffer, tool::RecordFormat::Csv, out);
        out.flush();
        if (!out) problem = csv + "\n" + QString::fromLocal8Bit(std::strerror(errno));
    }
    const QString title = m_rs.loadedBase.empty()
                              ? QString("Recording")
                              : QFileInfo(QString::fromStdString(m_rs.loadedBase)).fileName();
    QString plotError;
    if (problem.isEmpty() &&
        !tool::plotRecording(m_rs.buffer, title, png, kPlotWidth, kPlotHeight, &plotError))
        problem = png + "\n" + plotError;
    if (!problem.isEmpty()) {
        m_w.prompter.ask("Export Recording",
                         "The recording could not be exported:\n" + problem.toStdString(),
                         Buttons::Ok, Icon::Exclamation);
        return false;
    }
    tellInStatusLine("Exported " + csv + " and " + png);
    return true;
}

void RecordingController::load() {
    if (m_recorder->recording()) return;
    const QString path =
        QFileDialog::getOpenFileName(m_w.window, "Load Recording", loadStartFolder(), kLvdFilter);
    if (!path.isEmpty()) loadFile(path);
}

QString RecordingController::loadStartFolder() const {
    // A LoadPath of another system, or a folder gone since, is no place to start.
    const QFileInfo last(QString::fromStdString(m_w.store.values.LoadPath));
    if (!m_w.store.values.LoadPath.empty() && last.isAbsolute() && last.isDir())
        return last.absoluteFilePath();
    makeSaveFolder();
    return QString::fromStdString(m_w.store.values.SavePath);
}

QStringList RecordingController::recentFiles() const {
    QStringList list;
    for (const std::string& path : m_recent.paths()) list << QString::fromStdString(path);
    return list;
}

void RecordingController::loadFromList() {
    if (m_recorder->recording() || m_recent.paths().empty()) return;
    QMenu menu(m_w.window);
    for (const QString& path : recentFiles())
        menu.addAction(QFileInfo(path).fileName())->setData(path);
    if (QAction* chosen = menu.exec(m_panel.loadListAnchor())) loadFile(chosen->data().toString());
}

void RecordingController::makeSaveFolder() const {
    // Only the default is made: a folder of the operator's own that is not
    // there (a drive not mounted) is theirs to see to.
    const std::string& folder = m_w.store.values.SavePath;
    if (folder.empty() || folder != m_w.store.RecordingsFolder) return;
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
}

void RecordingController::showLoadedInTitle(const QString& path) {
    m_w.window->setWindowTitle(path.isEmpty() ? "lv_Analog"
                                              : QFileInfo(path).fileName() + " - lv_Analog");
    m_w.window->setWindowFilePath(path);
}

void RecordingController::tellInStatusLine(const QString& text) {
    if (auto* main = qobject_cast<QMainWindow*>(m_w.window))
        main->statusBar()->showMessage(text, kStatusMessageMs);
}

void RecordingController::loadFile(const QString& path) {
    // Loading empties the buffer: an unsaved recording is the operator's to give up.
    if (m_rs.RecNotSaved && m_w.store.values.RecPromptEnable &&
        m_w.prompter.ask("Warning", "Previous recording not saved, Continue?", Buttons::YesNo,
                         Icon::None) != Answer::Yes)
        return;
    m_player->cmdStop_Click();
    syncTimers();
    // A name from the command line may be relative: the label's tooltip and
    // the recent files show where the file really is.
    const QString full = QFileInfo(path).absoluteFilePath();
    // A file that is refused leaves the recording in memory, and the title
    // that names it, as they were.
    if (!m_player->Load_File(full.toStdString(), [this] { m_recorder->Flush_RecBuffer(); }))
        return;
    m_w.store.values.LoadPath = QFileInfo(full).absolutePath().toStdString() + "/";
    rememberRecent(full);
    showLoadedInTitle(full);
}

void RecordingController::openFile(const QString& path) {
    if (m_recorder->recording()) return;
    loadFile(path);
}

void RecordingController::playFile(const QString& path) {
    loadFile(path);
    if (m_rs.buffer.RecCount < 1 || m_player->active()) return;
    m_player->cmdPlay_Click();
    syncTimers();
}

void RecordingController::rememberRecent(const QString& path) {
    m_recent.add(QFileInfo(path).absoluteFilePath().toStdString());
}

void RecordingController::settings() {
    if (m_recorder->recording()) return;
    Settings& cfg = m_w.store.values;
    const bool hadAudio = cfg.AudioEnable;
    // The dialog's OK tries the prefix in the folder: the default one must be there.
    makeSaveFolder();
    RecDialog dialog(cfg, m_w.prompter, {}, m_w.window);
    dialog.exec();
    // Audio off records against the placeholder: the operator hears now,
    // not at the next Record or Load, that it cannot be had.
    if (hadAudio && !cfg.AudioEnable && m_rs.track != &m_placeholder) {
        const int rc = m_placeholder.openFile(m_w.dummyPath, AudioKind::Compressed);
        m_placeholder.close();
        if (rc != kAudioOk)
            m_w.prompter.ask("File Not Found",
                             "The Dummy.mp3 file could not be loaded for the following "
                             "reason(s):\n" +
                                 audioErrorText(rc),
                             Buttons::Ok, Icon::Exclamation);
    }
    if (const int n = dialog.trashedCount(); n > 0)
        tellInStatusLine(
            QString("Reset: %1 file%2 moved to the trash").arg(n).arg(n == 1 ? "" : "s"));
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
    // Kept first, asked second: whatever the answer, and whatever comes next,
    // the interrupted session is a recording of its own in recovered/.
    const std::filesystem::path data = m_w.store.DataFolder;
    const auto kept =
        RecoveryJournal::preserve(data, data / RecoveryJournal::kRecoveredFolder, m_w.store.values);
    using Outcome = RecoveryJournal::Preserved::Outcome;
    if (kept.outcome == Outcome::Nothing) return;
    const int seconds = kept.recordCount / 50;
    const std::string about = "A recording of about " + std::to_string(seconds / 60) + " min " +
                              std::to_string(seconds % 60) +
                              " s was interrupted before it was saved.";
    if (kept.outcome == Outcome::Failed) {
        m_w.prompter.ask(kRecoverTitle,
                         about + "\n\nIt could not be kept as a recording of its own:\n" +
                             kept.error + "\n\nIts journal stays in " + data.string() +
                             ", and nothing new is written over it.",
                         Buttons::Ok, Icon::Exclamation);
        return;
    }
    const std::string where =
        kept.lvdFile.string() + (kept.wavFile ? "\n" + kept.wavFile->string() : std::string());
    const std::string text = about + "\n\nIt has been kept as\n" + where + "\n\nLoad it now?";
    if (m_w.prompter.ask(kRecoverTitle, text, Buttons::YesNo, Icon::Question) == Answer::Yes)
        loadFile(QString::fromStdString(kept.lvdFile.string()));
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
    // Leaving tells the meter nothing: no start command from the test's or
    // the playback's end.
    m_testStep.stop();
    m_test->stop(NeedleTest::Ending::Exit);
    m_player->stopForExit();
    m_step.stop();
    // "close WavFile" twice, as the original did: once for each track in use.
    m_sound.close();
    m_placeholder.close();
}

}  // namespace lv
