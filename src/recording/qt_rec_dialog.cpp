#include "recording/qt_rec_dialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QVBoxLayout>

#include "common/qt_option_group.h"
#include "recording/naming.h"
#include "recording/rec_setup.h"

namespace lv {

namespace {

std::optional<std::string> systemFolderDialog(QWidget* parent, const std::string& start) {
    const QString from = start.empty() ? QDir::homePath() : QString::fromStdString(start);
    const QString chosen = QFileDialog::getExistingDirectory(parent, "Select Save Folder", from);
    if (chosen.isEmpty()) return std::nullopt;
    return chosen.toStdString();
}

}  // namespace

RecDialog::RecDialog(Settings& settings, Prompter& prompter, BrowseFolder browse, QWidget* parent)
    : QDialog(parent),
      m_settings(settings),
      m_prompter(prompter),
      m_browse(std::move(browse)),
      m_draft(settings) {
    setObjectName("frmRec");
    setWindowTitle("Recording Settings");
    if (!m_browse)
        m_browse = [this](const std::string& start) { return systemFolderDialog(this, start); };

    auto* framMode = new QGroupBox("Recording Mode", this);
    framMode->setObjectName("framMode");
    auto* modeColumn = new QVBoxLayout(framMode);
    m_optMode = new QButtonGroup(this);
    for (const RecordingModeChoice& choice : kRecordingModeChoices)
        addOption(m_optMode, modeColumn, "optMode", choice.description, choice.mode);

    auto* framFolder = new QGroupBox("Save Folder", this);
    framFolder->setObjectName("framFolder");
    // Shown in a field, so a long path can be scrolled and copied; only the
    // folder browser changes it.
    m_txtSavePath = new QLineEdit(framFolder);
    m_txtSavePath->setObjectName("txtSavePath");
    m_txtSavePath->setReadOnly(true);
    m_txtSavePath->setPlaceholderText("No folder chosen");
    m_txtSavePath->setMinimumWidth(240);
    auto* cmdBrowse = new QPushButton("Browse...", framFolder);
    cmdBrowse->setObjectName("cmdBrowse");
    cmdBrowse->setAutoDefault(false);
    auto* folderRow = new QHBoxLayout(framFolder);
    folderRow->addWidget(m_txtSavePath, 1);
    folderRow->addWidget(cmdBrowse);

    auto* framName = new QGroupBox("File Name", this);
    framName->setObjectName("framName");
    m_txtPrefix = new QLineEdit(framName);
    m_txtPrefix->setObjectName("txtPrefix");
    auto* suffixRow = new QHBoxLayout;
    m_optSuffix = new QButtonGroup(this);
    addOption(m_optSuffix, suffixRow, "optSuffix", "Number", kSuffixNumber);
    addOption(m_optSuffix, suffixRow, "optSuffix", "Date-Time", kSuffixDateTime);
    suffixRow->addStretch(1);
    m_lblNextName = new QLabel(framName);
    m_lblNextName->setObjectName("lblNextName");
    auto* cmdReset = new QPushButton("WARNING! Reset may delete files", framName);
    cmdReset->setObjectName("cmdReset");
    cmdReset->setAutoDefault(false);
    cmdReset->setToolTip("Starts the numbers again at 001 and deletes the numbered recordings");
    QPalette warning = cmdReset->palette();
    warning.setColor(QPalette::Active, QPalette::ButtonText, QColor(170, 0, 0));
    warning.setColor(QPalette::Inactive, QPalette::ButtonText, QColor(170, 0, 0));
    cmdReset->setPalette(warning);
    auto* nameForm = new QFormLayout(framName);
    nameForm->addRow("Prefix:", m_txtPrefix);
    nameForm->addRow("Suffix:", suffixRow);
    nameForm->addRow("Next file:", m_lblNextName);
    nameForm->addRow(cmdReset);

    auto* framOptions = new QGroupBox("Options", this);
    framOptions->setObjectName("framOptions");
    m_chkAudio = new QCheckBox("Record sound", framOptions);
    m_chkAudio->setObjectName("chkAudio");
    m_chkTimeDate = new QCheckBox("Stamp recordings with the date and time", framOptions);
    m_chkTimeDate->setObjectName("chkTimeDate");
    m_chkRecPrompt = new QCheckBox("Warn before recording over an unsaved one", framOptions);
    m_chkRecPrompt->setObjectName("chkRecPrompt");
    auto* optionColumn = new QVBoxLayout(framOptions);
    for (QWidget* w : {m_chkAudio, m_chkTimeDate, m_chkRecPrompt}) optionColumn->addWidget(w);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cmdOK = buttons->addButton("OK", QDialogButtonBox::AcceptRole);
    cmdOK->setObjectName("cmdOK");
    cmdOK->setDefault(true);
    QPushButton* cmdCancel = buttons->addButton("Cancel", QDialogButtonBox::RejectRole);
    cmdCancel->setObjectName("cmdCancel");

    // What is recorded on the left, where and under what name on the right.
    auto* left = new QVBoxLayout;
    left->addWidget(framMode);
    left->addWidget(framOptions, 1);
    auto* right = new QVBoxLayout;
    right->addWidget(framFolder);
    right->addWidget(framName, 1);
    auto* grid = new QGridLayout(this);
    grid->addLayout(left, 0, 0);
    grid->addLayout(right, 0, 1);
    grid->addWidget(buttons, 1, 0, 1, 2);
    grid->setSizeConstraint(QLayout::SetFixedSize);

    connect(m_optMode, &QButtonGroup::idClicked, this,
            [this](int mode) { m_draft.RecordingMode = mode; });
    connect(m_optSuffix, &QButtonGroup::idClicked, this, [this](int kind) {
        m_draft.SuffixType = kind;
        refresh();
    });
    connect(m_txtPrefix, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_draft.SavePrefix = text.toStdString();
        refresh();
    });
    connect(m_chkAudio, &QCheckBox::clicked, this, [this](bool on) { m_draft.AudioEnable = on; });
    connect(m_chkTimeDate, &QCheckBox::clicked, this,
            [this](bool on) { m_draft.TimeDateEnable = on; });
    connect(m_chkRecPrompt, &QCheckBox::clicked, this,
            [this](bool on) { m_draft.RecPromptEnable = on; });
    connect(cmdBrowse, &QPushButton::clicked, this, &RecDialog::browse);
    connect(cmdReset, &QPushButton::clicked, this, &RecDialog::reset);
    connect(buttons, &QDialogButtonBox::accepted, this, &RecDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    load();
}

void RecDialog::load() {
    m_draft = m_settings;
    m_draft.RecordingMode = selectableMode(m_draft.RecordingMode, m_draft.SavePath);
    selectOption(m_optMode, m_draft.RecordingMode);
    selectOption(m_optSuffix, m_draft.SuffixType);
    m_txtPrefix->setText(QString::fromStdString(m_draft.SavePrefix));
    m_chkAudio->setChecked(m_draft.AudioEnable);
    m_chkTimeDate->setChecked(m_draft.TimeDateEnable);
    m_chkRecPrompt->setChecked(m_draft.RecPromptEnable);
    refresh();
}

void RecDialog::showEvent(QShowEvent* event) {
    // A dialog kept for reuse starts from the settings in force each time it
    // opens (not when it comes back from being minimised).
    if (!event->spontaneous()) load();
    QDialog::showEvent(event);
}

void RecDialog::refresh() {
    for (QAbstractButton* option : m_optMode->buttons()) {
        const bool selectable = modeSelectable(m_optMode->id(option), m_draft.SavePath);
        option->setEnabled(selectable);
        option->setToolTip(selectable ? QString() : QString("Choose a save folder first"));
    }
    m_txtSavePath->setText(QString::fromStdString(m_draft.SavePath));
    m_lblNextName->setText(QString::fromStdString(nextNameText(m_draft)));
}

void RecDialog::browse() {
    const std::optional<std::string> chosen = m_browse(m_draft.SavePath);
    if (!chosen || chosen->empty()) return;
    m_draft.SavePath = saveFolderText(*chosen);
    refresh();
}

void RecDialog::reset() {
    // The series in force, not a prefix or folder typed here and not yet confirmed.
    Settings saved = m_settings;
    if (saved.SavePrefix.empty() || !prefixStaysInFolder(saved.SavePrefix)) {
        m_prompter.ask("Reset", resetNumbering(saved).refused, Buttons::Ok, Icon::Exclamation);
        return;
    }
    if (m_prompter.ask("Warning", "Warning..Reset may delete files!", Buttons::YesNo,
                       Icon::Exclamation) != Answer::Yes)
        return;
    // To the trash, not unlinked: the series goes without a question, but not
    // without a way back.
    const ResetOutcome outcome = resetNumbering(saved, [](const std::filesystem::path& path) {
        return QFile::moveToTrash(QString::fromStdString(path.string()));
    });
    m_trashed += static_cast<int>(outcome.deleted.size());
    // The files are gone whatever the dialog ends with, so the number that
    // starts the series again is kept at once, not only on OK.
    m_draft.SuffixNum = m_settings.SuffixNum = saved.SuffixNum;
    refresh();
    if (outcome.notDeleted.empty()) return;
    std::string list;
    for (const auto& path : outcome.notDeleted) list += "\n" + path.string();
    m_prompter.ask("Reset",
                   "These files could not be moved to the trash, and are left as they are:" + list,
                   Buttons::Ok, Icon::Exclamation);
}

void RecDialog::accept() {
    if (const auto problem = checkPrefix(m_draft.SavePath, m_draft.SavePrefix)) {
        m_prompter.ask(problem->title, problem->text, Buttons::Ok, Icon::Critical);
        m_txtPrefix->setFocus();
        return;
    }
    copyRecordingSetup(m_draft, m_settings);
    QDialog::accept();
}

}  // namespace lv
