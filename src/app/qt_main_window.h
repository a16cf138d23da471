#pragma once
#include <QLabel>
#include <QMainWindow>
#include <QTimer>
#include <cstdio>
#include <string>
#include <vector>

#include "app/qt_live_session.h"
#include "display/chart.h"
#include "display/dial_face.h"
#include "display/qt_panel_widget.h"
#include "display/qt_readouts.h"

namespace lv {

// The live meter on screen: the dial area with needle, lamp and readouts, the
// chart under it and the status line. It conducts; the drawing is the model's.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    // Progress lines of the port search go to `out`, as before the window.
    explicit MainWindow(std::FILE* out, QWidget* parent = nullptr);

    // Tries the candidate ports; without a meter the window stays in Demo Mode.
    bool connectMeter(const std::vector<std::string>& candidates);

    LiveSession& session() { return m_session; }
    PanelWidget* panel() const { return m_panel; }
    PanelWidget* chart() const { return m_chart; }
    QString statusText() const { return m_status->text(); }
    // Repaints that carried at least one new reading.
    long framesDrawn() const { return m_frames; }

    // One reading's worth of drawing: the needle, then the chart.
    void showSample(std::int32_t needle);

private:
    void rebuildPanel();
    void rebuildChart();
    void tickClock();
    void flush();

    PanelWidget* m_panel;
    PanelWidget* m_chart;
    QLabel* m_status;
    PanelReadouts m_readouts;
    LiveSession m_session;
    PanelState m_panelState;
    PanelContext m_ctx;
    ChartState m_chartState;
    bool m_graphVisible = true;  // until the Graph menu exists
    QTimer m_repaint;
    QTimer m_clock;
    int m_lastMinute = -1;
    bool m_dirty = false;
    long m_frames = 0;
};

}  // namespace lv
