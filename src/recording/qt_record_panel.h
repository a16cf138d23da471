#pragma once
#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "recording/record_panel_sink.h"

namespace lv {

// picFilePosition: how much of a file has loaded (a strip along the top edge,
// in fiftieths), the part Play covers, the play marker and the play-end
// marker. The mouse reports where it is as a fraction of the bar, 0 at the
// first pixel and 1 at the last, clamped when dragged past either end.
class FilePositionBar : public QWidget {
    Q_OBJECT
public:
    explicit FilePositionBar(QWidget* parent = nullptr);

    void setLoadProgress(int fiftieths);
    void setPosition(double playFraction, double endFraction);
    int loadProgress() const { return m_fiftieths; }
    double playFraction() const { return m_play; }
    double endFraction() const { return m_end; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void pressed(double fraction);
    void moved(double fraction);
    void released(double fraction);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    double fractionAt(double x) const;
    double xAt(double fraction) const;

    int m_fiftieths = 0;
    double m_play = 0.0;
    double m_end = 1.0;
};

// A label that shows as much of its caption as fits, with an ellipsis, rather
// than widening the panel for a long file name; text() keeps all of it.
class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;
    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// picRecord: the recording panel under the dial and chart. It shows what the
// recorder and the player tell it and reports what the operator does; the
// window connects the signals to them.
class RecordPanel : public QWidget, public RecordPanelSink {
    Q_OBJECT
public:
    explicit RecordPanel(QWidget* parent = nullptr);

    // QWidget's own setEnabled(bool) stays usable beside the sink's.
    using QWidget::setEnabled;

    void setLoadedFile(const std::string& caption, const std::string& tooltip) override;
    void setMode(const std::string& caption, const std::string& tooltip) override;
    void setNaming(const std::string& pattern) override;
    void setSaveCaption(const std::string& caption) override;
    void setPlayTime(const std::string& text, Colour colour) override;
    void setTotalTime(const std::string& text) override;
    void setTag(const std::string& text) override;
    void setTagVisible(bool visible) override;
    void setEnabled(const Enabled& enabled) override;
    void setLoopCaption(const std::string& caption) override;
    void setLoadProgress(int fiftieths) override;
    void setPosition(double playFraction, double endFraction) override;
    void setPanelWord(const std::string& word) override;

    // What setEnabled last allowed: the keyboard shortcuts ask it before
    // acting as the buttons would.
    const Enabled& enabledControls() const { return m_enabled; }
    // Where the list of recent files drops down: under the Load button, in
    // global coordinates (for the "L" key as well as the right click).
    QPoint loadListAnchor() const;
    FilePositionBar* positionBar() const { return m_picFilePosition; }

signals:
    void recordClicked();
    void stopClicked();
    void playClicked();
    void loopClicked();
    void fwdClicked();
    void revClicked();
    void saveClicked();
    void loadClicked();
    // Load with the right button: choose from the recent files.
    void loadListRequested();
    void settingsClicked();
    // The loaded-file label with the right button: save the buffer as...
    void loadedFileSaveAsRequested();
    // The mouse on the position bar, as a fraction 0..1 of its width.
    void positionPressed(double fraction);
    void positionMoved(double fraction);
    void positionReleased(double fraction);
    // The word the meter panel shows ("RECORD", "PLAY", "PAUSE", "" for
    // none): the window prints it on the dial.
    void panelWordChanged(const QString& word);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPushButton* addButton(const char* name, const QString& caption, const QIcon& icon,
                           const QString& tip, void (RecordPanel::*clicked)());
    QLabel* addLabel(QLabel* label, const char* name, const QString& tip = {});

    Enabled m_enabled;
    QPushButton* m_cmdRecord = nullptr;
    QPushButton* m_cmdStop = nullptr;
    QPushButton* m_cmdPlay = nullptr;
    QPushButton* m_cmdLoop = nullptr;
    QPushButton* m_cmdFwd = nullptr;
    QPushButton* m_cmdRev = nullptr;
    QPushButton* m_cmdSave = nullptr;
    QPushButton* m_cmdLoad = nullptr;
    QPushButton* m_cmdRecSettings = nullptr;
    QLabel* m_lblRecMode = nullptr;
    QLabel* m_lblNaming = nullptr;
    QLabel* m_lblLoadedFile = nullptr;
    QLabel* m_lblPlayTime = nullptr;
    QLabel* m_lblTotalTime = nullptr;
    QLabel* m_lblTag = nullptr;
    FilePositionBar* m_picFilePosition = nullptr;
};

}  // namespace lv
