#pragma once
#include <QDialog>
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "about/about_text.h"

class QTreeWidget;

namespace lv {

// Where the lists of devices come from. An empty member asks the system.
using InfoRows = std::function<std::vector<InfoRow>()>;
struct SystemInfoSources {
    InfoRows serialPorts;   // QSerialPortInfo
    InfoRows audioInputs;   // QMediaDevices
    InfoRows audioOutputs;  // QMediaDevices
};

// The system's own lists.
std::vector<InfoRow> systemSerialPorts();
std::vector<InfoRow> systemAudioInputs();
std::vector<InfoRow> systemAudioOutputs();

// Everything the system information shows, in order: the program and Qt, the
// operating system, the serial ports, the sound inputs and outputs.
std::vector<InfoSection> gatherSystemInfo(const std::string& versionText,
                                          const SystemInfoSources& sources);

// frmSysInfo: the sections as a tree, with a button that copies them as text
// (for a message to whoever helps with a problem).
class SystemInfoDialog : public QDialog {
    Q_OBJECT
public:
    explicit SystemInfoDialog(std::vector<InfoSection> sections, QWidget* parent = nullptr);

    QString plainText() const { return QString::fromStdString(systemInfoText(m_sections)); }
    QTreeWidget* tree() const { return m_tree; }

private:
    std::vector<InfoSection> m_sections;
    QTreeWidget* m_tree = nullptr;
};

}  // namespace lv
