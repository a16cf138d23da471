#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

#include "settings/qt_meter_dialog.h"

namespace lv {
namespace {

// The dialog found the way a form's controls are: by name, and within a
// control array by the "Index" property.
class MeterDialogTest : public ::testing::Test {
protected:
    MeterDialogTest() {
        cfg.DialType = 1;
        cfg.ScaleType = 0;
        cfg.ClockType = 3;
        cfg.DateType = 2;
        cfg.ClockLeft = false;
    }
    static QList<QRadioButton*> options(const MeterDialog& d, const char* name) {
        return d.findChildren<QRadioButton*>(name);
    }
    static QRadioButton* option(const MeterDialog& d, const char* name, int index) {
        for (QRadioButton* b : options(d, name))
            if (b->property("Index").toInt() == index) return b;
        return nullptr;
    }
    // The index of the checked option, -1 for none.
    static int chosen(const MeterDialog& d, const char* name) {
        int found = -1;
        for (QRadioButton* b : options(d, name))
            if (b->isChecked()) found = found == -1 ? b->property("Index").toInt() : -2;
        return found;
    }
    static QGroupBox* frame(const MeterDialog& d, const char* name) {
        return d.findChild<QGroupBox*>(name);
    }
    // The five settings the dialog owns, for comparing in one go.
    static std::tuple<int, int, int, int, bool> owned(const Settings& s) {
        return {s.DialType, s.ScaleType, s.ClockType, s.DateType, s.ClockLeft};
    }
    // Builds a dialog over cfg and counts its settingsChanged signals.
    std::unique_ptr<MeterDialog> open() {
        auto d = std::make_unique<MeterDialog>(cfg);
        QObject::connect(d.get(), &MeterDialog::settingsChanged, [this] { ++signalled; });
        return d;
    }
    Settings cfg;
    int signalled = 0;
};

TEST_F(MeterDialogTest, FramesHoldTheirOptionArrays) {
    struct Case {
        const char* frame;
        const char* group;
        QStringList captions;
    } const cases[] = {
        {"framMeter",
         "optDial",
         {"Circular 1", "Traditional", "Traditional Continuous", "Circular 2"}},
        {"FramScale", "optScale", {"Traditional", "Simple"}},
        {"framClock", "optClock", {"None", "Analog", "12 Hour", "24 Hour"}},
        {"framDate", "optDateType", {"Hide", "Short", "Long"}},
    };
    const auto d = open();
    EXPECT_EQ(d->objectName(), "frmMeter");
    EXPECT_EQ(d->windowTitle(), "Meter Setup");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.group);
        ASSERT_NE(frame(*d, c.frame), nullptr);
        ASSERT_EQ(options(*d, c.group).size(), c.captions.size());
        for (int i = 0; i < c.captions.size(); ++i) {
            QRadioButton* b = option(*d, c.group, i);
            ASSERT_NE(b, nullptr) << i;
            EXPECT_EQ(b->text(), c.captions[i]);
            EXPECT_TRUE(frame(*d, c.frame)->isAncestorOf(b));
        }
    }
    const auto* left = d->findChild<QCheckBox*>("chkClockLeft");
    ASSERT_NE(left, nullptr);
    EXPECT_EQ(left->text(), "On Left");
    EXPECT_TRUE(frame(*d, "framClock")->isAncestorOf(left));
}

TEST_F(MeterDialogTest, EachClickWritesItsOwnSettingAtOnce) {
    struct Case {
        const char* group;
        int index;
        std::int32_t Settings::*setting;
    } const cases[] = {
        {"optDial", 0, &Settings::DialType},     {"optDial", 2, &Settings::DialType},
        {"optDial", 3, &Settings::DialType},     {"optScale", 1, &Settings::ScaleType},
        {"optScale", 0, &Settings::ScaleType},   {"optClock", 2, &Settings::ClockType},
        {"optDateType", 0, &Settings::DateType}, {"optDateType", 1, &Settings::DateType},
        {"optClock", 0, &Settings::ClockType},   {"optClock", 1, &Settings::ClockType},
    };
    const auto d = open();
    Settings want = cfg;
    int clicks = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.group << " " << c.index);
        option(*d, c.group, c.index)->click();
        want.*c.setting = c.index;
        EXPECT_EQ(owned(cfg), owned(want)) << "that setting, and no other";
        EXPECT_EQ(signalled, ++clicks);
        EXPECT_EQ(chosen(*d, c.group), c.index);
    }
    auto* left = d->findChild<QCheckBox*>("chkClockLeft");
    left->click();
    EXPECT_TRUE(cfg.ClockLeft);
    left->click();
    EXPECT_FALSE(cfg.ClockLeft);
    EXPECT_EQ(signalled, clicks + 2);
}

TEST_F(MeterDialogTest, DateChoicesOnlyForDigitalClocks) {
    struct Case {
        std::int32_t clockType;
        bool dateEnabled;
    } const cases[] = {{0, false}, {1, false}, {2, true}, {3, true}, {9, false}, {-1, false}};
    for (const Case& c : cases) {
        cfg.ClockType = c.clockType;
        const auto d = open();
        EXPECT_EQ(frame(*d, "framDate")->isEnabled(), c.dateEnabled) << c.clockType;
        for (QRadioButton* b : options(*d, "optDateType"))
            EXPECT_EQ(b->isEnabled(), c.dateEnabled) << c.clockType;
    }

    cfg.ClockType = 3;
    const auto d = open();
    for (int off : {1, 0}) {
        option(*d, "optClock", off)->click();
        EXPECT_FALSE(frame(*d, "framDate")->isEnabled()) << off;
    }
    option(*d, "optDateType", 0)->click();  // greyed out: not a choice
    EXPECT_EQ(cfg.DateType, 2);
    option(*d, "optClock", 2)->click();
    EXPECT_TRUE(frame(*d, "framDate")->isEnabled());
    EXPECT_EQ(cfg.DateType, 2) << "the earlier date choice comes back";
    EXPECT_EQ(chosen(*d, "optDateType"), 2);
}

TEST_F(MeterDialogTest, LoadingShowsTheSettingsAndWritesNothing) {
    struct Case {
        std::int32_t dial, scale, clock, date;
        bool left;
    } const cases[] = {
        {1, 0, 3, 2, false},
        {3, 1, 2, 0, true},
        {7, -1, 9, 5, false},  // from a hand-edited file: nothing to check
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.dial << c.scale << c.clock << c.date);
        cfg.DialType = c.dial;
        cfg.ScaleType = c.scale;
        cfg.ClockType = c.clock;
        cfg.DateType = c.date;
        cfg.ClockLeft = c.left;
        const auto before = owned(cfg);
        const auto d = open();
        d->show();
        auto shown = [&](int value, int options) {
            return value >= 0 && value < options ? value : -1;
        };
        EXPECT_EQ(chosen(*d, "optDial"), shown(c.dial, 4));
        EXPECT_EQ(chosen(*d, "optScale"), shown(c.scale, 2));
        EXPECT_EQ(chosen(*d, "optClock"), shown(c.clock, 4));
        EXPECT_EQ(chosen(*d, "optDateType"), shown(c.date, 3));
        EXPECT_EQ(d->findChild<QCheckBox*>("chkClockLeft")->isChecked(), c.left);
        EXPECT_EQ(owned(cfg), before);
        EXPECT_EQ(signalled, 0);
    }
}

TEST_F(MeterDialogTest, ReopeningShowsSettingsChangedMeanwhile) {
    const auto d = open();
    d->show();
    d->findChild<QPushButton*>("cmdClose")->click();
    EXPECT_FALSE(d->isVisible());
    EXPECT_EQ(d->result(), QDialog::Rejected);
    // As Load Settings would leave them, including a value no option stands for.
    cfg.DialType = 8;
    cfg.ClockType = 1;
    cfg.ClockLeft = true;
    d->show();
    EXPECT_EQ(chosen(*d, "optDial"), -1);
    EXPECT_EQ(chosen(*d, "optClock"), 1);
    EXPECT_FALSE(frame(*d, "framDate")->isEnabled());
    EXPECT_TRUE(d->findChild<QCheckBox*>("chkClockLeft")->isChecked());
    EXPECT_EQ(signalled, 0);
}

}  // namespace
}  // namespace lv
