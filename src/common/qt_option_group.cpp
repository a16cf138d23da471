#include "common/qt_option_group.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QLayout>
#include <QRadioButton>

namespace lv {

QRadioButton* addOption(QButtonGroup* group, QLayout* layout, const char* name,
                        const QString& caption, int index) {
    auto* option = new QRadioButton(caption);
    option->setObjectName(name);
    option->setProperty("Index", index);
    group->addButton(option, index);
    layout->addWidget(option);
    return option;
}

void selectOption(QButtonGroup* group, int index) {
    if (QAbstractButton* option = group->button(index)) {
        option->setChecked(true);
        return;
    }
    // An exclusive group refuses to uncheck its last button, so it lets go
    // for a moment.
    group->setExclusive(false);
    for (QAbstractButton* option : group->buttons()) option->setChecked(false);
    group->setExclusive(true);
}

}  // namespace lv
