#pragma once
#include <functional>
#include <string>
#include <string_view>

namespace lv {

// The serial control as the program uses it. One port at a time; the
// receive event fires when at least `threshold` characters wait, and never
// while the threshold is 0.
class SerialPort {
public:
    virtual ~SerialPort() = default;

    virtual void setPortName(const std::string& path) = 0;
    virtual std::string portName() const = 0;
    // Opens with "9600,n,8,1", no handshaking, DTR and RTS on, input cleared.
    virtual bool open() = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    // The system's reason for the last failed open ("Permission denied"),
    // empty when the port cannot tell.
    virtual std::string openError() const { return {}; }

    virtual int bytesWaiting() = 0;
    virtual std::string read(int maxBytes) = 0;
    virtual void write(std::string_view bytes) = 0;
    virtual void discardInput() = 0;

    virtual void setThreshold(int threshold) = 0;
    virtual int threshold() const = 0;
    void setReceiveHandler(std::function<void()> handler) { m_onReceive = std::move(handler); }

protected:
    void fireReceive() {
        if (m_onReceive) m_onReceive();
    }

private:
    std::function<void()> m_onReceive;
};

}  // namespace lv
