#pragma once
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <functional>

namespace lv::test {

// While it lives, hands each modal window that comes up to `answer`, as the
// operator at the screen would deal with it; the answer closes or clicks it.
class ModalAnswerer {
public:
    explicit ModalAnswerer(std::function<void(QWidget*)> answer) {
        QObject::connect(&m_timer, &QTimer::timeout, [answer = std::move(answer)] {
            if (QWidget* box = QApplication::activeModalWidget()) answer(box);
        });
        m_timer.start(10);
    }

private:
    QTimer m_timer;
};

}  // namespace lv::test
