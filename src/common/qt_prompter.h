#pragma once
#include <QWidget>

#include "common/prompter.h"

namespace lv {

// The program's questions as Qt message boxes, modal to the main window.
class QtPrompter : public Prompter {
public:
    explicit QtPrompter(QWidget* parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget* parent) { m_parent = parent; }
    // Nobody is there to answer (closing on a signal): every question gets
    // its negative answer at once, without a box.
    void setUnattended(bool unattended) { m_unattended = unattended; }

    Answer ask(const std::string& title, const std::string& text, Buttons buttons, Icon icon,
               const BoxDetail& detail = {}) override;

private:
    QWidget* m_parent;
    bool m_unattended = false;
};

}  // namespace lv
