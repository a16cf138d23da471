#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

#include "settings/qt_meter_dialog.h"
#include "support/indexed_control.h"

namespace lv {
namespace {

using test::indexed;

class MeterDialogTest : public ::testing::Test {
protected:
    MeterDialogTest() { std::tie(cfg.DialType, cfg.ClockType, cfg.DateType) = std::tuple(1, 3, 2); }
    // The index of the checked option, -1 for none, -2 for several.
    static int chosen(const MeterDialog& d, const char* name) {
        int found = -1;
        for (QRadioButton* b : d.findChildren<QRadioButton*>(name))
            if (b->isChecked()) found = found == -1 ? b->property("Index").toInt() : -2;
        return found;
    }
    static bool dateEnabled(const MeterDialog& d) {
        bool all = d.findChild<QGroupBox*>("framDate")->isEnabled();
        for (QRadioButton* b : d.findChildren<QRadioButton*>("optDateType")) all &= b->isEnabled();
        return all;
    }
    static std::tuple<int, int, int, int, bool> owned(const Settings& s) {
        return {s.DialType, s.ScaleType, s.ClockType, s.DateType, s.ClockLeft};
    }
    std::unique_ptr<MeterDialog> open() {
        auto d = std::make_unique<MeterDialog>(cfg);
        QObject::connect(d.get(), &MeterDialog::settingsChanged, [this] { ++signalled; });
        return d;
    }
    Settings cfg;
    int signalled = 0;
};

// A click on each option writes its own setting, and no other, at once.
TEST_F(MeterDialogTest, EachOptionWritesItsOwnSettingAtOnce) {
    using S = Settings;  // each option of each group in turn, the one checked at first last
    const std::tuple<const char*, int, std::int32_t Settings::*> groups[] = {
        {"optDial", 4, &S::DialType},
        {"optScale", 2, &S::ScaleType},
        {"optDateType", 3, &S::DateType},
        {"optClock", 4, &S::ClockType}};
    const auto d = open();
    Settings want = cfg;
    int clicks = 0;
    for (const auto& [name, options, setting] : groups)
        for (int k = 1, first = cfg.*setting; k <= options; ++k) {
            const int index = (first + k) % options;
            indexed(*d, name, index)->click();
            want.*setting = index;
            EXPECT_EQ(owned(cfg), owned(want)) << name << " " << index;
            EXPECT_EQ(signalled, ++clicks);
            EXPECT_EQ(chosen(*d, name), index);
        }
    for (const bool on : {true, false}) {
        d->findChild<QCheckBox*>("chkClockLeft")->click();
        EXPECT_EQ(cfg.ClockLeft, on);
    }
    EXPECT_EQ(signalled, clicks + 2);
}

// Each showing of the same dialog shows the settings as they are then (Load
// Settings may have changed them, to values no option has), the date only for
// a digital clock, and writes nothing.
TEST_F(MeterDialogTest, ShowingShowsTheSettingsAndWritesNothing) {
    const std::tuple<int, int, int, int, bool> cases[] = {
        {3, 1, 2, 0, true}, {7, -1, 9, 5, false}, {0, 0, 0, 1, false}, {2, 1, -1, 2, false}};
    const auto d = open();
    const auto shown = [](int v, int options) { return v >= 0 && v < options ? v : -1; };
    for (const auto& c : cases) {
        const auto [dial, scale, clock, date, left] = c;
        SCOPED_TRACE(testing::Message() << dial << scale << clock << date);
        std::tie(cfg.DialType, cfg.ScaleType, cfg.ClockType, cfg.DateType, cfg.ClockLeft) = c;
        d->show();
        EXPECT_EQ(std::tuple(chosen(*d, "optDial"), chosen(*d, "optScale"), chosen(*d, "optClock"),
                             chosen(*d, "optDateType")),
                  std::tuple(shown(dial, 4), shown(scale, 2), shown(clock, 4), shown(date, 3)));
        EXPECT_EQ(d->findChild<QCheckBox*>("chkClockLeft")->isChecked(), left);
        EXPECT_EQ(dateEnabled(*d), clock == 2 || clock == 3);
        d->findChild<QPushButton*>("cmdClose")->click();
        EXPECT_EQ(owned(cfg), c);
    }
    EXPECT_EQ(signalled, 0);
}

}  // namespace
}  // namespace lv
