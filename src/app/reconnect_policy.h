#pragma once
#include <string>

namespace lv {

// When to look again for a meter whose port failed while in use (adapter
// unplugged, virtual meter gone). Only the same port path is watched: another
// device that appears meanwhile is the operator's to choose.
class ReconnectPolicy {
public:
    // Polled this often while waiting, so a returning port is probed well
    // within two seconds of its return.
    static constexpr double kPollSeconds = 0.1;
    // A port that is there but does not answer is asked again this much later.
    static constexpr double kRetrySeconds = 1.0;

    void lost(const std::string& path);
    // The operator took over (search from the menu, another port, quit).
    void cancel() { m_path.clear(); }
    bool waiting() const { return !m_path.empty(); }
    const std::string& path() const { return m_path; }

    // One poll; true when a probe should run now.
    bool due(double now, bool pathPresent);
    void probeFailed(double now) { m_nextTry = now + kRetrySeconds; }
    void reconnected() { cancel(); }

private:
    std::string m_path;
    double m_nextTry = 0;
};

}  // namespace lv
