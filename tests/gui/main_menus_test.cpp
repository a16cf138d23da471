#include <gtest/gtest.h>

#include <QMenuBar>
#include <algorithm>
#include <functional>
#include <memory>
#include <sstream>

#include "app/qt_main_menus.h"

namespace lv {
namespace {

using Strings = std::vector<std::string>;

// Items checked together: the radio groups, else the item on its own.
Strings groupOf(const std::string& name) {
    for (const Strings& g :
         {Strings{"mnuSetBmFreezeOn", "mnuSetBmFreezeOff"},
          Strings{"mnuSetNeedleBDOn", "mnuSetNeedleBDOff"},
          Strings{"mnuSettingsAutoSaveOn", "mnuSettingsAutoSavePrompt", "mnuSettingsAutoSaveOff"}})
        if (std::find(g.begin(), g.end(), name) != g.end()) return g;
    return {name};
}

// The hooks that log their name when called: the item that alone calls each,
// or what the window redraws.
const std::pair<std::function<void()> MenuHooks::*, const char*> kLogged[] = {
    {&MenuHooks::connect, "mnuConnectionConnect"},
    {&MenuHooks::meterSetup, "mnuSettingsMeter"},
    {&MenuHooks::loadSettings, "mnuLoadSettings"},
    {&MenuHooks::saveSettings, "mnuSaveSettings"},
    {&MenuHooks::saveSettingsAs, "mnuSaveSettingsAs"},
    {&MenuHooks::quit, "mnuFileQuit"},
    {&MenuHooks::open, "mnuFileOpen"},
    {&MenuHooks::save, "mnuFileSave"},
    {&MenuHooks::saveAs, "mnuFileSaveAs"},
    {&MenuHooks::exportRecording, "mnuFileExport"},
    {&MenuHooks::redrawPanel, "redrawPanel"},
    {&MenuHooks::reinitChart, "reinitChart"},
    {&MenuHooks::relayout, "relayout"}};

// A menu bar with the program's menus, hooks that log what they were asked.
struct Rig {
    explicit Rig(const std::function<void(SettingsStore&)>& setUp = {}) {
        store.values = Settings{};
        if (setUp) setUp(store);
        MenuHooks h;
        for (const auto& [hook, what] : kLogged)
            h.*hook = [this, what = what] { fired.push_back(what); };
        h.recentFiles = [] { return QStringList{"/r/b.lvd", "/r/a.lvd"}; };
        h.openRecent = [this](const QString& path) { fired.push_back(path.toStdString()); };
        h.port = [this](int n) { fired.push_back("port " + std::to_string(n)); };
        h.pickColour = [this](Colour current, const QString&) { return offered = current, answer; };
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
};

// Clicks on an item: the setting it stores, whether it alone of
// its group is checked afterwards, and the window's hook it calls per click.
TEST(MainMenus, ClickStoresCheckMarksAndTellsTheWindow) {
    using Read = std::function<std::string(const SettingsStore&)>;
    const auto v = [](auto member) -> Read {
        return [member](const SettingsStore& s) {
            std::ostringstream o;
            o << s.values.*member;
            return o.str();
        };
    };
    const Read autosave = [](const SettingsStore& s) { return std::to_string(s.AutoSaveMode); };
    // Item, index, clicks, the setting and what it stores, checked, hook.
    const std::tuple<const char*, int, int, Read, const char*, bool, const char*> rows[] = {
        {"mnuSettingsLagThreshold", 5, 1, v(&Settings::DataLag_Index), "5", true, ""},
        {"mnuSetBmFreezeOff", -1, 1, v(&Settings::FreezeEnable), "0", true, ""},
        {"mnuSettingsExtSwMode", 1, 1, v(&Settings::SwitchMode_Index), "1", true, "relayout"},
        {"mnuSetNeedleWidth", 8, 1, v(&Settings::Needle_Width), "8", true, "redrawPanel"},
        {"mnuGraphHeightIndex", 5, 1, v(&Settings::GraphHeight_Index), "5", true, "relayout"},
        {"mnuGraphPenWidthIndex", 3, 1, v(&Settings::GraphPenWidth_Index), "3", true,
         "reinitChart"},
        {"mnuGraphTimescaleSecs", 3, 1, v(&Settings::GraphTimescale), "24", true, "reinitChart"},
        {"mnuGraphInvert", -1, 1, v(&Settings::GraphInvert), "1", true, "reinitChart"},
        {"mnuGraphInvert", -1, 2, v(&Settings::GraphInvert), "0", false, "reinitChart"},
        {"mnuGraphVisible", -1, 1, v(&Settings::GraphVisible), "1", true, "relayout"},
        {"mnuSettingsAutoSaveOff", -1, 2, autosave, "0", true, ""},
    };
    for (const auto& [name, index, clicks, read, stored, checked, fired] : rows) {
        SCOPED_TRACE(std::string(name) + " " + std::to_string(index));
        Rig r;
        for (int i = 0; i < clicks; ++i) r.click(name, index);
        EXPECT_EQ(read(r.store), stored);
        const std::string self = index < 0 ? name : name + ("#" + std::to_string(index));
        EXPECT_EQ(r.checkedAmong(groupOf(name)), checked ? Strings{self} : Strings{});
        EXPECT_EQ(r.fired, *fired ? Strings(clicks, fired) : Strings{});
    }
    Rig r;
    r.click("mnuSettingsLagThreshold", 5);
    EXPECT_EQ(r.st.LagLimit, 5);
    EXPECT_EQ(r.menus->action("mnuSettingsLagThreshold", 6), nullptr);
    r.fired.clear();
    Strings want;
    for (const auto& [hook, name] : kLogged)
        if (std::string_view(name).starts_with("mnu")) {
            r.click(name);
            want.push_back(name);
        }
    // Open Recent lists what the window remembers when it opens.
    QMenu* recent = r.menus->action("mnuFileRecent")->menu();
    emit recent->aboutToShow();
    ASSERT_EQ(recent->actions().size(), 2);
    EXPECT_EQ(recent->actions()[0]->text(), "&1 b.lvd");
    recent->actions()[1]->trigger();
    want.push_back("/r/a.lvd");
    EXPECT_EQ(r.fired, want);
}

// Values a hand-edited file may hold: the matching item or none is checked.
TEST(MainMenus, SyncFromSettingsCopesWithAnyValue) {
    // The value, the group and its item then checked, the lag limit taken.
    const std::tuple<std::function<void(SettingsStore&)>, const char*, const char*, int> rows[] = {
        {[](auto& s) { s.values.DataLag_Index = 0; }, "mnuSettingsLagThreshold", "", 1},
        {[](auto& s) { s.values.DataLag_Index = 300; }, "mnuSettingsLagThreshold", "", 5},
        {[](auto& s) { s.values.GraphTimescale = " 16 "; }, "mnuGraphTimescaleSecs", "#2", 2},
        {[](auto& s) { s.values.GraphHeight_Index = "x"; }, "mnuGraphHeightIndex", "", 2},
        {[](auto& s) { s.AutoSaveMode = 7; }, "mnuSettingsAutoSaveOn", "", 2},
        {[](auto& s) { s.values.DialType = 99; }, "mnuSettingsLagThreshold", "#2", 2},
    };
    for (const auto& [set, group, checked, lagLimit] : rows) {
        Rig r;
        set(r.store);
        r.st.LagLimit = 0;
        r.menus->syncFromSettings();
        const Strings want = *checked ? Strings{group + std::string(checked)} : Strings{};
        EXPECT_EQ(r.checkedAmong(groupOf(group)), want) << group;
        EXPECT_EQ(r.st.LagLimit, lagLimit) << group;
    }
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
    r.menus->setPorts({"/dev/ttyS0", "/dev/ttyUSB0", "/tmp/lv3"}, {true, false, true}, 3);
    const Strings three{"Connect",     "Ports",     "Comm1:\t/dev/ttyS0", "Comm3:\t/tmp/lv3 *",
                        "Needle Test", "Test Audio"};
    EXPECT_EQ(shown(), three);
    EXPECT_FALSE(r.menus->action("mnuConnectionPortComm", 0)->isEnabled());

    r.click("mnuConnectionPortComm", 1);
    r.click("mnuConnectionPortComm", 3);
    EXPECT_EQ(r.fired, Strings({"port 1", "port 3"}));
    EXPECT_EQ(shown(), three);

    // A later scan with fewer ports hides the rest.
    r.menus->setPorts({"/dev/ttyACM0"}, {true}, 0);
    EXPECT_EQ(shown(),
              Strings({"Connect", "Ports", "Comm1:\t/dev/ttyACM0", "Needle Test", "Test Audio"}));
}

TEST(MainMenus, ColourItemsStoreThePickedColourAndDefaultsResetTheColoursOnly) {
    const std::tuple<const char*, Colour Settings::*, const char*> rows[] = {
        {"mnuSetColDial", &Settings::Dial_Color, "redrawPanel"},
        {"mnuSetColBackground", &Settings::Background_Color, "relayout"},
        {"mnuSetColNeedle", &Settings::MainNeedle_Color, "redrawPanel"},
        {"mnuSetColLedBm", &Settings::LED_BM_Color, "redrawPanel"},
        {"mnuSetColGraphPen", &Settings::GraphPen_Color, "reinitChart"},
    };
    // Every colour distinct, so a mixed-up item offers or stores the wrong one.
    auto distinct = [&](SettingsStore& s) {
        Colour c = 0x010101;
        for (const auto& row : rows) s.values.*std::get<1>(row) = c++;
        s.values.ShadowNeedleColor_Index = 4;
    };
    for (const auto& [name, member, hook] : rows) {
        Rig r(distinct);
        Settings want = r.store.values;
        r.click(name);  // cancelled
        EXPECT_EQ(r.offered, want.*member) << name;
        EXPECT_TRUE(r.fired.empty()) << name;
        r.answer = rgb(12, 34, 56);
        r.click(name);
        want.*member = rgb(12, 34, 56);
        for (const auto& other : rows)
            EXPECT_EQ(r.store.values.*std::get<1>(other), want.*std::get<1>(other)) << name;
        EXPECT_EQ(r.fired, Strings{hook});
    }
    Rig r(distinct);
    r.click("mnuSettingsColorsDefault");
    // Which settings it resets is the settings' own rule; the menu shows them and redraws.
    const Settings defaults;
    EXPECT_EQ(r.store.values.Dial_Color, defaults.Dial_Color);
    EXPECT_EQ(r.checkedAmong({"mnuSetColShadow"}),
              Strings({"mnuSetColShadow#" + std::to_string(defaults.ShadowNeedleColor_Index)}));
    EXPECT_EQ(r.fired, Strings({"redrawPanel", "reinitChart", "relayout"}));
}

}  // namespace
}  // namespace lv
