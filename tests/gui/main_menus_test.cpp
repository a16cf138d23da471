#include <gtest/gtest.h>

#include <QMenuBar>
#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/qt_main_menus.h"

namespace lv {
namespace {

using Strings = std::vector<std::string>;

// A menu bar with the program's menus, hooks that log what they were asked.
struct Rig {
    explicit Rig(const std::function<void(SettingsStore&)>& setUp = {}) {
        store.values = Settings{};
        if (setUp) setUp(store);
        MenuHooks h;
        auto log = [this](const char* what) { return [this, what] { fired.push_back(what); }; };
        h.connect = log("connect");
        h.meterSetup = log("meterSetup");
        h.loadSettings = log("loadSettings");
        h.saveSettings = log("saveSettings");
        h.saveSettingsAs = log("saveSettingsAs");
        h.redrawPanel = log("redrawPanel");
        h.reinitChart = log("reinitChart");
        h.relayout = log("relayout");
        h.quit = log("quit");
        h.port = [this](int n) { fired.push_back("port " + std::to_string(n)); };
        h.sensor = [this](bool remote) { fired.push_back(remote ? "remote" : "local"); };
        h.pickColour = [this](Colour current, const QString& title) {
            offered = current;
            titles.push_back(title.toStdString());
            return answer;
        };
        menus = std::make_unique<MainMenus>(&bar, store, st, h);
    }
    void click(const char* name, int index = -1) {
        QAction* a = menus->action(name, index);
        ASSERT_NE(a, nullptr) << name << " " << index;
        a->trigger();
    }
    // The checked items among those with these names, as "name" or "name#index".
    Strings checkedAmong(const Strings& names) const {
        Strings out;
        for (const QAction* a : bar.findChildren<QAction*>()) {
            const std::string name = a->objectName().toStdString();
            if (!a->isChecked() || std::find(names.begin(), names.end(), name) == names.end())
                continue;
            const QVariant i = a->property("Index");
            out.push_back(i.isValid() ? name + "#" + std::to_string(i.toInt()) : name);
        }
        return out;
    }

    QMenuBar bar;
    SettingsStore store;
    MeterState st;
    std::unique_ptr<MainMenus> menus;
    Strings fired;
    std::optional<Colour> answer;
    Colour offered = 0;
    Strings titles;
};

TEST(MainMenus, ItemsCarryTheirNamesAndCaptions) {
    Rig r;
    const struct {
        const char* name;
        int index;
        const char* caption;
    } items[] = {
        {"mnuFileQuit", -1, "&Quit"},
        {"mnuConnectionConnect", -1, "Connect"},
        {"mnuConnectionPortComm", 0, "Ports"},
        {"mnuSensorLocal", -1, "Local"},
        {"mnuSensorRemote", -1, "Remote"},
        {"mnuSettingsAlertsBmSens", -1, "Body Motion Detector"},
        {"mnuSettingsBodyMotionThreshold", 3, "Coarse"},
        {"mnuSettingsBmFreeze", -1, "Body Motion Freeze"},
        {"mnuSetBmFreezeOff", -1, "Off"},
        {"mnuSettingsAlertsLag", -1, "Needle Lag"},
        {"mnuSettingsLagThreshold", 4, "4/50 sec"},
        {"mnuSettingsLagThreshold", 5, "1/10 sec"},
        {"mnuSettingsExtSw", -1, "External Switch"},
        {"mnuSettingsExtSwMode", 1, "Needle SET"},
        {"mnuSettingsExtSwMode", 2, "Tag"},
        {"mnuSetNeedleBD", -1, "Needle  BD Counter"},
        {"mnuSetNeedleBDOn", -1, "On"},
        {"mnuSettingsColorsDefault", -1, "Set Defaults"},
        {"mnuLoadSettings", -1, "&Load Settings"},
        {"mnuSaveSettings", -1, "Save Settings"},
        {"mnuSaveSettingsAs", -1, "Save Settings &As"},
        {"mnuSettingsAutoSave", -1, "Autosave Settings"},
        {"mnuGraphPenWidthIndex", 1, "1"},
        {"mnuGraphTimescaleSecs", 4, "32"},
        {"mnuGraphHeightIndex", 5, "5"},
    };
    for (const auto& it : items) {
        const QAction* a = r.menus->action(it.name, it.index);
        ASSERT_NE(a, nullptr) << it.name << " " << it.index;
        EXPECT_EQ(a->text().toStdString(), it.caption) << it.name;
    }
    EXPECT_EQ(r.menus->action("mnuSettingsLagThreshold", 6), nullptr);
    EXPECT_EQ(r.menus->action("mnuNothing"), nullptr);
    EXPECT_TRUE(r.menus->action("mnuFileQuit")->shortcuts().contains(QKeySequence("Ctrl+Q")));

    // The autosave items in their order, and the alert menus under Alerts.
    Strings autosave;
    for (const QAction* a : r.menus->action("mnuSettingsAutoSave")->menu()->actions())
        autosave.push_back(a->objectName().toStdString());
    EXPECT_EQ(autosave, Strings({"mnuSettingsAutoSaveOn", "mnuSettingsAutoSavePrompt",
                                 "mnuSettingsAutoSaveOff"}));
    const QMenu* alerts = r.menus->action("mnuSettingsAlerts")->menu();
    for (const char* name : {"mnuSettingsAlertsBmSens", "mnuSettingsBmFreeze",
                             "mnuSettingsAlertsLag", "mnuSettingsExtSw", "mnuSetNeedleBD"})
        EXPECT_TRUE(alerts->actions().contains(r.menus->action(name))) << name;
}

// One click on an item: the setting it stores, the group's check marks after
// it, and the window's hook it calls.
TEST(MainMenus, ClickStoresCheckMarksAndTellsTheWindow) {
    using Read = std::function<std::string(const SettingsStore&, const MeterState&)>;
    const Read lag = [](auto& s, auto& st) {
        return std::to_string(s.values.DataLag_Index) + " limit " + std::to_string(st.LagLimit);
    };
    const Read freeze = [](auto& s, auto&) { return std::to_string(s.values.FreezeEnable); };
    const Read bd = [](auto& s, auto&) { return std::to_string(s.values.NeedleBdEnable); };
    const Read autosave = [](auto& s, auto&) { return std::to_string(s.AutoSaveMode); };
    const Read invert = [](auto& s, auto&) { return std::to_string(s.values.GraphInvert); };
    const Strings freezeItems{"mnuSetBmFreezeOn", "mnuSetBmFreezeOff"};
    const Strings bdItems{"mnuSetNeedleBDOn", "mnuSetNeedleBDOff"};
    const Strings autosaveItems{"mnuSettingsAutoSaveOn", "mnuSettingsAutoSavePrompt",
                                "mnuSettingsAutoSaveOff"};
    const struct {
        const char* name;
        int index;
        int clicks;
        Read read;
        std::string stored;
        Strings group;
        Strings checked;
        Strings fired;
    } rows[] = {
        {"mnuSettingsLagThreshold",
         5,
         1,
         lag,
         "5 limit 5",
         {"mnuSettingsLagThreshold"},
         {"mnuSettingsLagThreshold#5"},
         {}},
        // Clicking the item already chosen keeps its check mark.
        {"mnuSettingsLagThreshold",
         2,
         1,
         lag,
         "2 limit 2",
         {"mnuSettingsLagThreshold"},
         {"mnuSettingsLagThreshold#2"},
         {}},
        {"mnuSettingsBodyMotionThreshold",
         3,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.BM_Threshold_Index); },
         "3",
         {"mnuSettingsBodyMotionThreshold"},
         {"mnuSettingsBodyMotionThreshold#3"},
         {}},
        {"mnuSetBmFreezeOn", -1, 1, freeze, "1", freezeItems, {"mnuSetBmFreezeOn"}, {}},
        {"mnuSetBmFreezeOff", -1, 1, freeze, "0", freezeItems, {"mnuSetBmFreezeOff"}, {}},
        {"mnuSettingsExtSwMode",
         2,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.SwitchMode_Index); },
         "2",
         {"mnuSettingsExtSwMode"},
         {"mnuSettingsExtSwMode#2"},
         {"relayout"}},
        {"mnuSetNeedleBDOn", -1, 1, bd, "1", bdItems, {"mnuSetNeedleBDOn"}, {}},
        {"mnuSetNeedleWidth",
         8,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.Needle_Width); },
         "8",
         {"mnuSetNeedleWidth"},
         {"mnuSetNeedleWidth#8"},
         {"redrawPanel"}},
        {"mnuSetColShadow",
         0,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.ShadowNeedleColor_Index); },
         "0",
         {"mnuSetColShadow"},
         {"mnuSetColShadow#0"},
         {"redrawPanel"}},
        {"mnuGraphHeightIndex",
         5,
         1,
         [](auto& s, auto&) { return s.values.GraphHeight_Index; },
         "5",
         {"mnuGraphHeightIndex"},
         {"mnuGraphHeightIndex#5"},
         {"relayout"}},
        {"mnuGraphPenWidthIndex",
         3,
         1,
         [](auto& s, auto&) { return s.values.GraphPenWidth_Index; },
         "3",
         {"mnuGraphPenWidthIndex"},
         {"mnuGraphPenWidthIndex#3"},
         {"reinitChart"}},
        {"mnuGraphTimescaleSecs",
         3,
         1,
         [](auto& s, auto&) { return s.values.GraphTimescale; },
         "24",
         {"mnuGraphTimescaleSecs"},
         {"mnuGraphTimescaleSecs#3"},
         {"reinitChart"}},
        {"mnuGraphInvert",
         -1,
         1,
         invert,
         "1",
         {"mnuGraphInvert"},
         {"mnuGraphInvert"},
         {"reinitChart"}},
        {"mnuGraphInvert",
         -1,
         2,
         invert,
         "0",
         {"mnuGraphInvert"},
         {},
         {"reinitChart", "reinitChart"}},
        {"mnuGraphGridX",
         -1,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.GridX); },
         "1",
         {"mnuGraphGridX"},
         {"mnuGraphGridX"},
         {"reinitChart"}},
        {"mnuGraphGridY",
         -1,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.GridY); },
         "1",
         {"mnuGraphGridY"},
         {"mnuGraphGridY"},
         {"reinitChart"}},
        {"mnuGraphVisible",
         -1,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.GraphVisible); },
         "1",
         {"mnuGraphVisible"},
         {"mnuGraphVisible"},
         {"relayout"}},
        {"mnuRecordVisible",
         -1,
         1,
         [](auto& s, auto&) { return std::to_string(s.values.RecordVisible); },
         "0",
         {"mnuRecordVisible"},
         {},
         {"relayout"}},
        {"mnuSettingsAutoSavePrompt",
         -1,
         1,
         autosave,
         "2",
         autosaveItems,
         {"mnuSettingsAutoSavePrompt"},
         {}},
        {"mnuSettingsAutoSaveOn",
         -1,
         1,
         autosave,
         "1",
         autosaveItems,
         {"mnuSettingsAutoSaveOn"},
         {}},
        {"mnuSettingsAutoSaveOff",
         -1,
         2,
         autosave,
         "0",
         autosaveItems,
         {"mnuSettingsAutoSaveOff"},
         {}},
        {"mnuConnectionConnect", -1, 1, autosave, "0", {}, {}, {"connect"}},
        {"mnuSettingsMeter", -1, 1, autosave, "0", {}, {}, {"meterSetup"}},
        {"mnuLoadSettings", -1, 1, autosave, "0", {}, {}, {"loadSettings"}},
        {"mnuSaveSettings", -1, 1, autosave, "0", {}, {}, {"saveSettings"}},
        {"mnuSaveSettingsAs", -1, 1, autosave, "0", {}, {}, {"saveSettingsAs"}},
        {"mnuFileQuit", -1, 1, autosave, "0", {}, {}, {"quit"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.index));
        Rig r;
        for (int i = 0; i < row.clicks; ++i) r.click(row.name, row.index);
        EXPECT_EQ(row.read(r.store, r.st), row.stored);
        EXPECT_EQ(r.checkedAmong(row.group), row.checked);
        EXPECT_EQ(r.fired, row.fired);
    }
}

// Values a hand-edited file may hold: the matching item or none is checked.
TEST(MainMenus, SyncFromSettingsCopesWithAnyValue) {
    const struct {
        std::function<void(SettingsStore&)> set;
        Strings group;
        Strings checked;
        int lagLimit;
    } rows[] = {
        {[](auto& s) { s.values.DataLag_Index = 5; },
         {"mnuSettingsLagThreshold"},
         {"mnuSettingsLagThreshold#5"},
         5},
        {[](auto& s) { s.values.DataLag_Index = 0; }, {"mnuSettingsLagThreshold"}, {}, 1},
        {[](auto& s) { s.values.DataLag_Index = 300; }, {"mnuSettingsLagThreshold"}, {}, 5},
        {[](auto& s) { s.values.GraphTimescale = "24"; },
         {"mnuGraphTimescaleSecs"},
         {"mnuGraphTimescaleSecs#3"},
         2},
        {[](auto& s) { s.values.GraphTimescale = " 16 "; },
         {"mnuGraphTimescaleSecs"},
         {"mnuGraphTimescaleSecs#2"},
         2},
        {[](auto& s) { s.values.GraphTimescale = "12"; }, {"mnuGraphTimescaleSecs"}, {}, 2},
        {[](auto& s) { s.values.GraphTimescale = "0"; }, {"mnuGraphTimescaleSecs"}, {}, 2},
        {[](auto& s) { s.values.GraphHeight_Index = "abc"; }, {"mnuGraphHeightIndex"}, {}, 2},
        {[](auto& s) { s.values.GraphPenWidth_Index = ""; }, {"mnuGraphPenWidthIndex"}, {}, 2},
        {[](auto& s) { s.values.GraphPenWidth_Index = "99999"; }, {"mnuGraphPenWidthIndex"}, {}, 2},
        {[](auto& s) { s.values.Needle_Width = 0; }, {"mnuSetNeedleWidth"}, {}, 2},
        {[](auto& s) { s.values.Needle_Width = -4; }, {"mnuSetNeedleWidth"}, {}, 2},
        {[](auto& s) { s.values.ShadowNeedleColor_Index = 6; }, {"mnuSetColShadow"}, {}, 2},
        {[](auto& s) { s.values.SwitchMode_Index = 0; }, {"mnuSettingsExtSwMode"}, {}, 2},
        {[](auto& s) { s.AutoSaveMode = 7; },
         {"mnuSettingsAutoSaveOn", "mnuSettingsAutoSavePrompt", "mnuSettingsAutoSaveOff"},
         {},
         2},
        {[](auto& s) { s.values.DialType = 99; },
         {"mnuSettingsLagThreshold"},
         {"mnuSettingsLagThreshold#2"},
         2},
    };
    for (const auto& row : rows) {
        Rig r;  // built from the defaults, then the file's values are loaded
        row.set(r.store);
        r.st.LagLimit = 0;
        r.menus->syncFromSettings();
        EXPECT_EQ(r.checkedAmong(row.group), row.checked) << row.group.front();
        EXPECT_EQ(r.st.LagLimit, row.lagLimit) << row.group.front();
    }
    // Built straight from such values, too.
    Rig odd([](SettingsStore& s) { s.values.GraphHeight_Index = "x"; });
    EXPECT_TRUE(odd.checkedAmong({"mnuGraphHeightIndex"}).empty());
}

TEST(MainMenus, PortItemsShowTheAvailablePortsAndLeaveTheCheckToTheWindow) {
    Rig r;
    auto shown = [&] {
        Strings out;
        for (const QAction* a : r.menus->action("mnuConnection")->menu()->actions())
            if (a->isVisible() && !a->isSeparator())
                out.push_back(a->text().toStdString() + (a->isChecked() ? " *" : ""));
        return out;
    };
    EXPECT_EQ(shown(), Strings({"Connect", "Ports", "Needle Test", "Test Audio"}));
    r.menus->setPorts({"/dev/ttyS0", "/dev/ttyUSB0", "/tmp/lv3"}, {true, false, true}, 3);
    EXPECT_EQ(shown(), Strings({"Connect", "Ports", "Comm1:\t/dev/ttyS0", "Comm3:\t/tmp/lv3 *",
                                "Needle Test", "Test Audio"}));
    EXPECT_FALSE(r.menus->action("mnuConnectionPortComm", 0)->isEnabled());

    r.click("mnuConnectionPortComm", 1);
    r.click("mnuConnectionPortComm", 3);
    EXPECT_EQ(r.fired, Strings({"port 1", "port 3"}));
    EXPECT_EQ(shown(), Strings({"Connect", "Ports", "Comm1:\t/dev/ttyS0", "Comm3:\t/tmp/lv3 *",
                                "Needle Test", "Test Audio"}));

    // A later scan with fewer ports hides the rest; the sensor menu shows last.
    r.menus->setPorts({"/dev/ttyACM0"}, {true}, 0);
    r.menus->showSensorMenu(true);
    EXPECT_EQ(shown(), Strings({"Connect", "Ports", "Comm1:\t/dev/ttyACM0", "Sensor", "Needle Test",
                                "Test Audio"}));
}

TEST(MainMenus, SensorChoiceGoesToTheWindowAndLeavesBothUnchecked) {
    Rig r;
    EXPECT_FALSE(r.menus->action("mnuConnectSensor")->isVisible());
    r.menus->showSensorMenu(true);
    EXPECT_TRUE(r.menus->action("mnuConnectSensor")->isVisible());
    const struct {
        const char* name;
        const char* fired;
    } rows[] = {{"mnuSensorRemote", "remote"}, {"mnuSensorLocal", "local"}};
    for (const auto& row : rows) {
        r.fired.clear();
        r.click(row.name);
        EXPECT_EQ(r.fired, Strings({row.fired}));
        EXPECT_TRUE(r.checkedAmong({"mnuSensorLocal", "mnuSensorRemote"}).empty()) << row.name;
    }
}

TEST(MainMenus, ColourItemsStoreThePickedColourAndRedrawWhatShowsIt) {
    const struct {
        const char* name;
        Colour Settings::*member;
        const char* fired;
    } rows[] = {
        {"mnuSetColDial", &Settings::Dial_Color, "redrawPanel"},
        {"mnuSetColPanel", &Settings::Panel_Color, "redrawPanel"},
        {"mnuSetColScale", &Settings::Scale_Color, "redrawPanel"},
        {"mnuSetColText", &Settings::Text_Color, "redrawPanel"},
        {"mnuSetColBackground", &Settings::Background_Color, "relayout"},
        {"mnuSetColNeedle", &Settings::MainNeedle_Color, "redrawPanel"},
        {"mnuSetColFreezeNeedle", &Settings::FreezeNeedle_Color, "redrawPanel"},
        {"mnuSetColLedSet", &Settings::LED_Set_Color, "redrawPanel"},
        {"mnuSetColLedBm", &Settings::LED_BM_Color, "redrawPanel"},
        {"mnuSetColLedLag", &Settings::LED_Lag_Color, "redrawPanel"},
        {"mnuSetColGraphSheet", &Settings::GraphSheet_Color, "reinitChart"},
        {"mnuSetColGraphPen", &Settings::GraphPen_Color, "reinitChart"},
        {"mnuSetColGraphGrid", &Settings::GraphGrid_Color, "reinitChart"},
    };
    // Every colour distinct, so a mixed-up item offers or stores the wrong one.
    auto distinct = [&](SettingsStore& s) {
        Colour c = 0x010101;
        for (const auto& row : rows) s.values.*row.member = c++;
    };
    for (const auto& row : rows) {
        Rig r(distinct);
        const Settings before = r.store.values;
        r.click(row.name);  // cancelled
        EXPECT_EQ(r.offered, before.*row.member) << row.name;
        EXPECT_TRUE(r.fired.empty()) << row.name;
        r.answer = rgb(12, 34, 56);
        r.click(row.name);
        Settings want = before;
        want.*row.member = rgb(12, 34, 56);
        for (const auto& other : rows)
            EXPECT_EQ(r.store.values.*other.member, want.*other.member) << row.name;
        EXPECT_EQ(r.fired, Strings({row.fired}));
        EXPECT_FALSE(r.titles.front().empty());
    }
}

TEST(MainMenus, SetDefaultsResetsTheColoursOnly) {
    Rig r([](SettingsStore& s) {
        s.values.Dial_Color = 1;
        s.values.GraphGrid_Color = 2;
        s.values.Text_Color = 3;
        s.values.ShadowNeedleColor_Index = 4;
        s.values.Needle_Width = 7;
    });
    ASSERT_EQ(r.checkedAmong({"mnuSetColShadow"}), Strings({"mnuSetColShadow#4"}));
    r.click("mnuSettingsColorsDefault");
    const Settings defaults;
    EXPECT_EQ(r.store.values.Dial_Color, defaults.Dial_Color);
    EXPECT_EQ(r.store.values.GraphGrid_Color, defaults.GraphGrid_Color);
    EXPECT_EQ(r.store.values.Text_Color, defaults.Text_Color);
    EXPECT_EQ(r.store.values.ShadowNeedleColor_Index, defaults.ShadowNeedleColor_Index);
    EXPECT_EQ(r.store.values.Needle_Width, 7);
    EXPECT_EQ(r.checkedAmong({"mnuSetColShadow"}),
              Strings({"mnuSetColShadow#" + std::to_string(defaults.ShadowNeedleColor_Index)}));
    EXPECT_EQ(r.fired, Strings({"redrawPanel", "reinitChart", "relayout"}));
}

TEST(MainMenus, EmptyHooksAreSkipped) {
    QMenuBar bar;
    SettingsStore store;
    store.values = Settings{};
    store.values.Dial_Color = 5;
    MeterState st;
    MainMenus menus(&bar, store, st, MenuHooks{});
    menus.setPorts({"/dev/ttyS0"}, {true}, 0);
    for (QAction* a : bar.findChildren<QAction*>())
        if (a != menus.action("mnuSettingsColorsDefault")) a->trigger();
    EXPECT_EQ(store.values.Dial_Color, 5u) << "no colour dialog, no change";
    EXPECT_EQ(store.values.SwitchMode_Index, 2) << "the settings still change";
}

}  // namespace
}  // namespace lv
