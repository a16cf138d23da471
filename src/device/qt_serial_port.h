#pragma once
#include <QObject>
#include <QSerialPort>

#include "device/serial_port.h"

namespace lv {

// The serial port on QSerialPort. Works with real adapters and with the
// virtual meter's pseudo-terminal alike.
class QtSerialPort : public QObject, public SerialPort {
    Q_OBJECT
public:
    explicit QtSerialPort(QObject* parent = nullptr);

    void setPortName(const std::string& path) override;
    std::string portName() const override;
    bool open() override;
    void close() override;
    bool isOpen() const override;
    std::string openError() const override { return m_lastError.toStdString(); }

    int bytesWaiting() override;
    std::string read(int maxBytes) override;
    void write(std::string_view bytes) override;
    void discardInput() override;

    void setThreshold(int threshold) override;
    int threshold() const override { return m_threshold; }

    // While the meter follows a playback its frames are of no use: held
    // input is not read (so it wakes nothing), and is thrown away in the
    // kernel before each command instead. Releasing starts reading afresh.
    void holdInput(bool hold);
    bool inputHeld() const { return m_held; }

    // Why the last open failed, or why the port was dropped.
    QString lastError() const { return m_lastError; }

signals:
    // The port broke while open (adapter unplugged, virtual meter gone); it
    // has been closed.
    void portFailed(const QString& reason);

private:
    void onReadyRead();
    void onError(QSerialPort::SerialPortError error);

    QSerialPort m_port;
    QString m_path;
    QString m_lastError;
    int m_threshold = 0;
    bool m_held = false;
};

}  // namespace lv
