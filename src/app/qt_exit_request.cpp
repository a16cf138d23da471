#include "app/qt_exit_request.h"

#include "app/qt_main_window.h"

namespace lv {

ExitOnRequest::ExitOnRequest(MainWindow& window, std::function<void()> end)
    : m_window(window), m_end(std::move(end)) {}

void ExitOnRequest::request() {
    // A second signal while the close runs changes nothing: the close ends.
    if (m_ending) return;
    m_ending = true;
    m_window.prompter().setUnattended(true);
    if (m_window.started()) m_window.closeUnattended();
    if (m_end) m_end();
}

}  // namespace lv
