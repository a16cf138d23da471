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
    MeterDialogTest() { set(1, 0, 3, 2, false); }
    void set(int dial, int scale, int clock, int date, bool left) {
        std::tie(cfg.DialType, cfg.ScaleType, cfg.ClockType, cfg.DateType, cfg.ClockLeft) =
            std::tuple(dial, scale, clock, date, left);
    }
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

// Each option: its frame and caption; a click writes its own setting, and no
// other, at once.
TEST_F(MeterDialogTest, EachOptionWritesItsOwnSettingAtOnce) {
    const std::tuple<const char*, const char*, int, const char*, std::int32_t Settings::*>
        options[] = {
            {"framMeter", "optDial", 0, "Circular 1", &Settings::DialType},
            {"framMeter", "optDial", 1, "Traditional", &Settings::DialType},
            {"framMeter", "optDial", 2, "Traditional Continuous", &Settings::DialType},
            {"framMeter", "optDial", 3, "Circular 2", &Settings::DialType},
            {"FramScale", "optScale", 1, "Simple", &Settings::ScaleType},
            {"FramScale", "optScale", 0, "Traditional", &Settings::ScaleType},
            {"framDate", "optDateType", 0, "Hide", &Settings::DateType},
            {"framDate", "optDateType", 1, "Short", &Settings::DateType},
            {"framDate", "optDateType", 2, "Long", &Settings::DateType},
            {"framClock", "optClock", 0, "None", &Settings::ClockType},
            {"framClock", "optClock", 1, "Analog", &Settings::ClockType},
            {"framClock", "optClock", 2, "12 Hour", &Settings::ClockType},
            {"framClock", "optClock", 3, "24 Hour", &Settings::ClockType},
        };
    const auto d = open();
    EXPECT_EQ(d->windowTitle(), "Meter Setup");
    Settings want = cfg;
    int clicks = 0;
    for (const auto& [frame, name, index, caption, setting] : options) {
        SCOPED_TRACE(testing::Message() << name << " " << index);
        QAbstractButton* b = indexed(*d, name, index);
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(b->text(), caption);
        EXPECT_EQ(b->parentWidget()->objectName(), frame);
        b->click();
        want.*setting = index;
        EXPECT_EQ(owned(cfg), owned(want)) << "that setting, and no other";
        EXPECT_EQ(signalled, ++clicks);
        EXPECT_EQ(chosen(*d, name), index);
    }
    auto* left = d->findChild<QCheckBox*>("chkClockLeft");
    EXPECT_EQ(std::pair(left->text(), left->parentWidget()->objectName()),
              std::pair(QString("On Left"), QString("framClock")));
    for (const bool on : {true, false}) {
        left->click();
        EXPECT_EQ(cfg.ClockLeft, on);
    }
    EXPECT_EQ(signalled, clicks + 2);
}

// Leaving a digital clock greys the date out; coming back brings the earlier
// date choice back.
TEST_F(MeterDialogTest, DateChoicesOnlyForDigitalClocks) {
    cfg.ClockType = 3;
    const auto d = open();
    for (int off : {1, 0}) {
        indexed(*d, "optClock", off)->click();
        EXPECT_FALSE(dateEnabled(*d)) << off;
    }
    indexed(*d, "optDateType", 0)->click();  // greyed out: not a choice
    EXPECT_EQ(cfg.DateType, 2);
    indexed(*d, "optClock", 2)->click();
    EXPECT_TRUE(dateEnabled(*d));
    EXPECT_EQ(cfg.DateType, 2) << "the earlier date choice comes back";
    EXPECT_EQ(chosen(*d, "optDateType"), 2);
}

// Each showing of the same dialog shows the settings as they are then (Load
// Settings may have changed them, to values no option has), the date only for
// a digital clock, and writes nothing.
TEST_F(MeterDialogTest, ShowingShowsTheSettingsAndWritesNothing) {
    const std::tuple<int, int, int, int, bool> cases[] = {
        {1, 0, 3, 2, false}, {3, 1, 2, 0, true},  {7, -1, 9, 5, false},
        {8, 1, 1, 1, true},  {0, 0, 0, 1, false}, {2, 1, -1, 2, false}};
    const auto d = open();
    for (const auto& c : cases) {
        const auto [dial, scale, clock, date, left] = c;
        SCOPED_TRACE(testing::Message() << dial << scale << clock << date);
        std::tie(cfg.DialType, cfg.ScaleType, cfg.ClockType, cfg.DateType, cfg.ClockLeft) = c;
        d->show();
        auto shown = [](int value, int options) {
            return value >= 0 && value < options ? value : -1;
        };
        EXPECT_EQ(std::tuple(chosen(*d, "optDial"), chosen(*d, "optScale"), chosen(*d, "optClock"),
                             chosen(*d, "optDateType")),
                  std::tuple(shown(dial, 4), shown(scale, 2), shown(clock, 4), shown(date, 3)));
        EXPECT_EQ(d->findChild<QCheckBox*>("chkClockLeft")->isChecked(), left);
        EXPECT_EQ(dateEnabled(*d), clock == 2 || clock == 3);
        EXPECT_EQ(owned(cfg), c);
        d->findChild<QPushButton*>("cmdClose")->click();
        EXPECT_FALSE(d->isVisible());
        EXPECT_EQ(d->result(), QDialog::Rejected);
    }
    EXPECT_EQ(signalled, 0);
}

}  // namespace
}  // namespace lv
