#include "app/qt_main_menus.h"

#include <QFileInfo>
#include <QKeySequence>
#include <QStringList>
#include <utility>

#include "common/vb_format.h"
#include "settings/settings_table.h"
#include "signal/lamp_rules.h"

namespace lv {
namespace {

using Items = std::vector<std::pair<QAction*, int>>;

const char* const kIndex = "Index";

void run(const std::function<void()>& hook) {
    if (hook) hook();
}

// The submenu's own action carries its name too, so action() finds it and the
// window can show or hide the whole submenu through it.
template <typename Parent>
QMenu* addNamedMenu(Parent* parent, const QString& caption, const QString& name) {
    auto* menu = new QMenu(caption, parent);
    menu->setObjectName(name);
    menu->menuAction()->setObjectName(name);
    parent->addMenu(menu);
    return menu;
}

QAction* addItem(QMenu* menu, const QString& caption, const QString& name, int index = -1) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(name);
    if (index >= 0) a->setProperty(kIndex, index);
    return a;
}

// A control array: the items share one name and carry their index, which is
// also the value they stand for.
Items addArray(QMenu* menu, const QString& name, const QStringList& captions, int firstIndex) {
    Items items;
    for (int i = 0; i < captions.size(); ++i) {
        QAction* a = addItem(menu, captions[i], name, firstIndex + i);
        a->setCheckable(true);
        items.emplace_back(a, firstIndex + i);
    }
    return items;
}

// Two items with names of their own, for a setting that is on or off.
Items addOnOff(QMenu* menu, const QString& onName, const QString& offName) {
    Items items{{addItem(menu, "On", onName), 1}, {addItem(menu, "Off", offName), 0}};
    for (auto& [a, value] : items) a->setCheckable(true);
    return items;
}

// The numbered choices kept as text in the settings file.
std::optional<int> keptTextIndex(const std::string& text) {
    const auto n = vbCInt(text);
    return n ? std::optional<int>(*n) : std::nullopt;
}

constexpr int kTimescaleStep = 8;  // seconds per Timescale item

enum class Redraw { Panel, Chart, Layout };

struct ColourItem {
    const char* caption;
    const char* name;
    Colour Settings::*member;
    Redraw redraw;
    bool separatorBefore;
};

// Face, needles, lamps, chart. The window background is laid out with the
// window, so it takes the layout step rather than a panel redraw.
const ColourItem kColourItems[] = {
    {"Dial", "mnuSetColDial", &Settings::Dial_Color, Redraw::Panel, false},
    {"Panel", "mnuSetColPanel", &Settings::Panel_Color, Redraw::Panel, false},
    {"Scale", "mnuSetColScale", &Settings::Scale_Color, Redraw::Panel, false},
    {"Text", "mnuSetColText", &Settings::Text_Color, Redraw::Panel, false},
    {"Background", "mnuSetColBackground", &Settings::Background_Color, Redraw::Layout, false},
    {"Needle", "mnuSetColNeedle", &Settings::MainNeedle_Color, Redraw::Panel, true},
    {"Freeze Needle", "mnuSetColFreezeNeedle", &Settings::FreezeNeedle_Color, Redraw::Panel, false},
    {"Needle SET Lamp", "mnuSetColLedSet", &Settings::LED_Set_Color, Redraw::Panel, true},
    {"Body Motion Lamp", "mnuSetColLedBm", &Settings::LED_BM_Color, Redraw::Panel, false},
    {"Needle Lag Lamp", "mnuSetColLedLag", &Settings::LED_Lag_Color, Redraw::Panel, false},
    {"Graph Sheet", "mnuSetColGraphSheet", &Settings::GraphSheet_Color, Redraw::Chart, true},
    {"Graph Pen", "mnuSetColGraphPen", &Settings::GraphPen_Color, Redraw::Chart, false},
    {"Graph Grid", "mnuSetColGraphGrid", &Settings::GraphGrid_Color, Redraw::Chart, false},
};

}  // namespace

MainMenus::MainMenus(QMenuBar* bar, SettingsStore& store, MeterState& st, MenuHooks hooks,
                     QObject* parent)
    : QObject(parent), m_bar(bar), m_store(store), m_st(st), m_hooks(std::move(hooks)) {
    QMenu* file = addNamedMenu(m_bar, "&File", "mnuFile");
    buildFile(file);
    QAction* quit = addItem(file, "&Quit", "mnuFileQuit");
    // Themes without a Quit binding (Windows-like key schemes) still get Ctrl+Q.
    QList<QKeySequence> quitKeys = QKeySequence::keyBindings(QKeySequence::Quit);
    const QKeySequence ctrlQ(Qt::CTRL | Qt::Key_Q);
    if (!quitKeys.contains(ctrlQ)) quitKeys.append(ctrlQ);
    quit->setShortcuts(quitKeys);
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, this, [this] { run(m_hooks.quit); });

    buildConnection();
    buildSettings();
    buildViewAndGraph();

    QMenu* help = addNamedMenu(m_bar, "&Help", "mnuHelp");
    QAction* guide = addItem(help, "User Guide", "mnuHelpHelp");
    guide->setShortcut(QKeySequence::HelpContents);
    connect(guide, &QAction::triggered, this, [this] { run(m_hooks.help); });
    QAction* about = addItem(help, "About lv_Analog", "mnuhelpAbout");
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, [this] { run(m_hooks.about); });
    syncFromSettings();
}

void MainMenus::buildFile(QMenu* file) {
    QAction* open = addItem(file, "&Open...", "mnuFileOpen");
    open->setShortcut(QKeySequence::Open);
    connect(open, &QAction::triggered, this, [this] { run(m_hooks.open); });

    QMenu* recent = addNamedMenu(file, "Open &Recent", "mnuFileRecent");
    // Filled when opened: the list changes with every load and save.
    connect(recent, &QMenu::aboutToShow, this, [this, recent] {
        recent->clear();
        const QStringList paths = m_hooks.recentFiles ? m_hooks.recentFiles() : QStringList();
        for (int i = 0; i < paths.size(); ++i) {
            const QString path = paths[i];
            // Numbered for the keyboard; the full path shows who is who.
            QAction* item = recent->addAction(
                QString("&%1 %2").arg((i + 1) % 10).arg(QFileInfo(path).fileName()));
            item->setToolTip(path);
            item->setStatusTip(path);
            connect(item, &QAction::triggered, this, [this, path] {
                if (m_hooks.openRecent) m_hooks.openRecent(path);
            });
        }
        if (paths.isEmpty()) recent->addAction("(none)")->setEnabled(false);
    });
    // An empty menu shows nothing to open until it has been filled once.
    recent->addAction("(none)")->setEnabled(false);

    file->addSeparator();
    QAction* save = addItem(file, "&Save", "mnuFileSave");
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, [this] { run(m_hooks.save); });
    QAction* saveAs = addItem(file, "Save &As...", "mnuFileSaveAs");
    saveAs->setShortcut(QKeySequence::SaveAs);
    connect(saveAs, &QAction::triggered, this, [this] { run(m_hooks.saveAs); });
    QAction* exportItem = addItem(file, "&Export...", "mnuFileExport");
    exportItem->setToolTip("The records as CSV and a picture of the session as PNG");
    connect(exportItem, &QAction::triggered, this, [this] { run(m_hooks.exportRecording); });
    file->addSeparator();
}

void MainMenus::buildConnection() {
    m_connection = addNamedMenu(m_bar, "&Connection", "mnuConnection");
    connect(addItem(m_connection, "Connect", "mnuConnectionConnect"), &QAction::triggered, this,
            [this] { run(m_hooks.connect); });
    m_connection->addSeparator();
    addItem(m_connection, "Ports", "mnuConnectionPortComm", 0)->setEnabled(false);
    m_portsEnd = m_connection->addSeparator();

    m_sensor = addNamedMenu(m_connection, "Sensor", "mnuConnectSensor");
    m_sensor->menuAction()->setVisible(false);
    QAction* local = addItem(m_sensor, "Local", "mnuSensorLocal");
    QAction* remote = addItem(m_sensor, "Remote", "mnuSensorRemote");
    for (QAction* a : {local, remote}) {
        a->setCheckable(true);
        connect(a, &QAction::triggered, this, [this, local, remote, a] {
            if (m_hooks.sensor) m_hooks.sensor(a == remote);
            // The choice is sent to the meter, which does not report it back,
            // so neither item claims to be the one in force.
            local->setChecked(false);
            remote->setChecked(false);
        });
    }

    m_connection->addSeparator();
    QAction* needleTest = addItem(m_connection, "Needle Test", "mnuConnectNeedleTest");
    needleTest->setCheckable(true);
    connect(needleTest, &QAction::triggered, this, [this, needleTest](bool on) {
        // The mark shows whether the test runs: a refused start leaves it off.
        needleTest->setChecked(m_hooks.needleTest ? m_hooks.needleTest(on) : false);
    });
    // A recording or a playback holds the display and the placeholder's
    // clock: the test is refused then, and the item shows it.
    connect(m_connection, &QMenu::aboutToShow, this, [this, needleTest] {
        needleTest->setEnabled(m_st.TestModeOn ||
                               (m_st.RunMode != kRunRecording && m_st.RunMode != kRunPlayback));
    });
    QAction* testAudio = addItem(m_connection, "Test Audio", "mnuConnTestAudio");
    testAudio->setCheckable(true);
    connect(testAudio, &QAction::triggered, this, [this, testAudio] {
        testAudio->setChecked(m_hooks.testAudio ? m_hooks.testAudio() : false);
    });
}

void MainMenus::setPorts(const std::vector<std::string>& paths, const std::vector<bool>& available,
                         int checked) {
    // Items are reused rather than rebuilt: the window may call this from
    // inside a port item's own click.
    while (m_ports.size() < paths.size()) {
        const int n = static_cast<int>(m_ports.size()) + 1;
        auto* a = new QAction(m_connection);
        a->setObjectName("mnuConnectionPortComm");
        a->setProperty(kIndex, n);
        a->setCheckable(true);
        m_connection->insertAction(m_portsEnd, a);
        connect(a, &QAction::triggered, this, [this, a, n](bool nowChecked) {
            // The check mark moves only when the port answers: the window
            // sets it through setPorts, so undo the toggle of the click.
            a->setChecked(!nowChecked);
            if (m_hooks.port) m_hooks.port(n);
        });
        m_ports.push_back(a);
    }
    for (std::size_t i = 0; i < m_ports.size(); ++i) {
        const int n = static_cast<int>(i) + 1;
        const bool shown = i < paths.size() && i < available.size() && available[i];
        QAction* a = m_ports[i];
        if (i < paths.size())
            a->setText(QString("Comm%1:\t%2").arg(n).arg(QString::fromStdString(paths[i])));
        a->setVisible(shown);
        a->setChecked(n == checked);
    }
}

void MainMenus::showSensorMenu(bool shown) {
    m_sensor->menuAction()->setVisible(shown);
}

void MainMenus::buildSettings() {
    QMenu* settings = addNamedMenu(m_bar, "&Settings", "mnuSettings");
    connect(addItem(settings, "Meter Setup...", "mnuSettingsMeter"), &QAction::triggered, this,
            [this] { run(m_hooks.meterSetup); });
    connect(addItem(settings, "Dial Calibration", "mnuSettingstDialTest"), &QAction::triggered,
            this, [this] { run(m_hooks.dialCalibration); });
    buildColours(settings);

    QMenu* width = addNamedMenu(settings, "Needle Width", "mnuSettingsNeedleWidth");
    addGroup(
        addArray(width, "mnuSetNeedleWidth", {"1", "2", "3", "4", "5", "6", "7", "8"}, 1),
        [this] { return std::optional<int>(m_store.values.Needle_Width); },
        [this](int w) {
            m_store.values.Needle_Width = static_cast<std::int16_t>(w);
            run(m_hooks.redrawPanel);
        });

    buildAlerts(settings);

    settings->addSeparator();
    const std::pair<const char*, const char*> fileItems[] = {
        {"&Load Settings", "mnuLoadSettings"},
        {"Save Settings", "mnuSaveSettings"},
        {"Save Settings &As", "mnuSaveSettingsAs"},
    };
    const std::function<void()>* fileHooks[] = {&m_hooks.loadSettings, &m_hooks.saveSettings,
                                                &m_hooks.saveSettingsAs};
    for (int i = 0; i < 3; ++i)
        connect(addItem(settings, fileItems[i].first, fileItems[i].second), &QAction::triggered,
                this, [hook = fileHooks[i]] { run(*hook); });

    QMenu* autoSave = addNamedMenu(settings, "Autosave Settings", "mnuSettingsAutoSave");
    Items modes{{addItem(autoSave, "On", "mnuSettingsAutoSaveOn"), kAutoSaveOn},
                {addItem(autoSave, "Prompt", "mnuSettingsAutoSavePrompt"), kAutoSavePrompt},
                {addItem(autoSave, "Off", "mnuSettingsAutoSaveOff"), kAutoSaveOff}};
    for (auto& [a, mode] : modes) a->setCheckable(true);
    addGroup(
        std::move(modes), [this] { return std::optional<int>(m_store.AutoSaveMode); },
        [this](int mode) { m_store.AutoSaveMode = mode; });
}

void MainMenus::buildColours(QMenu* settings) {
    QMenu* colours = addNamedMenu(settings, "Colors", "mnuSettingsColors");
    for (const ColourItem& c : kColourItems) {
        if (c.separatorBefore) colours->addSeparator();
        connect(addItem(colours, c.caption, c.name), &QAction::triggered, this, [this, &c] {
            if (!m_hooks.pickColour) return;
            Colour& value = m_store.values.*c.member;
            const auto picked = m_hooks.pickColour(value, QString("%1 Color").arg(c.caption));
            if (!picked) return;
            value = *picked;
            switch (c.redraw) {
                case Redraw::Panel:
                    run(m_hooks.redrawPanel);
                    break;
                case Redraw::Chart:
                    run(m_hooks.reinitChart);
                    break;
                case Redraw::Layout:
                    run(m_hooks.relayout);
                    break;
            }
        });
        if (c.member == &Settings::FreezeNeedle_Color) {
            // The shadow's colour is a mix of dial and needle, so it sits with them.
            QMenu* shadow = addNamedMenu(colours, "Shadow Needle", "mnuSettingsColorsShadow");
            addGroup(
                addArray(shadow, "mnuSetColShadow",
                         {"None", "Faint", "Light", "Medium", "Strong", "Full"}, 0),
                [this] { return std::optional<int>(m_store.values.ShadowNeedleColor_Index); },
                [this](int k) {
                    m_store.values.ShadowNeedleColor_Index = static_cast<std::int16_t>(k);
                    run(m_hooks.redrawPanel);
                });
        }
    }
    colours->addSeparator();
    connect(addItem(colours, "Set Defaults", "mnuSettingsColorsDefault"), &QAction::triggered, this,
            [this] {
                setDefaultColours(m_store.values);
                syncChecks();  // the shadow index is one of the colour keys
                run(m_hooks.redrawPanel);
                run(m_hooks.reinitChart);
                run(m_hooks.relayout);
            });
}

void MainMenus::buildAlerts(QMenu* settings) {
    QMenu* alerts = addNamedMenu(settings, "Alerts", "mnuSettingsAlerts");
    Settings& v = m_store.values;

    QMenu* bm = addNamedMenu(alerts, "Body Motion Detector", "mnuSettingsAlertsBmSens");
    addGroup(
        addArray(bm, "mnuSettingsBodyMotionThreshold", {"Fine", "Medium", "Coarse"}, 1),
        [&v] { return std::optional<int>(v.BM_Threshold_Index); },
        [&v](int k) { v.BM_Threshold_Index = static_cast<std::int16_t>(k); });

    QMenu* freeze = addNamedMenu(alerts, "Body Motion Freeze", "mnuSettingsBmFreeze");
    addGroup(
        addOnOff(freeze, "mnuSetBmFreezeOn", "mnuSetBmFreezeOff"),
        [&v] { return std::optional<int>(v.FreezeEnable ? 1 : 0); },
        [&v](int on) { v.FreezeEnable = on != 0; });

    QMenu* lag = addNamedMenu(alerts, "Needle Lag", "mnuSettingsAlertsLag");
    addGroup(
        addArray(lag, "mnuSettingsLagThreshold",
                 {"1/50 sec", "2/50 sec", "3/50 sec", "4/50 sec", "1/10 sec"}, 1),
        [&v] { return std::optional<int>(v.DataLag_Index); },
        [this, &v](int k) {
            v.DataLag_Index = static_cast<std::int16_t>(k);
            m_st.LagLimit = lagLimitForItem(k);
        });

    QMenu* sw = addNamedMenu(alerts, "External Switch", "mnuSettingsExtSw");
    addGroup(
        addArray(sw, "mnuSettingsExtSwMode", {"Needle SET", "Tag"}, 1),
        [&v] { return std::optional<int>(v.SwitchMode_Index); },
        [this, &v](int k) {
            v.SwitchMode_Index = static_cast<std::int16_t>(k);
            run(m_hooks.relayout);  // the Tag label comes or goes
        });

    QMenu* bd = addNamedMenu(alerts, "Needle  BD Counter", "mnuSetNeedleBD");
    addGroup(
        addOnOff(bd, "mnuSetNeedleBDOn", "mnuSetNeedleBDOff"),
        [&v] { return std::optional<int>(v.NeedleBdEnable ? 1 : 0); },
        [&v](int on) { v.NeedleBdEnable = on != 0; });
}

void MainMenus::buildViewAndGraph() {
    QMenu* view = addNamedMenu(m_bar, "&View", "mnuView");
    addToggle(view, "Graph", "mnuGraphVisible", &Settings::GraphVisible, &MenuHooks::relayout);
    addToggle(view, "Recording Panel", "mnuRecordVisible", &Settings::RecordVisible,
              &MenuHooks::relayout);

    QMenu* graph = addNamedMenu(m_bar, "&Graph", "mnuGraph");
    Settings& v = m_store.values;

    QMenu* height = addNamedMenu(graph, "Height", "mnuGraphHeight");
    addGroup(
        addArray(height, "mnuGraphHeightIndex", {"1", "2", "3", "4", "5"}, 1),
        [&v] { return keptTextIndex(v.GraphHeight_Index); },
        [this, &v](int k) {
            v.GraphHeight_Index = std::to_string(k);
            run(m_hooks.relayout);
        });

    QMenu* pen = addNamedMenu(graph, "Pen Width", "mnuGraphPenWidth");
    addGroup(
        addArray(pen, "mnuGraphPenWidthIndex", {"1", "2", "3"}, 1),
        [&v] { return keptTextIndex(v.GraphPenWidth_Index); },
        [this, &v](int k) {
            v.GraphPenWidth_Index = std::to_string(k);
            run(m_hooks.reinitChart);
        });

    addToggle(graph, "Invert", "mnuGraphInvert", &Settings::GraphInvert, &MenuHooks::reinitChart);

    QMenu* timescale = addNamedMenu(graph, "Timescale", "mnuGraphTimescale");
    addGroup(
        addArray(timescale, "mnuGraphTimescaleSecs", {"8", "16", "24", "32"}, 1),
        [&v]() -> std::optional<int> {
            const auto secs = keptTextIndex(v.GraphTimescale);
            if (!secs || *secs % kTimescaleStep != 0) return std::nullopt;
            return *secs / kTimescaleStep;
        },
        [this, &v](int k) {
            v.GraphTimescale = std::to_string(k * kTimescaleStep);
            run(m_hooks.reinitChart);
        });

    addToggle(graph, "Grid X", "mnuGraphGridX", &Settings::GridX, &MenuHooks::reinitChart);
    addToggle(graph, "Grid Y", "mnuGraphGridY", &Settings::GridY, &MenuHooks::reinitChart);
}

void MainMenus::addGroup(Items items, std::function<std::optional<int>()> current,
                         std::function<void(int)> choose) {
    const std::size_t g = m_groups.size();
    for (const auto& [a, value] : items)
        connect(a, &QAction::triggered, this, [this, g, choose, value = value] {
            choose(value);
            // Also when the item was already checked: the click toggled it off.
            for (const auto& [item, itemValue] : m_groups[g].items)
                item->setChecked(itemValue == m_groups[g].current());
        });
    m_groups.push_back({std::move(items), std::move(current)});
}

void MainMenus::addToggle(QMenu* menu, const QString& caption, const QString& name,
                          bool Settings::*flag, std::function<void()> MenuHooks::*after) {
    QAction* a = addItem(menu, caption, name);
    a->setCheckable(true);
    addGroup(
        {{a, 1}}, [this, flag] { return std::optional<int>(m_store.values.*flag ? 1 : 0); },
        [this, flag, after](int) {
            m_store.values.*flag = !(m_store.values.*flag);
            run(m_hooks.*after);
        });
}

void MainMenus::syncChecks() {
    for (const CheckGroup& g : m_groups) {
        const std::optional<int> current = g.current();
        for (const auto& [a, value] : g.items) a->setChecked(current == value);
    }
}

void MainMenus::syncFromSettings() {
    syncChecks();
    m_st.LagLimit = lagLimitForItem(m_store.values.DataLag_Index);
}

QAction* MainMenus::action(const QString& objectName, int index) const {
    for (QAction* a : m_bar->findChildren<QAction*>(objectName)) {
        if (index == -1) return a;
        const QVariant i = a->property(kIndex);
        if (i.isValid() && i.toInt() == index) return a;
    }
    return nullptr;
}

}  // namespace lv
