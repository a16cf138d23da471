#pragma once
#include <functional>
#include <string>
#include <vector>

#include "device/serial_port.h"

namespace lv::test {

// An in-memory serial port: tests put bytes in, read what the code wrote,
// and may answer each written line through `onWrite`.
class ScriptedPort : public SerialPort {
public:
    void setPortName(const std::string& path) override { m_name = path; }
    std::string portName() const override { return m_name; }
    bool open() override { return m_open = openable; }
    void close() override { m_open = false; }
    bool isOpen() const override { return m_open; }
    std::string openError() const override { return m_open ? "" : openFailure; }

    int bytesWaiting() override { return static_cast<int>(input.size()); }
    std::string read(int maxBytes) override {
        const auto n = std::min<std::size_t>(input.size(), static_cast<std::size_t>(maxBytes));
        std::string out = input.substr(0, n);
        input.erase(0, n);
        return out;
    }
    void write(std::string_view bytes) override {
        written.emplace_back(bytes);
        if (onWrite) onWrite(std::string(bytes));
    }
    void discardInput() override { input.clear(); }
    void setThreshold(int t) override { m_threshold = t; }
    int threshold() const override { return m_threshold; }

    // Delivers bytes and fires the receive event the way the real port does.
    void deliver(const std::string& bytes) {
        input += bytes;
        if (m_threshold > 0 && bytesWaiting() >= m_threshold) fireReceive();
    }

    std::string input;
    std::vector<std::string> written;
    std::function<void(const std::string&)> onWrite;
    bool openable = true;
    std::string openFailure;  // the reason a refused open gives

private:
    std::string m_name;
    bool m_open = false;
    int m_threshold = 0;
};

}  // namespace lv::test
