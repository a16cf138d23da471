#pragma once
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/colour.h"
#include "settings/settings_file.h"
#include "signal/meter_state.h"

namespace lv {

// What the menus ask of the window. Empty members are skipped.
struct MenuHooks {
    std::function<void()> connect;             // mnuConnectionConnect: the whole search
    std::function<void(int portNumber)> port;  // a "Comm" n ":" item: try that port
    std::function<void(bool remote)> sensor;   // mnuSensorLocal / mnuSensorRemote
    std::function<void()> meterSetup;          // opens frmMeter
    std::function<void()> loadSettings;        // mnuLoadSettings
    std::function<void()> saveSettings;        // mnuSaveSettings
    std::function<void()> saveSettingsAs;      // mnuSaveSettingsAs
    // A choice changed the face (colours, needle width): rebuild the dial.
    std::function<void()> redrawPanel;
    // A Graph menu choice: the chart rebuilds itself on its next sample.
    std::function<void()> reinitChart;
    // Chart shown/hidden or its height, recording panel shown/hidden.
    std::function<void()> relayout;
    // The colour dialog, starting at `current`; nothing when cancelled.
    std::function<std::optional<Colour>(Colour current, const QString& title)> pickColour;
    // The File menu's recordings: Open..., Open Recent, Save, Save As..., Export.
    std::function<void()> open;
    std::function<QStringList()> recentFiles;  // full paths, newest first
    std::function<void(const QString& path)> openRecent;
    std::function<void()> save;
    std::function<void()> saveAs;
    std::function<void()> exportRecording;
    std::function<void()> quit;
    // mnuConnectNeedleTest: start (true) or stop it; whether it now runs.
    std::function<bool(bool on)> needleTest;
    // mnuConnTestAudio: flips the beep; whether it is now on.
    std::function<bool()> testAudio;
    std::function<void()> dialCalibration;  // mnuSettingstDialTest
    std::function<void()> help;             // mnuHelpHelp
    std::function<void()> about;            // mnuhelpAbout
};

// The main window's menu bar. Every item the program's documents name carries
// that name as its objectName; the handlers change the settings in the store
// (and LagLimit in the meter state) and then tell the window through the hooks.
class MainMenus : public QObject {
    Q_OBJECT
public:
    MainMenus(QMenuBar* bar, SettingsStore& store, MeterState& st, MenuHooks hooks,
              QObject* parent = nullptr);

    // Puts every check mark where the settings say, and LagLimit from
    // DataLag_Index (start-up step 9, and after Load Settings).
    void syncFromSettings();

    // The port menu: one "Comm" n ":" item per available port with its device
    // path beside it; `checked` (1-based, 0 = none) carries the check mark.
    void setPorts(const std::vector<std::string>& paths, const std::vector<bool>& available,
                  int checked);
    // The sensor choice is shown once a meter that has one has been started.
    void showSensorMenu(bool shown);

    // The item with this objectName, or nullptr. Items of a control array
    // share their objectName and carry their index in the property "Index";
    // -1 takes the first item of that name.
    QAction* action(const QString& objectName, int index = -1) const;

private:
    // Items of which at most one carries the check mark: the one whose value
    // the settings hold (none when they hold a value no item offers). A toggle
    // is a group of one item with the value 1.
    struct CheckGroup {
        std::vector<std::pair<QAction*, int>> items;
        std::function<std::optional<int>()> current;
    };

    void buildFile(QMenu* file);
    void buildConnection();
    void buildSettings();
    void buildColours(QMenu* settings);
    void buildAlerts(QMenu* settings);
    void buildViewAndGraph();
    // Wires a group: a click runs `choose` with the item's value, then the
    // check marks follow the settings.
    void addGroup(std::vector<std::pair<QAction*, int>> items,
                  std::function<std::optional<int>()> current, std::function<void(int)> choose);
    void addToggle(QMenu* menu, const QString& caption, const QString& name, bool Settings::*flag,
                   std::function<void()> MenuHooks::*after);
    void syncChecks();

    QMenuBar* m_bar;
    SettingsStore& m_store;
    MeterState& m_st;
    MenuHooks m_hooks;
    QMenu* m_connection = nullptr;
    QAction* m_portsEnd = nullptr;  // the port items go before it
    QMenu* m_sensor = nullptr;
    std::vector<QAction*> m_ports;  // "Comm" n ":" at [n - 1], reused, never deleted
    std::vector<CheckGroup> m_groups;
};

}  // namespace lv
