#include "calibration/qt_scale_dialog.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>

#include "calibration/upload.h"

namespace lv {

ScaleDialog::ScaleDialog(SerialPort& port, Pump& pump, Prompter& prompter,
                         std::array<std::int16_t, 12>& DialCalibration, int ScaleType,
                         std::function<void(std::int32_t angle)> showNeedle,
                         std::function<void()> saveSessionConfig, QWidget* parent)
    : QDialog(parent),
      m_port(port),
      m_pump(pump),
      m_prompter(prompter),
      m_model(port, pump, DialCalibration, ScaleType, std::move(showNeedle)),
      m_saveSessionConfig(std::move(saveSessionConfig)) {
    setObjectName("frmScale");
    setWindowTitle("lv Dial Calibration");
    buildLayout();

    // The list follows the model: a click selects, the model says what to show.
    connect(m_lstDial, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0 && row != m_model.currentIndex()) m_model.select(row);
    });
    // A click on the line already selected changes no row, yet the operator
    // means it: drive the needle to that mark again.
    m_lstDial->viewport()->installEventFilter(this);
    connect(m_lstDial, &QListWidget::pressed, this, [this](const QModelIndex& index) {
        if (index.isValid() && index.row() == m_rowBeforePress) m_model.select(index.row());
    });
    connect(m_cmdCycle, &QPushButton::clicked, this, [this] { m_model.Cycle(); });
    // Press and hold: the model steps while the button is down, letting
    // events run between steps, so the release reaches it. The stepping starts
    // from the event loop rather than inside the press, so that a click() by
    // code (whose release follows at once) steps once instead of running on.
    for (const auto& [b, step] : {std::pair{m_cmdUp, DialCalibrator::Step::Up},
                                  std::pair{m_cmdDn, DialCalibrator::Step::Down}}) {
        connect(b, &QPushButton::pressed, this, [this, step = step] {
            m_model.press();
            QTimer::singleShot(0, this, [this, step] { m_model.stepWhileHeld(step); });
        });
        connect(b, &QPushButton::released, this, [this] { m_model.release(); });
    }
    connect(m_cmdReset, &QPushButton::clicked, this, [this] { m_model.Defaults(); });
    connect(m_cmdSave, &QPushButton::clicked, this, [this] { upload(); });
    connect(m_command2, &QPushButton::clicked, this, [this] { Terminate(m_port); });
    connect(m_cmdExit, &QPushButton::clicked, this, &QWidget::close);

    m_model.setChangeHandler([this] { refresh(); });
    m_model.Load();
    refresh();
    // Every mark in sight at once: no scrolling while the needle is set.
    m_lstDial->setFixedHeight(m_lstDial->sizeHintForRow(0) * m_lstDial->count() +
                              2 * m_lstDial->frameWidth() + 4);
}

QPushButton* ScaleDialog::button(const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, this);
    b->setObjectName(name);
    // Enter in the list must not upload or close by accident.
    b->setAutoDefault(false);
    return b;
}

void ScaleDialog::buildLayout() {
    m_lstDial = new QListWidget(this);
    m_lstDial->setObjectName("lstDial");
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSizeF(digits.pointSizeF() * 1.25);
    m_lstDial->setFont(digits);
    m_lstDial->setFixedWidth(QFontMetrics(digits).horizontalAdvance("00000") * 2 + 24);
    m_lstDial->setSelectionMode(QAbstractItemView::SingleSelection);

    m_cmdCycle = button("cmdCycle", "Cycle");
    m_cmdUp = button("cmdUp", "+");
    m_cmdDn = button("cmdDn", "-");
    m_cmdReset = button("cmdReset", "Defaults");
    m_cmdSave = button("cmdSave", "Upload");
    m_cmdExit = button("cmdExit", "EXIT");
    m_command2 = button("Command2", "Terminate");
    m_cmdCycle->setEnabled(false);  // until the list is loaded
    m_cmdSave->setEnabled(false);   // until a value changes

    QFont big = font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.6);
    for (QPushButton* b : {m_cmdDn, m_cmdUp}) {
        b->setFont(big);
        b->setMinimumSize(56, 44);
        b->setToolTip("Hold to keep moving the meter's needle");
    }
    m_cmdCycle->setToolTip("Next mark");
    m_cmdReset->setToolTip("Every mark back to its nominal drive");
    m_cmdSave->setToolTip("Write the calibration into the meter");
    m_command2->setToolTip("Take the meter out of its loader");

    m_pbUpgrade = new QProgressBar(this);
    m_pbUpgrade->setObjectName("pbUpgrade");
    m_pbUpgrade->setRange(0, kUploadProgressMax);
    m_pbUpgrade->setValue(0);

    auto* marks = new QGroupBox("Scale marks", this);
    auto* marksColumn = new QVBoxLayout(marks);
    marksColumn->addWidget(m_lstDial);
    m_lblMark = new QLabel(this);
    m_lblMark->setAlignment(Qt::AlignCenter);
    marksColumn->addWidget(m_lblMark);

    auto* needle = new QGroupBox("Needle", this);
    auto* needleGrid = new QGridLayout(needle);
    needleGrid->addWidget(m_cmdDn, 0, 0);
    needleGrid->addWidget(m_cmdUp, 0, 1);
    needleGrid->addWidget(m_cmdCycle, 1, 0, 1, 2);
    needleGrid->addWidget(m_cmdReset, 2, 0, 1, 2);

    auto* meter = new QGroupBox("Meter", this);
    auto* meterColumn = new QVBoxLayout(meter);
    meterColumn->addWidget(m_cmdSave);
    meterColumn->addWidget(m_command2);

    auto* side = new QVBoxLayout;
    side->addWidget(needle);
    side->addWidget(meter);
    side->addStretch(1);

    auto* middle = new QHBoxLayout;
    middle->addWidget(marks, 1);
    middle->addLayout(side);

    auto* hint = new QLabel(
        "Select a mark, then hold + or - until the meter's needle sits exactly on it.", this);
    hint->setWordWrap(true);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_pbUpgrade, 1);
    bottom->addWidget(m_cmdExit);

    auto* root = new QVBoxLayout(this);
    root->addWidget(hint);
    root->addLayout(middle, 1);
    root->addLayout(bottom);
    root->setSizeConstraint(QLayout::SetFixedSize);
}

void ScaleDialog::refresh() {
    const QSignalBlocker quiet(m_lstDial);
    const int n = m_model.count();
    while (m_lstDial->count() > n) delete m_lstDial->takeItem(m_lstDial->count() - 1);
    while (m_lstDial->count() < n) {
        auto* item = new QListWidgetItem(m_lstDial);
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    for (int i = 0; i < n; ++i) {
        QListWidgetItem* item = m_lstDial->item(i);
        item->setText(QString::fromStdString(m_model.lineText(i)));
        item->setToolTip(QString("Mark %1, nominal %2").arg(i + 1).arg(m_model.nominal(i)));
    }
    if (n > 0) {
        const int i = m_model.currentIndex();
        m_lstDial->setCurrentRow(i);
        const int offset = m_model.values()[static_cast<std::size_t>(i)] - m_model.nominal(i);
        m_lblMark->setText(QString("Mark %1 of %2\nnominal %3, %4%5")
                               .arg(i + 1)
                               .arg(n)
                               .arg(m_model.nominal(i))
                               .arg(offset > 0 ? "+" : "")
                               .arg(offset));
    }
    m_cmdCycle->setEnabled(n > 0 && !m_uploading);
    m_cmdSave->setEnabled(m_model.valuesChanged() && !m_uploading);
}

void ScaleDialog::setBusy(bool busy) {
    m_uploading = busy;
    // While lines are in flight nothing else may talk to the meter; only
    // "Terminate" stays, as the way out of a loader that has gone astray.
    for (QWidget* w :
         std::initializer_list<QWidget*>{m_lstDial, m_cmdUp, m_cmdDn, m_cmdReset, m_cmdExit})
        w->setEnabled(!busy);
    refresh();
}

void ScaleDialog::upload() {
    if (m_uploading) return;
    const CorrectionTable table = m_model.takeOver();
    setBusy(true);
    m_pbUpgrade->setValue(0);
    uploadCorrectionTable(m_port, m_pump, m_prompter, table,
                          [this](int value) { m_pbUpgrade->setValue(value); });
    setBusy(false);
    // The values are kept whether or not the meter took them all.
    if (m_saveSessionConfig) m_saveSessionConfig();
}

bool ScaleDialog::eventFilter(QObject* watched, QEvent* event) {
    // Before the view moves the selection, so a press can tell which row was current.
    if (watched == m_lstDial->viewport() && event->type() == QEvent::MouseButtonPress)
        m_rowBeforePress = m_model.currentIndex();
    return QDialog::eventFilter(watched, event);
}

bool ScaleDialog::mayClose() {
    if (m_uploading) return false;
    m_model.release();
    return m_model.mayClose(m_prompter);
}

void ScaleDialog::reject() {
    if (mayClose()) QDialog::reject();
}

void ScaleDialog::closeEvent(QCloseEvent* event) {
    // QDialog's own handler would call reject() and ask a second time.
    if (mayClose()) {
        QDialog::reject();
        event->accept();
    } else {
        event->ignore();
    }
}

}  // namespace lv
