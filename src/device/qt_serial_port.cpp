#include "device/qt_serial_port.h"

#include <termios.h>

namespace lv {

QtSerialPort::QtSerialPort(QObject* parent) : QObject(parent) {
    connect(&m_port, &QSerialPort::readyRead, this, &QtSerialPort::onReadyRead);
    connect(&m_port, &QSerialPort::errorOccurred, this, &QtSerialPort::onError);
}

void QtSerialPort::setPortName(const std::string& path) {
    m_path = QString::fromStdString(path);
}

std::string QtSerialPort::portName() const {
    return m_path.toStdString();
}

bool QtSerialPort::open() {
    if (m_port.isOpen()) return true;
    m_port.setPortName(m_path);
    m_port.setBaudRate(QSerialPort::Baud9600);
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    m_port.setReadBufferSize(0);
    m_held = false;
    if (!m_port.open(QIODevice::ReadWrite)) {
        m_lastError = m_port.errorString();
        m_port.clearError();
        return false;
    }
    // A pseudo-terminal has no modem lines; the request fails there and is harmless.
    if (!m_port.setDataTerminalReady(true)) m_port.clearError();
    if (!m_port.setRequestToSend(true)) m_port.clearError();
    // Bytes left over from before the open would otherwise arrive first.
    m_port.clear(QSerialPort::Input);
    m_lastError.clear();
    return true;
}

void QtSerialPort::close() {
    holdInput(false);
    if (m_port.isOpen()) m_port.close();
}

bool QtSerialPort::isOpen() const {
    return m_port.isOpen();
}

int QtSerialPort::bytesWaiting() {
    return m_port.isOpen() ? static_cast<int>(m_port.bytesAvailable()) : 0;
}

std::string QtSerialPort::read(int maxBytes) {
    if (!m_port.isOpen() || maxBytes <= 0) return {};
    const QByteArray bytes = m_port.read(maxBytes);
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

void QtSerialPort::write(std::string_view bytes) {
    if (!m_port.isOpen()) return;
    if (m_held) ::tcflush(m_port.handle(), TCIFLUSH);
    m_port.write(bytes.data(), static_cast<qint64>(bytes.size()));
    m_port.flush();
}

void QtSerialPort::discardInput() {
    if (m_port.isOpen()) m_port.clear(QSerialPort::Input);
}

void QtSerialPort::setThreshold(int threshold) {
    m_threshold = threshold;
}

void QtSerialPort::holdInput(bool hold) {
    if (hold == m_held) return;
    m_held = hold;
    // With a read buffer of one byte QSerialPort stops watching the port
    // once that byte is in, until the buffer is read.
    m_port.setReadBufferSize(hold ? 1 : 0);
    if (!hold && m_port.isOpen()) {
        m_port.clear(QSerialPort::Input);
        m_port.readAll();  // watching the port again
    }
}

void QtSerialPort::onReadyRead() {
    if (m_held) return;
    if (m_threshold > 0 && m_port.bytesAvailable() >= m_threshold) fireReceive();
}

void QtSerialPort::onError(QSerialPort::SerialPortError error) {
    if (error != QSerialPort::ReadError && error != QSerialPort::ResourceError) return;
    // Left open, the port reports this error again and again at full speed.
    m_lastError = m_port.errorString();
    m_port.clearError();
    m_port.close();
    emit portFailed(m_lastError);
}

}  // namespace lv
