#pragma once
#include <functional>

namespace lv {

class MainWindow;

// SIGTERM, SIGINT and --exit-after. Once the window is up it closes as Quit
// does, asking nothing, and then the program ends there and then: the request
// may come inside a dialog's loop or a wait of the calibration, the upload or
// the port search, and unwinding those would run on into what they were
// waiting for. Everything worth keeping has been written by the close.
// During the start-up nothing has been recorded or changed yet, so the
// program ends at once, leaving its files as they were.
class ExitOnRequest {
public:
    // end: leaves the process; called once.
    ExitOnRequest(MainWindow& window, std::function<void()> end);

    void request();

private:
    MainWindow& m_window;
    std::function<void()> m_end;
    bool m_ending = false;
};

}  // namespace lv
