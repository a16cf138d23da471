#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

#include "settings/qt_meter_dialog.h"

namespace lv {
namespace {

class MeterDialogTest : public ::testing::Test {
protected:
    MeterDialogTest() { set(1, 0, 3, 2, false); }
    void set(int dial, int scale, int clock, int date, bool left) {
        std::tie(cfg.DialType, cfg.ScaleType, cfg.ClockType, cfg.DateType, cfg.ClockLeft) =
            std::tuple(dial, scale, clock, date, left);
    }
    static QList<QRadioButton*> options(const MeterDialog& d, const char* name) {
        return d.findChildren<QRadioButton*>(name);
    }
    static QRadioButton* option(const MeterDialog& d, const char* name, int index) {
        for (QRadioButton* b : options(d, name))
            if (b->property("Index").toInt() == index) return b;
        return nullptr;
    }
    // The index of the checked option, -1 for none, -2 for several.
    static int chosen(const MeterDialog& d, const char* name) {
        int found = -1;
        for (QRadioButton* b : options(d, name))
            if (b->isChecked()) found = found == -1 ? b->property("Index").toInt() : -2;
        return found;
    }
    static QGroupBox* frame(const MeterDialog& d, const char* name) {
        return d.findChild<QGroupBox*>(name);
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

TEST_F(MeterDialogTest, FramesHoldTheirOptionArrays) {
    const auto d = open();
    EXPECT_EQ(d->objectName(), "frmMeter");
    EXPECT_EQ(d->windowTitle(), "Meter Setup");
    QStringList shown;  // frame, option array, index and caption
    for (const QAbstractButton* b : d->findChildren<QAbstractButton*>())
        if (b->parentWidget()->inherits("QGroupBox"))
            shown << QString("%1 %2 %3 %4")
                         .arg(b->parentWidget()->objectName(), b->objectName())
                         .arg(b->property("Index").toInt())
                         .arg(b->text());
    EXPECT_EQ(
        shown,
        QStringList({"framMeter optDial 0 Circular 1", "framMeter optDial 1 Traditional",
                     "framMeter optDial 2 Traditional Continuous", "framMeter optDial 3 Circular 2",
                     "FramScale optScale 0 Traditional", "FramScale optScale 1 Simple",
                     "framClock optClock 0 None", "framClock optClock 1 Analog",
                     "framClock optClock 2 12 Hour", "framClock optClock 3 24 Hour",
                     "framClock chkClockLeft 0 On Left", "framDate optDateType 0 Hide",
                     "framDate optDateType 1 Short", "framDate optDateType 2 Long"}));
}

TEST_F(MeterDialogTest, EachClickWritesItsOwnSettingAtOnce) {
    struct Case {
        const char* group;
        int index;
        std::int32_t Settings::*setting;
    } const cases[] = {
        {"optDial", 0, &Settings::DialType},   {"optDial", 3, &Settings::DialType},
        {"optScale", 1, &Settings::ScaleType}, {"optScale", 0, &Settings::ScaleType},
        {"optClock", 2, &Settings::ClockType}, {"optDateType", 0, &Settings::DateType},
        {"optClock", 0, &Settings::ClockType}, {"optClock", 1, &Settings::ClockType},
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
    for (const bool left : {true, false}) {
        d->findChild<QCheckBox*>("chkClockLeft")->click();
        EXPECT_EQ(cfg.ClockLeft, left);
    }
    EXPECT_EQ(signalled, clicks + 2);
}

TEST_F(MeterDialogTest, DateChoicesOnlyForDigitalClocks) {
    for (const auto& [clockType, dateEnabled] :
         {std::pair{0, false}, {1, false}, {2, true}, {3, true}, {9, false}, {-1, false}}) {
        cfg.ClockType = clockType;
        const auto d = open();
        EXPECT_EQ(frame(*d, "framDate")->isEnabled(), dateEnabled) << clockType;
        for (QRadioButton* b : options(*d, "optDateType"))
            EXPECT_EQ(b->isEnabled(), dateEnabled) << clockType;
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
    } const cases[] = {{1, 0, 3, 2, false}, {3, 1, 2, 0, true}, {7, -1, 9, 5, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.dial << c.scale << c.clock << c.date);
        set(c.dial, c.scale, c.clock, c.date, c.left);
        const auto before = owned(cfg);
        const auto d = open();
        d->show();
        auto shown = [](int value, int options) {
            return value >= 0 && value < options ? value : -1;
        };
        EXPECT_EQ(
            std::tuple(chosen(*d, "optDial"), chosen(*d, "optScale"), chosen(*d, "optClock"),
                       chosen(*d, "optDateType")),
            std::tuple(shown(c.dial, 4), shown(c.scale, 2), shown(c.clock, 4), shown(c.date, 3)));
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
    cfg.DialType = 8;  // as Load Settings may leave them
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
