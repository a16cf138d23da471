#pragma once
#include <QLabel>
#include <QString>
#include <QWidget>

namespace lv {

// frmLvSplash: what the operator sees while the program loads and looks for
// the meter. A frameless panel centred on the primary screen with the
// product name, the version and one progress line.
class SplashForm : public QWidget {
    Q_OBJECT
public:
    // `version` is major.minor.revision; the label reads "Version " and it.
    explicit SplashForm(const QString& version, QWidget* parent = nullptr);

    // Shows the caption at once: the callers go straight on into waits on the
    // serial port, and the line must not lag behind what they are doing.
    void setProgress(const QString& text);
    QString progress() const { return m_progress->text(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // Geometry in pixels at the usual 96 dpi, grown with larger font DPI so
    // the point-sized texts keep their room.
    int px(double v) const { return qRound(v * m_scale); }

    double m_scale = 1.0;
    QLabel* m_version;
    QLabel* m_productName;
    QLabel* m_progress;
};

}  // namespace lv
