#pragma once
#include <functional>

namespace lv {

class MainWindow;

// SIGTERM, SIGINT and --exit-after. The window closes as Quit does, asking
// nothing, and then the program ends there and then: the request may come
// inside a dialog's loop or a wait of the calibration or the upload, and
// unwinding those would run on into what they were waiting for. Everything
// worth keeping has been written by the close.
class ExitOnRequest {
public:
    // end: leaves the process; called once, after the window has closed.
    ExitOnRequest(MainWindow& window, std::function<void()> end);

    void request();
    // Start-up is over: a request that came during it is carried out now.
    void startupDone();
    bool due() const { return m_due; }

private:
    void endNow();

    MainWindow& m_window;
    std::function<void()> m_end;
    bool m_due = false;
    bool m_ending = false;
};

}  // namespace lv
