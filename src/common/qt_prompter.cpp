#include "common/qt_prompter.h"

#include <QMessageBox>

namespace lv {

namespace {

QMessageBox::Icon toQt(Icon icon) {
    switch (icon) {
        case Icon::Critical:
            return QMessageBox::Critical;
        case Icon::Exclamation:
            return QMessageBox::Warning;
        case Icon::Information:
            return QMessageBox::Information;
        case Icon::Question:
            return QMessageBox::Question;
        case Icon::None:
            break;
    }
    return QMessageBox::NoIcon;
}

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton escape;  // what closing the box answers
};

ButtonSet toQt(Buttons buttons) {
    switch (buttons) {
        case Buttons::OkCancel:
            return {QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel};
        case Buttons::YesNo:
            return {QMessageBox::Yes | QMessageBox::No, QMessageBox::No};
        case Buttons::RetryCancel:
            return {QMessageBox::Retry | QMessageBox::Cancel, QMessageBox::Cancel};
        case Buttons::Ok:
            break;
    }
    return {QMessageBox::Ok, QMessageBox::Ok};
}

Answer fromQt(int button) {
    switch (button) {
        case QMessageBox::Ok:
            return Answer::Ok;
        case QMessageBox::Yes:
            return Answer::Yes;
        case QMessageBox::No:
            return Answer::No;
        case QMessageBox::Retry:
            return Answer::Retry;
        default:
            return Answer::Cancel;
    }
}

}  // namespace

Answer QtPrompter::ask(const std::string& title, const std::string& text, Buttons buttons,
                       Icon icon, const BoxDetail& detail) {
    const ButtonSet set = toQt(buttons);
    if (m_unattended) return fromQt(set.escape);
    QMessageBox box(toQt(icon), QString::fromStdString(title), QString::fromStdString(text),
                    set.buttons, m_parent);
    box.setObjectName("msgBox");
    if (!detail.informative.empty())
        box.setInformativeText(QString::fromStdString(detail.informative));
    if (!detail.detailed.empty()) box.setDetailedText(QString::fromStdString(detail.detailed));
    box.setEscapeButton(set.escape);
    const int chosen = box.exec();
    // A box closed by the window manager answers as its negative button.
    if (box.clickedButton() == nullptr) return fromQt(set.escape);
    return fromQt(chosen);
}

}  // namespace lv
