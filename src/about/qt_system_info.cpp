#include "about/qt_system_info.h"

#include <unistd.h>
#include <QAudioDevice>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QMediaDevices>
#include <QPushButton>
#include <QSerialPortInfo>
#include <QSysInfo>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace lv {

namespace {

std::string str(const QString& text) {
    return text.toStdString();
}

std::vector<InfoRow> audioRows(const QList<QAudioDevice>& devices, const QAudioDevice& preferred) {
    std::vector<InfoRow> rows;
    for (const QAudioDevice& d : devices)
        rows.push_back(audioDeviceRow(str(d.description()), d.id() == preferred.id()));
    return rows;
}

std::vector<InfoRow> rowsOf(const InfoRows& source, std::vector<InfoRow> (*fallback)()) {
    return source ? source() : fallback();
}

constexpr int kDialogWidth = 700;
constexpr int kDialogHeight = 460;

}  // namespace

std::vector<InfoRow> systemSerialPorts() {
    auto ports = QSerialPortInfo::availablePorts();
    std::sort(ports.begin(), ports.end(), [](const QSerialPortInfo& a, const QSerialPortInfo& b) {
        return a.systemLocation() < b.systemLocation();
    });
    std::vector<InfoRow> rows;
    for (const QSerialPortInfo& p : ports) {
        const QByteArray path = p.systemLocation().toLocal8Bit();
        const bool accessible = ::access(path.constData(), R_OK | W_OK) == 0;
        rows.push_back(serialPortRow(str(p.systemLocation()), str(p.description()),
                                     str(p.manufacturer()), accessible));
    }
    return rows;
}

std::vector<InfoRow> systemAudioInputs() {
    return audioRows(QMediaDevices::audioInputs(), QMediaDevices::defaultAudioInput());
}

std::vector<InfoRow> systemAudioOutputs() {
    return audioRows(QMediaDevices::audioOutputs(), QMediaDevices::defaultAudioOutput());
}

std::vector<InfoSection> gatherSystemInfo(const std::string& versionText,
                                          const SystemInfoSources& sources) {
    const std::string noSound = "None found (is a sound server running?)";
    return {
        {"Program",
         {{kProgramTitle, versionText},
          {"Qt", std::string(qVersion()) + " (built with " + QT_VERSION_STR + ")"},
          {"Display", str(QGuiApplication::platformName())}},
         ""},
        {"Operating system",
         {{"System", str(QSysInfo::prettyProductName())},
          {"Kernel", str(QSysInfo::kernelType() + " " + QSysInfo::kernelVersion())},
          {"Processor", str(QSysInfo::currentCpuArchitecture())}},
         ""},
        {"Serial ports", rowsOf(sources.serialPorts, systemSerialPorts),
         "None found (a USB-serial adapter shows here once it is plugged in)"},
        {"Sound inputs", rowsOf(sources.audioInputs, systemAudioInputs), noSound},
        {"Sound outputs", rowsOf(sources.audioOutputs, systemAudioOutputs), noSound},
    };
}

SystemInfoDialog::SystemInfoDialog(std::vector<InfoSection> sections, QWidget* parent)
    : QDialog(parent), m_sections(std::move(sections)) {
    setObjectName("frmSysInfo");
    setWindowTitle(kSystemInfoTitle);

    m_tree = new QTreeWidget(this);
    m_tree->setObjectName("treeInfo");
    m_tree->setColumnCount(2);
    m_tree->setHeaderLabels({"Item", "Details"});
    m_tree->setRootIsDecorated(false);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setAlternatingRowColors(true);
    for (const InfoSection& section : m_sections) {
        auto* top = new QTreeWidgetItem(m_tree, {QString::fromStdString(section.title)});
        QFont bold = top->font(0);
        bold.setBold(true);
        top->setFont(0, bold);
        top->setFirstColumnSpanned(true);
        for (const InfoRow& row : section.rows) {
            const QString detail = QString::fromStdString(row.detail);
            auto* item = new QTreeWidgetItem(top, {QString::fromStdString(row.item), detail});
            item->setToolTip(1, detail);  // a long one is cut short in the column
        }
        if (section.rows.empty()) {
            auto* none = new QTreeWidgetItem(top, {QString::fromStdString(section.emptyText)});
            none->setFirstColumnSpanned(true);
            none->setForeground(0, palette().brush(QPalette::Disabled, QPalette::Text));
        }
    }
    m_tree->expandAll();
    m_tree->resizeColumnToContents(0);
    m_tree->header()->setStretchLastSection(true);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cmdCopy = buttons->addButton("&Copy", QDialogButtonBox::ActionRole);
    cmdCopy->setObjectName("cmdCopy");
    cmdCopy->setToolTip("Copy everything shown here as text");
    QPushButton* cmdClose = buttons->addButton("Close", QDialogButtonBox::RejectRole);
    cmdClose->setObjectName("cmdClose");
    cmdClose->setDefault(true);
    connect(cmdCopy, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(plainText()); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tree, 1);
    layout->addWidget(buttons);
    resize(kDialogWidth, kDialogHeight);
}

}  // namespace lv
