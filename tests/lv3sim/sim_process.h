#pragma once
#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// A running lv3sim for process tests: its "READY PATH" line awaited with a
// deadline, killed and reaped at the end whatever happens, so that no test
// can leave a meter behind or hang.
namespace lv::sim::test {

class SimProcess {
public:
    explicit SimProcess(std::vector<std::string> args);
    ~SimProcess();
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    const std::string& firstLine() const { return m_firstLine; }
    void signal(int sig) const;
    // The exit code; nullopt if still running at the deadline or killed.
    std::optional<int> waitExit(std::chrono::milliseconds timeout);

private:
    pid_t m_pid = -1;
    int m_output = -1;
    bool m_reaped = false;
    int m_status = 0;
    std::string m_firstLine;
};

}  // namespace lv::sim::test
