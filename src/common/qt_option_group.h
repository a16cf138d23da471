#pragma once

class QButtonGroup;
class QLayout;
class QRadioButton;
class QString;

namespace lv {

// One option of a control array: the array's objectName is every option's,
// and the index is the option's property "Index" and its id in the group.
QRadioButton* addOption(QButtonGroup* group, QLayout* layout, const char* name,
                        const QString& caption, int index);

// Checks the option of this index. A value no option stands for (a
// hand-edited settings file) shows none chosen rather than a guess.
void selectOption(QButtonGroup* group, int index);

}  // namespace lv
