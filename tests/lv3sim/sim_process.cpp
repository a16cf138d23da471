#include "lv3sim/sim_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

extern char** environ;

namespace lv::sim::test {

SimProcess::SimProcess(std::vector<std::string> args) {
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    args.insert(args.begin(), LV3SIM_PATH);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    if (::posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) m_pid = -1;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    // The pipe stays open until the end: a meter writing to a closed pipe
    // would die of SIGPIPE and fail the test for the wrong reason.
    m_output = out[0];
    char c = 0;
    pollfd p{m_output, POLLIN, 0};
    while (m_pid > 0 && ::poll(&p, 1, 5000) > 0 && ::read(m_output, &c, 1) == 1 && c != '\n')
        m_firstLine += c;
}

SimProcess::~SimProcess() {
    signal(SIGKILL);
    if (m_pid > 0 && !m_reaped) ::waitpid(m_pid, nullptr, 0);
    if (m_output >= 0) ::close(m_output);
}

void SimProcess::signal(int sig) const {
    if (m_pid > 0 && !m_reaped) ::kill(m_pid, sig);
}

std::optional<int> SimProcess::waitExit(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (m_pid > 0 && !m_reaped && std::chrono::steady_clock::now() < deadline) {
        m_reaped = ::waitpid(m_pid, &m_status, WNOHANG) == m_pid;
        if (!m_reaped) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (!m_reaped || !WIFEXITED(m_status)) return std::nullopt;
    return WEXITSTATUS(m_status);
}

}  // namespace lv::sim::test
