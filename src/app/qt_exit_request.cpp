#include "app/qt_exit_request.h"

#include <QApplication>
#include <QWidget>

#include "app/qt_main_window.h"

namespace lv {

ExitOnRequest::ExitOnRequest(MainWindow& window, std::function<void()> end)
    : m_window(window), m_end(std::move(end)) {}

void ExitOnRequest::request() {
    // A second signal while the close runs changes nothing: the close ends.
    if (m_ending) return;
    m_due = true;
    m_window.prompter().setUnattended(true);
    if (!m_window.started()) {
        // The start-up's box (the search's Retry/Cancel) gives way; the
        // search then ends and the start-up calls startupDone.
        if (QWidget* box = QApplication::activeModalWidget()) box->close();
        return;
    }
    endNow();
}

void ExitOnRequest::startupDone() {
    if (m_due && !m_ending) endNow();
}

void ExitOnRequest::endNow() {
    m_ending = true;
    m_window.closeUnattended();
    if (m_end) m_end();
}

}  // namespace lv
