#pragma once
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/scripted_port.h"

namespace lv::test {

// The port's name picks the device; the log names it for each open, close and command.
class DevicePort : public ScriptedPort {
public:
    bool open() override {
        const auto refused = refusals.find(portName());
        openFailure = refused == refusals.end() ? "" : refused->second;
        openable = !unopenable.count(portName()) && refused == refusals.end();
        log.push_back(portName() + " open");
        return ScriptedPort::open();
    }
    void close() override {
        if (isOpen()) log.push_back(portName() + " close");
        ScriptedPort::close();
    }
    int count(const std::string& entry) const { return std::count(log.begin(), log.end(), entry); }
    std::set<std::string> unopenable;
    std::map<std::string, std::string> refusals;  // port -> the system's reason
    std::vector<std::string> log;
};

}  // namespace lv::test
